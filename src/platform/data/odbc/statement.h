// One statement on a session: what is sent, and its rows in blocks.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/odbc/columnPlan.h"
#include "platform/data/odbc/parameters.h"
#include "platform/data/odbc/session.h"
#include "platform/data/provider.h"

namespace qrel::odbc {

// Everything that touches the handle runs on the session's worker, and only there; what it has found is read by the
// thread that waited for it. Owns all that its calls work with, so that one may be left to itself.
class Statement {
 public:
  Statement(std::shared_ptr<Session> session, const CommandRequest& request);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // On the worker -----------------------------------------------------------------------------------------------------

  // Sends the command, goes to its first result with columns and brings the first rows.
  void execute();
  // The next block of rows, which takes the place of the one before.
  void fill();
  void close();

  // By whoever waited -------------------------------------------------------------------------------------------------

  // What went wrong in the last call, as an error of the data access layer; nothing when all went well.
  std::optional<DataError> failure() const;
  bool lostLine() const { return lost_; }
  bool hasRows() const { return !columns_.empty(); }
  bool ended() const { return ended_; }  // there are no rows behind this block; the session is free again
  const std::vector<ColumnInfo>& columns() const { return columns_; }
  std::size_t rows() const { return rows_; }  // of the present block
  // Adds a row of the block. Raises DataError for a value that came cut.
  void appendTo(ColumnStore& store, std::size_t row) const;
  CommandResult result() const;  // without its rows

  // Safe from any thread: ends what runs.
  void cancel();

 private:
  struct Extent {
    std::size_t offset = 0;
    SQLLEN length = 0;  // SQL_NULL_DATA: Null
  };

  bool prepare();
  void toFirstResult(SQLRETURN result);
  void finish();
  void bindColumns();
  void fillBlock();
  void fillRowByRow();
  bool readCell(std::size_t column, Extent& extent);
  bool ok(SQLRETURN result);
  void fail();

  std::shared_ptr<Session> session_;
  CommandRequest request_;
  Parameters parameters_;
  SQLHSTMT handle_ = nullptr;
  std::atomic<SQLHSTMT> running_ = nullptr;  // for cancel
  std::atomic<bool> stopping_ = false;

  std::vector<ColumnInfo> columns_;
  std::vector<ColumnPlan> plans_;
  bool rowByRow_ = false;  // a column has no bound
  std::size_t blockRows_ = 0;
  std::vector<std::unique_ptr<char[]>> buffers_;  // by column, in blocks
  std::vector<std::vector<SQLLEN>> lengths_;      // the same
  std::vector<SQLUSMALLINT> statuses_;
  SQLULEN fetched_ = 0;
  std::string bytes_;            // row by row: all values of the block
  std::vector<Extent> extents_;  // and where they stand in it, row after row
  std::vector<char> piece_;      // the value, or its part, that is being read

  std::size_t rows_ = 0;
  bool ended_ = false;
  std::int64_t affected_ = 0;
  Records records_;
  bool failed_ = false;
  bool lost_ = false;
};

}  // namespace qrel::odbc
