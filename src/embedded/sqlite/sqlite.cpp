#include "embedded/sqlite/sqlite.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "embedded/sqlite/storageNames.h"

namespace qrel::sqlite {

namespace {

namespace fs = std::filesystem;

constexpr int busyMilliseconds = 4000;
constexpr int stepsBetweenClockLooks = 20000;

constexpr const char* loadAgain =
    "Load the database again with \"qrel load --replace\", or put back a copy of the file.";
constexpr const char* tooDeep =
    "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.";

bool holds(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

std::string_view behind(std::string_view text, std::string_view prefix) {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : std::string_view();
}

// A column as SQLite names it in a message, as people know it.
std::string columnIn(std::string_view message) {
  const std::size_t point = message.rfind('.');
  const std::string_view table = point == std::string_view::npos ? "" : message.substr(0, point + 1);
  return std::string(table) + tsql::shownColumn(message.substr(table.size()));
}

std::string withoutPrefix(std::string_view function) {
  if (function.ends_with("()")) function.remove_suffix(2);
  return std::string(function.starts_with("q_") ? function.substr(2) : function);
}

// The server's sentences for what SQLite says of a statement's shape; empty: SQLite says something else.
std::string_view sentenceFor(std::string_view message) {
  struct Pair {
    std::string_view theirs, ours;
  };
  static constexpr Pair pairs[] = {
      {"parser stack overflow", tooDeep},
      {"Expression tree is too large", tooDeep},
      {"too many levels of", tooDeep},
      {"too many terms in", tooDeep},
      {"too many FROM clause terms", tooDeep},
      {"too many references to", tooDeep},
      {"in a join", "Too many table names in the query. The maximum allowable is 64."},
      {"too many columns in", "The query has too many columns. The maximum allowable is 2000."},
      {"too many arguments on function", "The function call has too many arguments."},
      {"too many SQL variables", "The query has too many variables."},
      {"misuse of aggregate", "An aggregate may not appear here: it belongs in a select list or a HAVING clause."},
      {"misuse of window function", "Windowed functions can only appear in the SELECT or ORDER BY clauses."},
      {"do not have the same number of result columns",
       "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of expressions in "
       "their target lists."},
      {"all VALUES must have the same number of terms",
       "All rows of a VALUES list must have the same number of expressions."},
      {"sub-select returns",
       "Only one expression can be specified in the select list when the subquery is not introduced with EXISTS."},
      {"row value misused",
       "Only one expression can be specified in the select list when the subquery is not introduced with EXISTS."},
      {"ORDER BY term does not match any column",
       "ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT "
       "operator."},
      {"ORDER BY term out of range",
       "The ORDER BY position number is out of range of the number of items in the select list."},
      {"GROUP BY term out of range", "Each GROUP BY expression must contain at least one column."},
      {"HAVING clause on a non-aggregate query", "A HAVING clause needs a GROUP BY clause or an aggregate."},
      {"integer overflow", "Arithmetic overflow error converting expression to data type bigint."},
      {"circular reference", "A common table expression refers to itself in a way that can't be followed."},
      {"recursive", "A recursive common table expression must refer to itself once, behind UNION ALL."},
      {"values for",
       "A common table expression or a table in brackets has another number of columns than its list names."},
      {"must be a positive integer", "The argument of a windowed function must be a positive whole number."},
      {"datatype mismatch", "The number of rows in TOP, OFFSET or FETCH must be a whole number."},
      {"no tables specified", "Must specify table to select from."},
      {"incomplete input", "Incorrect syntax near the end of the statement."},
  };
  for (const Pair& pair : pairs)
    if (holds(message, pair.theirs)) return pair.ours;
  return {};
}

std::string reason(int number) { return number != 0 ? std::strerror(number) : "the system gives no reason"; }

}  // namespace

void failTooLong() {
  throw DataError(errorNumber::badSql,
                  "The value is longer than " + std::to_string(longestValue / 1024 / 1024) +
                      " MB, which is more than this server holds in one value.",
                  "22001");
}

Statement::Statement(Database& database, std::string_view sql) : database_(&database) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(database.get(), sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
  handle_.reset(statement);
  if (code != SQLITE_OK) database.fail(code, sql);
  if (!statement) throw DataError(errorNumber::badSql, "The command is empty.", "42000", std::string(sql));
}

Statement& Statement::bind(int index, const Value& value) {
  if (value.null) return bindNull(index);
  switch (value.type) {
    case DataType::Boolean:
    case DataType::Integer:
      return bind(index, value.integer);
    case DataType::Double:
      if (const int code = sqlite3_bind_double(get(), index, value.real); code != SQLITE_OK) database_->fail(code, {});
      return *this;
    case DataType::Binary: {
      const int size = static_cast<int>(value.text.size());
      const int code = size == 0 ? sqlite3_bind_zeroblob(get(), index, 0)
                                 : sqlite3_bind_blob(get(), index, value.text.data(), size, SQLITE_TRANSIENT);
      if (code != SQLITE_OK) database_->fail(code, {});
      return *this;
    }
    default:
      return bind(index, std::string_view(value.text));
  }
}

Statement& Statement::bind(int index, std::string_view text) {
  // A null pointer would bind Null.
  const char* data = text.data() ? text.data() : "";
  const int code = sqlite3_bind_text(get(), index, data, static_cast<int>(text.size()), SQLITE_TRANSIENT);
  if (code != SQLITE_OK) database_->fail(code, {});
  return *this;
}

Statement& Statement::bind(int index, std::int64_t number) {
  if (const int code = sqlite3_bind_int64(get(), index, number); code != SQLITE_OK) database_->fail(code, {});
  return *this;
}

Statement& Statement::bindNull(int index) {
  if (const int code = sqlite3_bind_null(get(), index); code != SQLITE_OK) database_->fail(code, {});
  return *this;
}

bool Statement::step() {
  const int code = sqlite3_step(get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  const char* sql = sqlite3_sql(get());
  const std::string text = sql ? sql : "";
  try {
    database_->fail(code, text);
  } catch (...) {
    sqlite3_reset(get());  // a failed statement must not keep its locks
    throw;
  }
}

void Statement::reset() { sqlite3_reset(get()); }

std::string_view Statement::text(int column) const {
  const auto* data = static_cast<const char*>(sqlite3_column_blob(get(), column));
  const int size = sqlite3_column_bytes(get(), column);
  return data ? std::string_view(data, static_cast<std::size_t>(size)) : std::string_view();
}

Database::Database(const fs::path& file, OpenMode mode, const KeptFile* kept) : file_(file), mode_(mode) {
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  flags |= mode == OpenMode::ReadOnly ? SQLITE_OPEN_READONLY | SQLITE_OPEN_URI : SQLITE_OPEN_READWRITE;
  if (mode == OpenMode::Create) flags |= SQLITE_OPEN_CREATE;
  // A relative path might begin like an address, "file:...".
  const std::string name = kept ? kept->name() : file == ":memory:" ? file.string() : fs::absolute(file).string();
  int code = sqlite3_open_v2(name.c_str(), &handle_, flags, kept ? KeptFile::vfs() : nullptr);
  if (code == SQLITE_OK) {
    sqlite3_busy_timeout(handle_, busyMilliseconds);
    // "x" that names no column is an error, never a text.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_limit(handle_, SQLITE_LIMIT_LENGTH, static_cast<int>(longestValue));
    sqlite3_progress_handler(handle_, stepsBetweenClockLooks, &Database::progress, this);
    // The file is read at first use only: look at it now, so that a damaged one is told at opening.
    code = sqlite3_exec(handle_, "PRAGMA temp_store = MEMORY; PRAGMA schema_version", nullptr, nullptr, nullptr);
  }
  if (code == SQLITE_OK) return;
  try {
    fail(code, {});
  } catch (...) {
    sqlite3_close_v2(std::exchange(handle_, nullptr));
    throw;
  }
}

Database::~Database() {
  cache_.clear();
  sqlite3_close_v2(handle_);
}

int Database::progress(void* self) {
  auto& database = *static_cast<Database*>(self);
  if (database.interrupted_.load(std::memory_order_relaxed)) return 1;
  if (database.stopAsked && *database.stopAsked && (*database.stopAsked)()) return 1;
  if (database.deadline_ == std::chrono::steady_clock::time_point::max()) return 0;
  database.timedOut_ = std::chrono::steady_clock::now() >= database.deadline_;
  return database.timedOut_ ? 1 : 0;
}

void Database::startClock(int seconds) {
  using clock = std::chrono::steady_clock;
  deadline_ = seconds > 0 ? clock::now() + std::chrono::seconds(seconds) : clock::time_point::max();
  timedOut_ = false;
  interrupted_.store(false, std::memory_order_relaxed);
}

void Database::execute(std::string_view sql) {
  const int code = sqlite3_exec(handle_, std::string(sql).c_str(), nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) fail(code, sql);
}

Statement& Database::cached(const std::string& sql) {
  auto& kept = cache_[sql];
  if (!kept) {
    try {
      kept = std::make_unique<Statement>(*this, sql);
    } catch (...) {
      cache_.erase(sql);
      throw;
    }
  }
  kept->reset();
  return *kept;
}

void Database::resetAll() {
  for (sqlite3_stmt* each = sqlite3_next_stmt(handle_, nullptr); each; each = sqlite3_next_stmt(handle_, each))
    if (sqlite3_stmt_busy(each) != 0) sqlite3_reset(each);
}

bool Database::isAttached(std::string_view schema) const {
  for (int i = 2; const char* name = sqlite3_db_name(handle_, i); ++i)
    if (schema == name) return true;
  return false;
}

// A load works on a copy beside the database, which people know nothing of.
fs::path Database::shown() const {
  const std::string name = file_.filename().string();
  const std::size_t mark = name.rfind(".loading-");
  return mark == std::string::npos ? file_ : file_.parent_path() / name.substr(0, mark);
}

// Behind "The database file 'x' ".
std::string Database::cannotOpen() const {
  const int number = handle_ ? sqlite3_system_errno(handle_) : 0;
  std::error_code ignored;
  const fs::path folder = file_.has_parent_path() ? file_.parent_path() : fs::path(".");
  const std::string in = "in the folder '" + folder.string() + "'";
  if (fs::is_directory(file_, ignored)) return "cannot be opened: it is a folder.";
  if (number == EACCES || number == EPERM)
    return mode_ == OpenMode::ReadOnly
               ? "cannot be opened: you have no right to read it. Ask for the right to read it " + in + "."
               : "cannot be opened or made: you have no right to write " + in +
                     ". Ask for that right, or choose another folder.";
  if (number == EROFS) return "cannot be opened or made " + in + ": the disk is read-only. Choose another folder.";
  if (number == ENOSPC)
    return "cannot grow: the disk of the folder '" + folder.string() + "' is full. Make room there and try again.";
  if (number == ENOENT && mode_ != OpenMode::Create && fs::is_directory(folder, ignored))
    return "does not exist. Make it with \"qrel load\".";
  if (number == ENOENT || number == ENOTDIR)
    return "cannot be opened: there is no folder '" + folder.string() + "'. Make the folder, or choose another one.";
  return "cannot be opened: " + reason(number) + ".";
}

std::string Database::cannotWrite(int code) const {
  if (code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY)
    return std::string("was being changed by a program that ended before it was done. ") + loadAgain;
  const std::string folder = file_.has_parent_path() ? file_.parent_path().string() : ".";
  return "cannot be written: you have no right to change it or its folder '" + folder + "'. Ask for that right.";
}

std::string Database::cannotTransfer(int code) const {
  const int number = sqlite3_system_errno(handle_);
  if (number == ENOSPC || number == EDQUOT)
    return "cannot grow: the disk of the folder '" + file_.parent_path().string() +
           "' is full. Make room there and try again.";
  const bool reading = code == SQLITE_IOERR_READ || code == SQLITE_IOERR_SHORT_READ || mode_ == OpenMode::ReadOnly;
  const std::string why = number != 0 ? ": " + reason(number) : "";
  return std::string(reading ? "cannot be read" : "cannot be read or written") + why +
         ". Try again; if that doesn't help, look after the disk, or put back a copy of the file.";
}

// What SQLite doesn't take, in the server's words.
DataError Database::refused(const std::string& message, std::string_view sql) const {
  const std::string text(sql);
  const auto bad = [&](std::string sentence, const char* state = "42000") {
    return DataError(errorNumber::badSql, std::move(sentence), state, text);
  };
  if (const auto name = behind(message, "no such table: "); !name.empty()) {
    // Tables are looked up in the catalogue first: one that isn't there all the same has been lost.
    const std::size_t point = name.find('.');
    if (point == std::string_view::npos || !isAttached(name.substr(0, point)))
      return {errorNumber::cannotConnect,
              "The database file '" + shown().string() + "' is damaged: a part of it is missing. " + loadAgain, "08001",
              text};
    return {errorNumber::invalidObjectName, "Invalid object name '" + std::string(name.substr(point + 1)) + "'.",
            "42S02", text};
  }
  if (const auto name = behind(message, "no such column: "); !name.empty())
    return bad("Invalid column name '" + columnIn(name) + "'.", "42S22");
  if (const auto name = behind(message, "ambiguous column name: "); !name.empty())
    return bad("Ambiguous column name '" + columnIn(name) + "'.");
  if (const auto name = behind(message, "no such function: "); !name.empty())
    return bad("'" + withoutPrefix(name) + "' is not a recognized built-in function name.");
  if (const auto name = behind(message, "wrong number of arguments to function "); !name.empty())
    return bad("The " + withoutPrefix(name) + " function requires another number of arguments.");
  if (const auto rest = behind(message, "near \""); !rest.empty())
    return bad("Incorrect syntax near '" + std::string(rest.substr(0, rest.find("\":"))) + "'.");
  if (const auto rest = behind(message, "unrecognized token: \""); !rest.empty())
    return bad("Incorrect syntax near '" + std::string(rest.substr(0, rest.rfind('"'))) + "'.");
  if (const auto sentence = sentenceFor(message); !sentence.empty()) return bad(std::string(sentence));
  return bad("The embedded server can't carry out this statement.");
}

void Database::fail(int code, std::string_view sql) const {
  if (const auto raised = std::exchange(functionError_, nullptr); raised && (code & 0xFF) == SQLITE_ERROR) {
    try {
      std::rethrow_exception(raised);
    } catch (DataError& error) {
      if (error.sql.empty()) error.sql = sql;
      throw;
    }
  }
  const auto unusable = [&](const std::string& what) {
    return DataError(errorNumber::cannotConnect, "The database file '" + shown().string() + "' " + what, "08001",
                     std::string(sql));
  };
  const std::string message = handle_ ? sqlite3_errmsg(handle_) : sqlite3_errstr(code);
  switch (code & 0xFF) {
    case SQLITE_CANTOPEN:
      throw unusable(cannotOpen());
    case SQLITE_PERM:
    case SQLITE_READONLY:
      throw unusable(cannotWrite(code));
    case SQLITE_NOTADB:
      throw unusable(std::string("is not a database of this server. ") + loadAgain);
    case SQLITE_CORRUPT:
      // What the disk refuses to give counts as damage to SQLite.
      if (sqlite3_system_errno(handle_) == EIO) throw unusable(cannotTransfer(SQLITE_IOERR_READ));
      throw unusable(std::string("is damaged. ") + loadAgain);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw unusable("is in use by another program. Try again when that has finished.");
    case SQLITE_FULL:
      throw unusable("cannot grow: the disk of the folder '" + file_.parent_path().string() +
                     "' is full. Make room there and try again.");
    case SQLITE_IOERR:
      throw unusable(cannotTransfer(code));
    case SQLITE_NOMEM:
      throw std::bad_alloc();
    case SQLITE_TOOBIG:
      failTooLong();
    case SQLITE_INTERRUPT:
      if (timedOut_) throw DataError(errorNumber::timeout, "Query timeout expired.", "HYT00", std::string(sql));
      throw DataError(errorNumber::cancelled, "Operation canceled.", "HY008", std::string(sql));
    case SQLITE_CONSTRAINT:  // whoever writes rows says in the server's words which key it is
      throw EngineError({errorNumber::badSql, message, "23000", std::string(sql)}, message);
    default:
      throw EngineError(refused(message, sql), message);
  }
}

Value valueOf(const Statement& row, int column) {
  Value value;
  switch (sqlite3_column_type(row.get(), column)) {
    case SQLITE_NULL:
      return value;
    case SQLITE_INTEGER:
      return Value::ofInteger(row.integer(column));
    case SQLITE_FLOAT:
      return Value::ofDouble(sqlite3_column_double(row.get(), column));
    default:
      break;
  }
  value = Value::ofText(std::string(row.text(column)));
  if (sqlite3_column_type(row.get(), column) == SQLITE_BLOB) value.type = DataType::Binary;
  return value;
}

}  // namespace qrel::sqlite
