#include "platform/data/odbc/statement.h"

#include <algorithm>

namespace qrel::odbc {

namespace {

constexpr std::size_t blockBytes = std::size_t{2} << 20;
constexpr std::size_t mostBlockRows = 2000;
constexpr std::size_t mostRowsOneByOne = 256;
constexpr std::size_t pieceBytes = 65'536;  // of a long value; even, so that no UTF-16 unit is cut

SQLSMALLINT columnCount(SQLHSTMT statement) {
  SQLSMALLINT count = 0;
  SQLNumResultCols(statement, &count);
  return count;
}

bool tellsOfCutData(SQLHSTMT statement) {
  const Records records = recordsOf(SQL_HANDLE_STMT, statement);
  return std::any_of(records.begin(), records.end(), [](const Record& each) { return each.state == "01004"; });
}

}  // namespace

Statement::Statement(std::shared_ptr<Session> session, const CommandRequest& request)
    : session_(std::move(session)), request_(request), parameters_(request) {}

// Where nobody has closed it, nobody else works with the session either.
Statement::~Statement() { close(); }

void Statement::close() {
  running_ = nullptr;
  if (handle_) SQLFreeHandle(SQL_HANDLE_STMT, handle_);
  handle_ = nullptr;
  ended_ = true;
}

void Statement::cancel() {
  stopping_ = true;
  if (const SQLHSTMT handle = running_) SQLCancel(handle);
}

// The records must be read at once, and the handle closed: otherwise the connection stays occupied.
void Statement::fail() {
  failed_ = true;
  rows_ = 0;
  if (handle_) records_ = recordsOf(SQL_HANDLE_STMT, handle_);
  lost_ = tellLostLine(records_) || records_.empty();
  SQLUINTEGER dead = SQL_CD_FALSE;
  if (SQL_SUCCEEDED(SQLGetConnectAttrW(session_->get(), SQL_ATTR_CONNECTION_DEAD, &dead, SQL_IS_UINTEGER, nullptr)) &&
      dead == SQL_CD_TRUE)
    lost_ = true;
  if (lost_) session_->dead = true;
  close();
}

bool Statement::ok(SQLRETURN result) {
  if (SQL_SUCCEEDED(result) && !stopping_) return true;
  fail();
  return false;
}

std::optional<DataError> Statement::failure() const {
  if (stopping_) return cancelled(request_.text);
  if (!failed_) return {};
  return commandFailure(records_, session_->opening().attempt, request_.text);
}

bool Statement::prepare() {
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, session_->get(), &handle_))) {
    records_ = recordsOf(SQL_HANDLE_DBC, session_->get());
    failed_ = lost_ = session_->dead = true;
    return false;
  }
  running_ = handle_;
  SQLSetStmtAttrW(handle_, SQL_ATTR_QUERY_TIMEOUT, asPointer(static_cast<std::uintptr_t>(request_.timeoutSeconds)),
                  SQL_IS_UINTEGER);
  return ok(parameters_.bind(handle_) ? SQL_SUCCESS : SQL_ERROR);
}

void Statement::execute() {
  if (!prepare()) return;
  std::vector<SQLWCHAR> text = wide(parameters_.text());
  const SQLRETURN result = SQLExecDirectW(handle_, text.data(), static_cast<SQLINTEGER>(text.size()));
  // A command without rows and without a count has no data, which is no failure.
  if (!ok(result == SQL_NO_DATA ? SQLRETURN{SQL_SUCCESS} : result)) return;
  toFirstResult(result);
}

// Counts of rows and messages stand in front of it as results of their own.
void Statement::toFirstResult(SQLRETURN result) {
  while (columnCount(handle_) == 0) {
    SQLLEN count = 0;
    if (result != SQL_NO_DATA && SQL_SUCCEEDED(SQLRowCount(handle_, &count)) && count > 0) affected_ += count;
    result = SQLMoreResults(handle_);
    if (result == SQL_NO_DATA) return close();
    if (!ok(result)) return;
  }
  describeColumns(handle_, columns_, plans_);
  rowByRow_ = std::any_of(plans_.begin(), plans_.end(), [](const ColumnPlan& plan) { return plan.room == 0; });
  if (!rowByRow_) bindColumns();
  if (!failed_) fill();
}

void Statement::bindColumns() {
  std::size_t rowBytes = 0;
  for (const ColumnPlan& plan : plans_) rowBytes += plan.room + sizeof(SQLLEN);
  blockRows_ = std::clamp(blockBytes / rowBytes, std::size_t{1}, mostBlockRows);
  statuses_.resize(blockRows_);
  SQLSetStmtAttrW(handle_, SQL_ATTR_ROW_BIND_TYPE, asPointer(SQL_BIND_BY_COLUMN), SQL_IS_UINTEGER);
  SQLSetStmtAttrW(handle_, SQL_ATTR_ROW_STATUS_PTR, statuses_.data(), SQL_IS_POINTER);
  SQLSetStmtAttrW(handle_, SQL_ATTR_ROWS_FETCHED_PTR, &fetched_, SQL_IS_POINTER);
  if (!ok(SQLSetStmtAttrW(handle_, SQL_ATTR_ROW_ARRAY_SIZE, asPointer(blockRows_), SQL_IS_UINTEGER))) return;
  for (std::size_t i = 0; i < plans_.size(); ++i) {
    // Not filled with zeros: most results are short, and pages that nobody touches cost nothing.
    buffers_.emplace_back(new char[plans_[i].room * blockRows_]);
    lengths_.emplace_back(blockRows_);
    if (!ok(SQLBindCol(handle_, static_cast<SQLUSMALLINT>(i + 1), plans_[i].cType, buffers_[i].get(),
                       static_cast<SQLLEN>(plans_[i].room), lengths_[i].data())))
      return;
  }
}

void Statement::fill() {
  rows_ = 0;
  if (ended_ || failed_) return;
  if (rowByRow_)
    fillRowByRow();
  else
    fillBlock();
}

void Statement::fillBlock() {
  SQLRETURN result = SQLFetch(handle_);
  if (result == SQL_NO_DATA) return finish();
  if (!ok(result)) return;
  const std::size_t count = std::min<std::size_t>(fetched_, blockRows_);
  const bool broken = std::any_of(statuses_.begin(), statuses_.begin() + static_cast<std::ptrdiff_t>(count),
                                  [](SQLUSMALLINT status) { return status == SQL_ROW_ERROR; });
  if (broken || (result == SQL_SUCCESS_WITH_INFO && tellsOfCutData(handle_))) return fail();
  // Only the last block is short. What lies behind it is asked at once, so that the session is free again.
  if (count < blockRows_) {
    result = SQLFetch(handle_);
    if (result != SQL_NO_DATA) return fail();
    finish();
  }
  if (!failed_) rows_ = count;
}

void Statement::fillRowByRow() {
  bytes_.clear();
  extents_.clear();
  piece_.resize(pieceBytes);
  std::size_t count = 0;
  while (count < mostRowsOneByOne && bytes_.size() < blockBytes / 2) {
    const SQLRETURN result = SQLFetch(handle_);
    if (result == SQL_NO_DATA) {
      finish();
      break;
    }
    if (!ok(result)) return;
    for (std::size_t i = 0; i < plans_.size(); ++i)
      if (!readCell(i, extents_.emplace_back())) return;
    ++count;
  }
  if (!failed_) rows_ = count;
}

// In pieces where it is longer than one. UTF-16 is put together first and read afterwards: pieces cut pairs in two.
bool Statement::readCell(std::size_t column, Extent& extent) {
  const ColumnPlan& plan = plans_[column];
  const std::size_t room = plan.room != 0 ? plan.room : pieceBytes;
  const std::size_t most = plan.cType == SQL_C_WCHAR ? room - sizeof(SQLWCHAR) : room;
  extent.offset = bytes_.size();
  while (true) {
    SQLLEN length = 0;
    const SQLRETURN result = SQLGetData(handle_, static_cast<SQLUSMALLINT>(column + 1), plan.cType, piece_.data(),
                                        static_cast<SQLLEN>(room), &length);
    if (result == SQL_NO_DATA) break;
    if (!ok(result)) return false;
    if (length == SQL_NULL_DATA) {
      extent.length = SQL_NULL_DATA;
      return true;
    }
    // The length is of what was still to come, and tells whether there is more: the return code doesn't always.
    const bool more = length == SQL_NO_TOTAL || static_cast<std::size_t>(length) > most;
    bytes_.append(piece_.data(), more ? most : static_cast<std::size_t>(length));
    if (!more) break;
  }
  extent.length = static_cast<SQLLEN>(bytes_.size() - extent.offset);
  return true;
}

// Behind the last row: an error that ended them may be told only now.
void Statement::finish() {
  while (true) {
    const SQLRETURN result = SQLMoreResults(handle_);
    if (result == SQL_NO_DATA) break;
    if (!ok(result)) return;
    if (columnCount(handle_) > 0) break;  // nobody asks for a second result
  }
  close();
}

void Statement::appendTo(ColumnStore& store, std::size_t row) const {
  for (std::size_t i = 0; i < plans_.size(); ++i) {
    const ColumnPlan& plan = plans_[i];
    const Extent extent = rowByRow_ ? extents_[row * plans_.size() + i] : Extent{row * plan.room, lengths_[i][row]};
    if (extent.length == SQL_NULL_DATA) {
      store.appendNull(i);
      continue;
    }
    // Drivers cut without a word: only the length tells.
    const std::size_t end = plan.cType == SQL_C_WCHAR ? sizeof(SQLWCHAR) : 0;
    if (!rowByRow_ && (extent.length < 0 || static_cast<std::size_t>(extent.length) + end > plan.room))
      throw cutValue(columns_[i].name, request_.text);
    const char* start = (rowByRow_ ? bytes_.data() : buffers_[i].get()) + extent.offset;
    appendValue(store, i, plan, columns_[i].scale, {start, static_cast<std::size_t>(extent.length)});
  }
}

CommandResult Statement::result() const {
  CommandResult result;
  result.recordsAffected = affected_;
  result.returnValue = request_.isProcedure ? parameters_.returnValue() : 0;
  result.outputs = parameters_.outputs();
  return result;
}

}  // namespace qrel::odbc
