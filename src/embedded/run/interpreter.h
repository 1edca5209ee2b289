// Runs the statements of a batch. One object per batch, or per text that a batch runs by EXEC.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "embedded/change/changes.h"
#include "embedded/language/structure.h"
#include "embedded/run/account.h"
#include "embedded/run/rows.h"
#include "embedded/run/session.h"
#include "embedded/run/tableReader.h"
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

// A cursor: the query that DECLARE gave it, and the rows that OPEN has read.
struct Cursor {
  std::string sql;                                              // in SQLite's words
  std::map<std::string, Value> variables;                       // as they were at DECLARE
  bool scroll = false;                                          // may move otherwise than forward
  bool local = false;                                           // ends with its batch
  std::shared_ptr<const std::vector<std::vector<Value>>> rows;  // null: not open
  std::int64_t at = -1;                                         // the row that stands ready; -1 in front of the first
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
  int nesting = 0;                        // EXEC within EXEC
  int loops = 0;                          // WHILE within WHILE that are running
  int tries = 0;                          // BEGIN TRY blocks that are running
  bool noExec = false;                    // SET NOEXEC ON: statements are read, not run
  bool rowLimit = false;                  // SET ROWCOUNT with a number
  std::int64_t changes = 0;               // counts what a statement changes beside rows: variables, cursors, objects
  std::set<std::string> unknown;          // variables whose assignment wasn't carried out
  std::map<std::string, Cursor> cursors;  // by lower-case name
  std::set<std::string> lostCursors;      // names whose DECLARE wasn't understood
};

// Raised out of a loop that meets something which can't be run; the outermost loop takes back what it has done.
struct LoopRefused {
  std::string statement;  // its first words
  std::string reason;
};

class Interpreter {
 public:
  Interpreter(Session& session, SessionState& state, BatchListener* listener, CommandResult& result);

  void run(std::string_view batch);

 private:
  static constexpr int mostTurns = 1000000;
  // Statements within statements, and brackets within brackets, beyond which nothing is read: both are read by
  // recursion.
  static constexpr int mostNesting = 200;

  using Kind = StatementOutcome::Kind;
  // Throw: on to the CATCH. Return: the text ends; Abort: so do those that run it by EXEC.
  enum class Flow : std::uint8_t { Normal, Break, Continue, Goto, Throw, Return, Abort, Stop };
  using Handler = void (Interpreter::*)();
  struct Entry {
    std::string_view word;
    Handler handler;
  };
  struct Argument {
    std::string name;  // "@name" in lower case, empty for one by position
    Value value;
    std::string output;  // the variable, in lower case, that OUTPUT gives the value back to
  };
  // What becomes of the statement that is being run.
  struct Doing {
    Kind kind = Kind::Ran;
    std::string what;
    std::int32_t number = 0;
    std::int64_t rows = 0;
    std::vector<StatementOutcome> inside;  // of the text that it runs
  };
  // What UPDATE and DELETE change; `alias`, `from` and `where` as texts of a query that finds the rows.
  struct UpdateTarget {
    std::shared_ptr<const TableInfo> table;
    std::string alias, from, where;
  };

  // interpreter.cpp: the run of statements, what becomes of them
  void runPiece(std::string_view text);
  void statement();
  void dispatch();
  void simpleStatement();
  void perform(std::size_t start);
  void checkNesting(std::size_t start) const;
  static Handler handlerOf(const Token& token);
  Handler handlerAt() const;
  bool isModuleAt(std::size_t at) const;
  bool atExecOn() const;
  void suspended(std::size_t start);
  void refused(std::size_t start, Kind kind, const std::string& reason, std::int32_t number);
  void refused(std::size_t start, const DataError& error);
  void fail(Kind kind, const std::string& reason, std::int32_t number = errorNumber::badSql);
  void leaveRest(Kind kind, const std::string& reason);
  std::size_t endOfRefused(std::size_t start, Kind kind);
  void record(std::size_t start);
  void takeEffect(std::size_t start);
  StatementOutcome outcomeOf(std::size_t start);
  void tellAll();
  void tellUnread();
  std::string firstWords(std::size_t start) const;
  void markUnknown(std::size_t begin, std::size_t end);
  bool stopAsked() const { return listener_ && listener_->stopRequested(); }
  // Ends a long run of rows when a stop is asked for.
  void checkStop() const;

  // interpreterFlow.cpp: blocks, branches, loops, jumps
  void block();
  void tryBlock(std::size_t close);
  void runUntil(std::size_t begin, std::size_t close);
  bool catchGoto(std::size_t block);
  void gotoStatement();
  void label();
  void ifStatement();
  void body();
  void whileStatement();
  void turns(std::size_t start, std::size_t end);
  void undoLoop(std::size_t start, std::size_t end, const SessionState& before,
                const std::map<std::string, Value>& variables, const LoopRefused& refusal);
  std::optional<bool> condition(std::size_t start);
  bool neverEnds(std::size_t condition, std::size_t body, std::size_t end) const;
  std::vector<std::string> assignedWithin(std::size_t begin, std::size_t end) const;
  std::int64_t changesSoFar() const;
  void flowStatement();
  void throwStatement();
  void skipStatement();
  void skipWhole();
  void skipSimple();
  void skipBranches();
  void skipBlock();
  void skipCondition();
  void skipToBody(std::size_t start);
  void declareWithin(std::size_t begin, std::size_t end);
  void elseStatement();

  void declareStatement();
  void declareVariable();

  // What every handler calls when it has read its statement: whether the statement is to be carried out.
  bool act();
  bool running() const { return executing_ && flow_ == Flow::Normal; }
  // Tells the outcome Made with this word instead of Ran.
  void made(std::string what) {
    doing_.kind = Kind::Made;
    doing_.what = std::move(what);
  }
  // Tells that a server would do something that isn't kept here: an option, a message, a login.
  void withoutEffect() { doing_.kind = Kind::WithoutEffect; }
  // Runs `work` so that an error leaves nothing of it behind.
  template <class Work>
  void atomically(Work&& work);
  void schemaChanged();
  CatalogueChanges changes() { return CatalogueChanges(*catalogue_); }
  [[noreturn]] void notUnderstood(std::string reason) const;
  void skipWithoutEffect();
  void notKept();
  bool atBatchStart() const { return pieceStart_ == 0 && statementStart_ == 0; }
  bool insideAnother() const { return statementDepth_ > 1; }

  // interpreterValues.cpp: expressions, variables, queries
  TranslateContext& context();
  Translator translator() { return Translator(context(), reader_); }
  Value evaluate(const std::string& sql);
  bool evaluateCondition(const std::string& sql);
  // Binds a translated text's variables; refuses those whose value isn't known.
  void bind(sqlite::Statement& statement) const;
  void assign(const std::string& variable, const Value& value);
  void setStatement();
  void setOption();
  void setRunOption(const std::string& option);
  void selectStatement();
  void expressionStatement();
  void raiserrorStatement();
  void dbccStatement();
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
  void checkModuleBody(const std::string& kind, std::size_t from) const;
  void keepModule();

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

  // statementsCursor.cpp
  void declareCursor();
  void openCursor();
  void fetchCursor();
  void closeCursor();
  std::string cursorName();
  Cursor& cursorOf(const std::string& name);

  // statementsExec.cpp
  void execStatement();
  void execText(const std::string& text, std::size_t line, std::map<std::string, Value> variables = {},
                std::map<std::string, TypeRef> types = {}, const std::map<std::string, std::string>& outputs = {});
  std::vector<Argument> readArguments();
  Argument readArgument();
  void runProcedure(const ObjectName& procedure, const std::vector<Argument>& arguments, std::size_t line);
  void addType(const std::vector<Argument>& arguments);
  void renameObject(const std::vector<Argument>& arguments);
  void executeSql(const std::vector<Argument>& arguments, std::size_t line);
  void forEachTable(const std::vector<Argument>& arguments, std::size_t line);
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
  Structure structure_;
  Account account_;
  Doing doing_;
  std::vector<StatementOutcome>* tellTo_ = nullptr;  // where an inner text's outcomes go instead of to the listener
  std::map<std::size_t, std::size_t> ends_;          // of statements that were skipped, by their begin
  std::vector<std::size_t> blocks_;                  // the BEGINs around the current statement
  std::map<std::size_t, std::int64_t> jumps_;        // the state of things at a GOTO's last jump, by its token
  std::size_t pieceStart_ = 0;                       // offset of the current piece in the batch
  std::size_t lineOffset_ = 0;                       // lines before the current piece
  std::size_t fixedLine_ = 0;                        // not 0: the line that all outcomes are told with
  std::size_t statementStart_ = 0;
  std::size_t limit_ = 0;  // the token that ends the block around the current statement
  bool executing_ = true;
  bool parsed_ = false;
  bool suspensionTold_ = false;
  Flow flow_ = Flow::Normal;
  std::string target_;  // of GOTO, in lower case
  std::string caught_;  // the error that a CATCH was entered with
  int turnsByGoto_ = 0;
  int statementDepth_ = 0;
  bool deep_ = false;  // something in the piece is nested deeper than can be read
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
