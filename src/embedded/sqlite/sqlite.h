// A thin owner of SQLite's handles. Errors are raised as DataError in the server's words, never in SQLite's: 0x80004005
// for files that can't be used (missing, locked, damaged, full disk: the sentence names the file and what to do),
// 0x80040E14 for bad SQL, 0x80040E31 for a time-out, 0x80040E4E for what was interrupted.
#pragma once

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "embedded/sqlite/keptFile.h"
#include "platform/data/value.h"
#include "platform/error.h"

namespace qrel::sqlite {

class Database;

// A statement that SQLite refuses. `engineText` is its own sentence: for those who know what it means, never for a
// person.
class EngineError : public DataError {
 public:
  EngineError(DataError error, std::string text) : DataError(std::move(error)), engineText(std::move(text)) {}
  std::string engineText;
};

// The longest text or binary value, in bytes. The server's own limit is 2 GB - 1; what is longer than this is refused
// before it is made.
inline constexpr std::int64_t longestValue = std::int64_t{256} * 1024 * 1024;
[[noreturn]] void failTooLong();

// A prepared statement. Bound values are copied.
class Statement {
 public:
  Statement() = default;
  Statement(Database& database, std::string_view sql);

  Statement& bind(int index, const Value& value);  // 1-based
  Statement& bind(int index, std::string_view text);
  Statement& bind(int index, std::int64_t number);
  Statement& bindNull(int index);
  bool step();  // true: a row stands ready
  void reset();
  void run() {
    while (step()) {
    }
    reset();
  }

  std::int64_t integer(int column) const { return sqlite3_column_int64(get(), column); }  // 0-based
  std::string_view text(int column) const;
  bool isNull(int column) const { return sqlite3_column_type(get(), column) == SQLITE_NULL; }
  sqlite3_stmt* get() const { return handle_.get(); }
  explicit operator bool() const { return handle_ != nullptr; }

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalizer> handle_;
  Database* database_ = nullptr;
};

enum class OpenMode { ReadOnly, ReadWrite, Create };

class Database {
 public:
  // With `kept` that file is read, which was `file` once; messages speak of `file`.
  Database(const std::filesystem::path& file, OpenMode mode, const KeptFile* kept = nullptr);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();

  void execute(std::string_view sql);
  // A statement prepared once per text and kept; reset when handed out.
  Statement& cached(const std::string& sql);
  void forgetCached() { cache_.clear(); }

  // Gives what runs from now on this many seconds (0: without end); past them it raises a time-out. Takes back an
  // earlier interrupt.
  void startClock(int seconds);
  // From now on without end again; an interrupt stays in force.
  void stopClock() { deadline_ = std::chrono::steady_clock::time_point::max(); }
  // Ends what runs on this handle, now or at its next step, with "Operation canceled". May be called from another
  // thread or a signal handler.
  void interrupt() {
    interrupted_.store(true, std::memory_order_relaxed);
    sqlite3_interrupt(handle_);  // counting a whole table takes one long step
  }
  // Asked every few milliseconds while something runs on this handle; true ends it like interrupt. Not owned, may be
  // null or empty.
  const std::function<bool()>* stopAsked = nullptr;

  // What a function called by the running statement has raised; `fail` raises it instead of SQLite's error.
  void noteFunctionError(std::exception_ptr error) { functionError_ = std::move(error); }
  // Ends the reading of statements that somebody has left in the middle.
  void resetAll();

  // Raises the DataError for a result code of a call on this handle.
  [[noreturn]] void fail(int code, std::string_view sql) const;

  sqlite3* get() const { return handle_; }
  const std::filesystem::path& file() const { return file_; }
  bool readOnly() const { return mode_ == OpenMode::ReadOnly; }

 private:
  static int progress(void* self);
  std::filesystem::path shown() const;
  std::string cannotOpen() const;
  std::string cannotWrite(int code) const;
  std::string cannotTransfer(int code) const;
  bool isAttached(std::string_view schema) const;
  DataError refused(const std::string& message, std::string_view sql) const;

  std::filesystem::path file_;
  OpenMode mode_;
  sqlite3* handle_ = nullptr;
  std::unordered_map<std::string, std::unique_ptr<Statement>> cache_;
  std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::time_point::max();
  std::atomic<bool> interrupted_ = false;
  bool timedOut_ = false;
  mutable std::exception_ptr functionError_;
};

// A column of the current row as a value of SQLite's own type: Integer, Double, Text or Binary.
Value valueOf(const Statement& row, int column);

}  // namespace qrel::sqlite
