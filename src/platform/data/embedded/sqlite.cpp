#include "platform/data/embedded/sqlite.h"

#include <utility>

#include "platform/error.h"

namespace qrel::sqlite {

namespace {

constexpr int busyMilliseconds = 4000;
constexpr int stepsBetweenClockLooks = 20000;

std::string_view afterPrefix(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix ? text.substr(prefix.size()) : std::string_view();
}

// The server's words for what SQLite says of a text it can't prepare.
DataError badSql(const std::string& message, std::string_view sql) {
  const std::string text(sql);
  if (auto name = afterPrefix(message, "no such table: "); !name.empty())
    return {errorNumber::invalidObjectName, "Invalid object name '" + std::string(name) + "'.", "42S02", text};
  if (auto name = afterPrefix(message, "no such column: "); !name.empty())
    return {errorNumber::badSql, "Invalid column name '" + std::string(name) + "'.", "42S22", text};
  if (auto name = afterPrefix(message, "ambiguous column name: "); !name.empty())
    return {errorNumber::badSql, "Ambiguous column name '" + std::string(name) + "'.", "42000", text};
  if (auto name = afterPrefix(message, "no such function: "); !name.empty())
    return {errorNumber::badSql, "'" + std::string(name) + "' is not a recognized built-in function name.", "42000",
            text};
  if (auto rest = afterPrefix(message, "near \""); !rest.empty())
    return {errorNumber::badSql, "Incorrect syntax near '" + std::string(rest.substr(0, rest.find("\":"))) + "'.",
            "42000", text};
  return {errorNumber::badSql, message, "42000", text};
}

}  // namespace

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

Database::Database(const std::filesystem::path& file, OpenMode mode) : file_(file) {
  int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  flags |= mode == OpenMode::ReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  if (mode == OpenMode::Create) flags |= SQLITE_OPEN_CREATE;
  int code = sqlite3_open_v2(file.string().c_str(), &handle_, flags, nullptr);
  if (code == SQLITE_OK) {
    sqlite3_busy_timeout(handle_, busyMilliseconds);
    // "x" that names no column is an error, never a text.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_progress_handler(handle_, stepsBetweenClockLooks, &Database::progress, this);
    // The file is read at first use only: look at it now, so that a damaged one is told at opening.
    code = sqlite3_exec(handle_, "PRAGMA temp_store = MEMORY; PRAGMA schema_version", nullptr, nullptr, nullptr);
  }
  if (code == SQLITE_OK) return;
  try {
    failOpening(code);
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

void Database::failOpening(int code) const {
  std::error_code ignored;
  if ((code & 0xFF) == SQLITE_CANTOPEN && !std::filesystem::exists(file_, ignored))
    throw DataError(errorNumber::cannotConnect, "The database file '" + file_.string() + "' does not exist.", "08001");
  fail(code, {});
}

void Database::fail(int code, std::string_view sql) const {
  const std::string message = handle_ ? sqlite3_errmsg(handle_) : sqlite3_errstr(code);
  const auto unusable = [&](const std::string& what) {
    return DataError(errorNumber::cannotConnect, "The database file '" + file_.string() + "' " + what, "08001",
                     std::string(sql));
  };
  switch (code & 0xFF) {
    case SQLITE_CANTOPEN:
      throw unusable("cannot be opened.");
    case SQLITE_PERM:
    case SQLITE_READONLY:
      throw unusable("cannot be written: " + message + ".");
    case SQLITE_NOTADB:
      throw unusable("is not a database.");
    case SQLITE_CORRUPT:
      throw unusable("is damaged: " + message + ".");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw unusable("is in use by another program. Try again when that has finished.");
    case SQLITE_FULL:
      throw unusable("cannot grow: the disk is full.");
    case SQLITE_IOERR:
      throw unusable("cannot be read or written: " + message + ".");
    case SQLITE_NOMEM:
      throw std::bad_alloc();
    case SQLITE_INTERRUPT:
      if (timedOut_) throw DataError(errorNumber::timeout, "Query timeout expired.", "HYT00", std::string(sql));
      throw DataError(errorNumber::cancelled, "Operation canceled.", "HY008", std::string(sql));
    default:
      throw badSql(message, sql);
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
