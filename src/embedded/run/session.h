// One session on one database of an embedded instance: runs T-SQL batches.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/language/statementRights.h"
#include "embedded/run/batchListener.h"
#include "embedded/run/openDatabase.h"
#include "embedded/translate/translator.h"
#include "platform/data/provider.h"

namespace qrel::tsql {

struct SessionState;

class Session {
 public:
  // A database that is open for reading gets a session that reads.
  explicit Session(std::shared_ptr<OpenDatabase> open);
  Session(Session&&) noexcept;
  Session& operator=(Session&&) noexcept;
  ~Session();

  // Runs one batch. With a listener, statements that fail or aren't understood are told to it and the rest runs on;
  // without one the first error is raised as DataError (0x80040E14 for what isn't understood) with the SQL.
  // The first result set is returned; `parameters` are bound to @p1, @p2, ... and to ? in order.
  CommandResult run(std::string_view batch, BatchListener* listener, const std::vector<Value>* parameters = nullptr);
  // Runs a system procedure by its name, with its parameters in order. Only so a session that reads may attach a
  // database: no text of a batch gets there.
  CommandResult runProcedure(std::string_view name, const std::vector<Value>& parameters);

  Rights rights() const { return rights_; }

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
  Rights rights_;
};

}  // namespace qrel::tsql
