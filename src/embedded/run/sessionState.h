// What a session keeps from batch to batch.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/language/statementRights.h"
#include "embedded/run/openDatabase.h"
#include "platform/data/value.h"

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
  std::vector<Value> row;               // the given values of the row that is being read
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

// What statements have left behind for those that follow. A loop that is taken back takes it back as well; another
// database begins it anew.
struct SessionMemory {
  int transactions = 0;                             // @@TRANCOUNT
  std::string identityInsert;                       // the table with SET IDENTITY_INSERT ON, as its storage is named
  std::map<std::int64_t, std::int64_t> identities;  // last identity value given, by table id
  std::map<std::int64_t, std::int64_t> versions;    // last timestamp value given, by table id
  std::set<std::string> usedNames;                  // names that USE gave to this database, in lower case
  std::set<std::string> saved;                      // names of SAVE TRANSACTION, in lower case
  std::unordered_map<std::string, InsertPlan, TextHash, std::equal_to<>> plans;
  std::int64_t inserted = 0;  // rows that no ROLLBACK has taken back
  std::int64_t insertedAtBegin = 0;
  bool noExec = false;                    // SET NOEXEC ON: statements are read, not run
  bool rowLimit = false;                  // SET ROWCOUNT with a number
  std::int64_t changes = 0;               // counts what a statement changes beside rows: variables, cursors, objects
  std::set<std::string> unknown;          // variables whose assignment wasn't carried out
  std::map<std::string, Cursor> cursors;  // by lower-case name
  std::set<std::string> lostCursors;      // names whose DECLARE wasn't understood
};

// What SET has set, and what is made under it keeps.
struct SessionSettings {
  bool quotedIdentifier = true;
  bool ansiNulls = true;
  bool ansiPadding = true;
};

// How many of each are running within one another.
struct SessionDepths {
  int texts = 0;  // EXEC
  int loops = 0;  // WHILE
  int tries = 0;  // BEGIN TRY
};

// A foreign key that CREATE TABLE has left out because the table that it refers to isn't there yet.
struct LaterKey {
  ObjectName table;
  ForeignKeyDef key;
};

struct SessionState {
  // A database that is open for reading gives the right to read alone.
  explicit SessionState(std::shared_ptr<OpenDatabase> database);
  ~SessionState();
  SessionState(const SessionState&) = delete;
  SessionState& operator=(const SessionState&) = delete;

  // Goes on with another database.
  void moveTo(std::shared_ptr<OpenDatabase> other);
  // Keeps what a transaction that is still open has done.
  void commitAll();

  std::shared_ptr<OpenDatabase> open;
  Rights rights;
  std::map<std::string, Value> variables;  // of the batch, by lower-case name with @
  std::map<std::string, TypeRef> variableTypes;
  SessionSettings settings;
  SessionMemory memory;
  SessionDepths depths;
  // Where CREATE TABLE puts such keys; null: it is refused, as ever.
  std::vector<LaterKey>* laterKeys = nullptr;
  // The file that a path of the script means, by whoever runs it; raises the server's error when there is none. Empty:
  // a script may name no files.
  std::function<std::filesystem::path(std::string_view written)> dataFile;

 private:
  void leave();
};

}  // namespace qrel::tsql
