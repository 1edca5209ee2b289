// Runs the statements of a batch. One object per batch, or per text that a batch runs by EXEC.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/data/embedded/catalogueChanges.h"
#include "platform/data/embedded/ddl.h"
#include "platform/data/embedded/rows.h"
#include "platform/data/embedded/session.h"
#include "platform/error.h"

namespace qrel::tsql {

// How rows get into a table by one shape of INSERT: kept per text in front of VALUES, so that thousands of single
// INSERTs are read, checked and prepared once.
struct InsertPlan {
  struct Column {
    const TableInfo::Column* column = nullptr;
    bool given = false;                  // its value stands in the statement
    std::optional<Value> fixed;          // else: a default that is a literal
    std::optional<ObjectName> sequence;  // else: the sequence that a default counts
    std::string sql;                     // else: a default that is computed per row
  };
  std::shared_ptr<const TableInfo> table;
  std::vector<Column> columns;  // in order of the INSERT's SQL: the given ones first
  std::size_t given = 0;
  sqlite::Statement* insert = nullptr;  // belongs to the database's cache
};

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

// What a session keeps from batch to batch.
struct SessionState {
  int transactions = 0;                             // @@TRANCOUNT
  std::string identityInsert;                       // the table with SET IDENTITY_INSERT ON, as its storage is named
  std::map<std::int64_t, std::int64_t> identities;  // last identity value given, by table id
  std::map<std::int64_t, std::int64_t> versions;    // last timestamp value given, by table id
  std::set<std::string> usedNames;                  // names that USE gave to this database, in lower case
  std::set<std::string> saved;                      // names of SAVE TRANSACTION, in lower case
  std::unordered_map<std::string, InsertPlan, TextHash, std::equal_to<>> plans;
  std::int64_t inserted = 0;
  std::int64_t insertedAtBegin = 0;
  int nesting = 0;  // EXEC within EXEC
};

class Interpreter {
 public:
  Interpreter(Session& session, SessionState& state, BatchListener* listener, CommandResult& result);

  void run(std::string_view batch);

 private:
  using Kind = StatementOutcome::Kind;
  enum class Flow : std::uint8_t { Normal, Break, Continue, Return, Stop };
  using Handler = void (Interpreter::*)();
  struct Entry {
    std::string_view word;
    Handler handler;
  };
  struct Argument {
    std::string name;  // "@name" in lower case, empty for one by position
    Value value;
  };
  // What UPDATE and DELETE change; `alias`, `from` and `where` as texts of a query that finds the rows.
  struct UpdateTarget {
    std::shared_ptr<const TableInfo> table;
    std::string alias, from, where;
  };

  // interpreter.cpp: the run of statements, control flow, errors
  void runPiece(std::string_view text);
  void statement();
  void checkNesting(std::size_t start) const;
  void simpleStatement();
  Handler handlerOf(const Token& token) const;
  void block();
  void tryBlock();
  void statementsUntilEnd();
  void ifStatement();
  void whileStatement();
  void skipToBody(std::size_t start);
  [[noreturn]] static void refuseLoop();
  bool evaluateCondition(const std::string& sql);
  void statementFailed(std::size_t start, Kind kind, const std::string& reason, std::int32_t number);
  void tell(std::size_t start, Kind kind, std::string what, std::int64_t rows, std::int32_t number = 0);
  std::string firstWords(std::size_t start) const;
  std::size_t likelyEnd(std::size_t start) const;
  void flowStatement();
  void declareStatement();
  void declareVariable();

  // What every handler calls when it has read its statement: whether the statement is to be carried out.
  bool act();
  bool running() const { return executing_ && flow_ == Flow::Normal; }
  // Tells the outcome Made with this word instead of Ran.
  void made(std::string what) { made_ = std::move(what); }
  // Runs `work` so that an error leaves nothing of it behind.
  template <class Work>
  void atomically(Work&& work);
  void schemaChanged();
  CatalogueChanges changes() { return CatalogueChanges(*catalogue_); }
  [[noreturn]] void notUnderstood(std::string reason) const;
  void skipWithoutEffect();
  void notKept();
  bool atBatchStart() const { return pieceStart_ == 0 && statementStart_ == 0; }

  // interpreterValues.cpp: expressions, variables, queries
  TranslateContext& context();
  Translator translator() { return Translator(context(), reader_); }
  Value evaluate(const std::string& sql);
  void assign(const std::string& variable, const Value& value);
  void setStatement();
  void setOption();
  void selectStatement();
  void expressionStatement();
  void raiserrorStatement();
  void setGlobal(const char* name, std::int64_t value);
  ObjectName localName(ObjectName name) const;
  std::shared_ptr<const TableInfo> requireTable(const ObjectName& name) const;

  // statementsTable.cpp
  void createTable();
  void createIndex();
  void alterTable();
  void alterTableAdd(const ObjectName& name);
  void alterTableDrop(const ObjectName& name);
  void alterTableColumn(const ObjectName& name);
  void fillColumns(const ObjectName& name, const std::vector<ColumnDef>& columns, bool withValues);
  void truncateStatement();

  // statementsModule.cpp
  void createStatement();
  void alterStatement();
  void moduleStatement();
  std::string moduleText(std::size_t create, std::size_t kind) const;
  std::string functionKind(std::size_t from) const;
  bool isEncrypted(std::size_t from) const;

  // statementsObjects.cpp
  void createSchema();
  void createType();
  void createSequence();
  void createSynonym();
  void createDatabase();
  void dropStatement();
  void dropIndexes(bool ifExists);
  void dropDatabases(bool ifExists);
  void useStatement();
  void permissionStatement();
  void transactionStatement();
  void beginTransaction();

  // statementsInsert.cpp
  void insertStatement();
  void insertValues(InsertPlan& plan);
  void insertQuery(InsertPlan& plan);
  InsertPlan& planFor(std::size_t start, std::size_t end, const ObjectName& table,
                      const std::vector<std::string>* columns);
  InsertPlan makePlan(std::shared_ptr<const TableInfo> table, const std::vector<std::string>* columns);
  void insertRow(InsertPlan& plan, std::vector<Value>& values);
  bool readLiteral(Value& value);
  bool readNextValue(Value& value);
  void readRow(InsertPlan& plan, std::vector<Value>& values);
  Value defaultOf(const InsertPlan::Column& column);
  InsertPlan::Column defaultFor(const TableInfo::Column& column);
  Value generated(const TableInfo& table, const TableInfo::Column& column);
  [[noreturn]] void refuseDuplicate(const TableInfo& table, const DataError& error);

  // statementsUpdate.cpp
  void updateStatement();
  void deleteStatement();
  UpdateTarget readTarget(std::size_t target);
  std::string rowsQuery(const UpdateTarget& target, const std::vector<std::string>& values);
  void applyUpdate(const TableInfo& table, const std::vector<const TableInfo::Column*>& columns,
                   const std::string& rowsSql);

  // statementsExec.cpp
  void execStatement();
  void execText(const std::string& text, std::size_t line);
  std::vector<Argument> readArguments();
  void systemProcedure(const std::string& name, const std::vector<Argument>& arguments, std::size_t line);
  void addType(const std::vector<Argument>& arguments);
  void renameObject(const std::vector<Argument>& arguments);
  void executeSql(const std::vector<Argument>& arguments, std::size_t line);
  void attachDatabase(const std::vector<Argument>& arguments);

  Session& session_;
  SessionState& state_;
  BatchListener* listener_;
  CommandResult& result_;
  Catalogue* catalogue_;
  sqlite::Database* database_;
  TranslateContext context_;

  std::string_view batch_;
  std::vector<Token> tokens_;
  TokenReader reader_;
  std::size_t pieceStart_ = 0;  // offset of the current piece in the batch
  std::size_t lineOffset_ = 0;  // lines before the current piece
  std::size_t fixedLine_ = 0;   // not 0: the line that all outcomes are told with
  std::size_t statementStart_ = 0;
  bool executing_ = true;
  bool parsed_ = false;
  bool silent_ = false;  // nothing is told of the current statement: its parts have told it
  Flow flow_ = Flow::Normal;
  int blockDepth_ = 0;
  int statementDepth_ = 0;
  bool deep_ = false;  // something in the piece is nested deeper than can be read
  std::string made_;
  std::int64_t rows_ = 0;
  std::vector<Value> row_;
};

template <class Work>
void Interpreter::atomically(Work&& work) {
  database_->cached("savepoint q_statement").run();
  try {
    work();
  } catch (...) {
    sqlite3_exec(database_->get(), "rollback to q_statement; release q_statement", nullptr, nullptr, nullptr);
    schemaChanged();
    throw;
  }
  database_->cached("release q_statement").run();
}

}  // namespace qrel::tsql
