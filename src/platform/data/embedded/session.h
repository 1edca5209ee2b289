// One session on one database of an embedded instance: runs T-SQL batches.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/embedded/catalogue.h"
#include "platform/data/embedded/functions.h"
#include "platform/data/embedded/lexer.h"
#include "platform/data/embedded/sqlite.h"
#include "platform/data/embedded/statementCache.h"
#include "platform/data/embedded/translate.h"
#include "platform/data/provider.h"

namespace qrel::tsql {

// The open file with everything registered: functions, views, catalogue. Pooled by the provider, since each query of
// the program opens a connection of its own.
class OpenDatabase {
 public:
  OpenDatabase(const std::filesystem::path& file, const ServerFacts& facts, int serverMajor, sqlite::OpenMode mode);

  ServerFacts facts;
  sqlite::Database database;
  Catalogue catalogue;
  StatementCache statements;
};

// What became of one statement.
struct StatementOutcome {
  // From good to bad. WithoutEffect: what it would do on a server isn't kept here (options, messages, logins).
  enum class Kind : std::uint8_t { WithoutEffect, Ran, Made, Skipped, Failed };
  Kind kind = Kind::Ran;
  std::string what;        // "table", "procedure", ... for Made; the reason for Skipped and Failed
  std::size_t line = 1;    // 1-based in the batch
  std::string firstWords;  // the statement's first words, one line, at most 60 characters
  std::int64_t rows = 0;   // inserted (positive)
  std::int32_t errorNumber = 0;
  std::string text;  // of a failed statement, the whole of it
};

// How a batch is run. A provider's command stops at the first error and raises it; the loader goes on with the next
// statement and is told of each: every statement that a text holds has one outcome, in the order of the text, however
// often a loop runs it. What a branch holds that isn't taken belongs to the IF or WHILE around it. `stopRequested` is
// asked between statements and every few milliseconds while one runs.
class BatchListener {
 public:
  virtual ~BatchListener() = default;
  virtual void statementDone(const StatementOutcome& outcome) = 0;
  // USE name / CREATE DATABASE name / DROP DATABASE name: true when the listener has taken care of it.
  virtual bool useDatabase(const std::string& name) = 0;
  virtual bool stopRequested() { return false; }
};

struct SessionState;

class Session {
 public:
  explicit Session(std::shared_ptr<OpenDatabase> open);
  Session(Session&&) noexcept;
  Session& operator=(Session&&) noexcept;
  ~Session();

  // Runs one batch. With a listener, statements that fail or aren't understood are told to it and the rest runs on;
  // without one the first error is raised as DataError (0x80040E14 for what isn't understood) with the SQL.
  // The first result set is returned; `parameters` are bound to @p1, @p2, ... and to ? in order.
  CommandResult run(std::string_view batch, BatchListener* listener, const std::vector<Value>* parameters = nullptr);

  OpenDatabase& open() { return *open_; }
  std::shared_ptr<OpenDatabase> share() const { return open_; }
  // Goes on with another database: USE without a listener.
  void moveTo(std::shared_ptr<OpenDatabase> open);
  // Keeps what a transaction that is still open has done. A server would take it back when its connection ends.
  void commitAll();
  // Rows inserted so far that no ROLLBACK has taken back.
  std::int64_t rowsInserted() const;

  std::map<std::string, Value> variables;  // of the batch, by lower-case name with @
  std::map<std::string, TypeRef> variableTypes;

 private:
  std::shared_ptr<OpenDatabase> open_;
  std::unique_ptr<SessionState> state_;
};

// The rows of a translated query; keeps the session's database open. Implemented in rows.cpp.
std::unique_ptr<RowSource> queryRows(std::shared_ptr<OpenDatabase> open, const std::string& sqliteSql,
                                     const std::map<std::string, Value>& variables, std::string_view originalSql);

}  // namespace qrel::tsql
