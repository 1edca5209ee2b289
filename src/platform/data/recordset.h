// Field and Recordset: the records that a command brings, as the data access layer gives them.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/connection.h"
#include "platform/data/provider.h"
#include "platform/data/value.h"

namespace qrel {

// One field of the current record.
struct Field {
  const ColumnInfo* column = nullptr;
  Cell cell;

  bool IsNull() const { return cell.null; }
  std::string Text() const { return textOf(cell); }
};

// A static, scrollable set of records. With the client-side cursor it holds all its rows and is disconnected; with the
// server-side cursor rows come CacheSize at a time as they are asked for, and the first use of Filter, Sort, Find,
// Clone, Bookmark or Delete brings in the rest. Copies share nothing; move only.
class Recordset {
 public:
  Recordset();
  Recordset(Recordset&&) noexcept;
  Recordset& operator=(Recordset&&) noexcept;
  ~Recordset();

  int CursorLocation = adUseServer;
  std::size_t CacheSize = 1;
  int MarshalOptions = 0;
  // Told of rows that can't be read, at opening or later; the error goes on to whoever asked for them.
  std::function<void(const std::exception&)> onReadFailed;

  // Runs the command and stands on the first record. A command without a result leaves the record set closed.
  void Open(Command& command);
  // The same over rows that come from elsewhere than a command.
  void Open(std::unique_ptr<RowSource> rows);
  // Lets go of the connection; the rows must all be here (client-side cursor).
  void Disconnect();
  void Close();
  int State() const;

  // Rows under the current filter.
  std::int64_t RecordCount();
  bool Bof();
  bool Eof();
  void MoveFirst();
  void MoveLast();
  // Past the last record error 3021 is raised. On an empty set MoveFirst and MoveLast leave Bof and Eof true.
  void MoveNext();

  std::size_t FieldCount() const;
  const ColumnInfo& Column(std::size_t index) const;
  // Fields of the current record, by 0-based index or by name without case. Error 3021 without a current record,
  // 3265 for a field that isn't there.
  Field Fields(std::size_t index);
  Field Fields(std::string_view name);
  // The 0-based index of a field, -1 when it isn't there: for loops over many records.
  long FieldIndex(std::string_view name) const;

  // "[a] = 'x' AND b = 5 AND c = NULL": conditions joined by AND with =, <>, <, >, <=, >=, LIKE; doubled quotes in
  // literals; dates and numbers bare or between quotes or '#'. Empty text takes the filter away. The first matching
  // record becomes the current one. A text that can't be read raises error 3001 and leaves the filter as it was.
  void Filter(std::string_view conditions);
  // "[a] ASC, b DESC"; empty restores the order of arrival. The first record becomes the current one.
  void Sort(std::string_view columns);
  // One condition as in Filter; moves from the current record (counted in), or from the first with `fromFirst`, to the
  // next match, or to Eof when there is none. Error 3021 when there is no record to start from, 3001 for several
  // conditions and for a literal that the column can't have (text against a number).
  void Find(std::string_view condition, bool fromFirst = false);

  // What MoveFirst and Filter or Find say with "column = value" for each column, joined by AND, for values that need no
  // reading: none is Null and each has its column's type. Columns ascend. Moves to the first match, or to Eof; for a
  // record set without a filter and in order of arrival.
  void FindValues(const std::vector<std::size_t>& columns, const std::vector<Cell>& values);
  // Of a column's values as they came; Empty while there were Nulls only. Needs the client-side cursor.
  DataType TypeOf(std::size_t index) const;

  // The current record's mark; it stays valid whatever filter, sort or deletion comes. Clones share marks.
  std::int64_t Bookmark();
  // Moves to a mark, also past a filter that hides it. Error 3021 for a record that is deleted.
  void MoveToBookmark(std::int64_t mark);
  // A record set over the same rows with its own position, filter and order; a deletion shows in both.
  Recordset Clone();
  // Removes the current record from the set only, never from the database. It stays current without fields, and Eof as
  // it was, until the next move.
  void Delete();

 private:
  struct State_;
  State_& opened() const;    // error 3704 when closed
  State_& complete() const;  // the same with all rows here

  std::unique_ptr<State_> state_;
};

}  // namespace qrel
