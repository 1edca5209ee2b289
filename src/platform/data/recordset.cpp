#include "platform/data/recordset.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "platform/data/rowFilter.h"
#include "platform/data/rowStore.h"
#include "platform/data/rowView.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

// An open record set's place in its rows.
struct Recordset::State_ {
  explicit State_(std::shared_ptr<RowStore> rows) : store(std::move(rows)), view(store) { moveTo(view.nextPresent(0)); }

  std::shared_ptr<RowStore> store;
  RowView view;
  std::size_t position = 0;  // of the current record in the view, or of what follows a hidden one
  std::size_t row = 0;       // the current record
  bool hidden = false;       // a bookmark led to a record that the filter hides
  bool bof = false;
  bool eof = false;

  // Makes the record at a position current; with none the set is empty or at its end.
  void moveTo(std::size_t found) {
    hidden = false;
    bof = false;
    eof = found == RowView::none;
    if (eof) return;
    position = found;
    row = view.rowAt(found);
  }
  void moveToFirst() {
    moveTo(view.nextPresent(0));
    bof = eof;
  }
  std::size_t current() const {
    if (bof || eof || store->isRemoved(row)) throwNoRecord();
    return row;
  }
  [[noreturn]] static void throwNoRecord() {
    throw RuntimeError(
        errorNumber::noCurrentRecord,
        "Either BOF or EOF is True, or the current record has been deleted. Requested operation requires "
        "a current record.");
  }
};

Recordset::Recordset() = default;
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;
Recordset::~Recordset() = default;

Recordset::State_& Recordset::opened() const {
  if (!state_) throw RuntimeError(errorNumber::objectClosed, "Operation is not allowed when the object is closed.");
  return *state_;
}

Recordset::State_& Recordset::complete() const {
  State_& state = opened();
  state.store->bringAll();
  return state;
}

namespace {

// Rows of which somebody wants to know when they don't come.
class WatchedRows : public RowSource {
 public:
  WatchedRows(std::unique_ptr<RowSource> rows, std::function<void(const std::exception&)> failed)
      : rows_(std::move(rows)), failed_(std::move(failed)) {}
  const std::vector<ColumnInfo>& columns() const override { return rows_->columns(); }
  std::size_t fetch(ColumnStore& store, std::size_t most) override {
    return watched([&] { return rows_->fetch(store, most); });
  }
  bool takeAll(ColumnStore& store) override { return rows_->takeAll(store); }
  void rewind() override {
    watched([&] { rows_->rewind(); });
  }
  std::int64_t count() override {
    return watched([&] { return rows_->count(); });
  }

 private:
  template <class Body>
  std::invoke_result_t<Body> watched(Body&& body) {
    try {
      return body();
    } catch (const std::exception& error) {
      failed_(error);
      throw;
    }
  }

  std::unique_ptr<RowSource> rows_;
  std::function<void(const std::exception&)> failed_;
};

}  // namespace

void Recordset::Open(Command& command) {
  Close();
  CommandResult result = command.run();
  if (!result.rows) return;
  if (onReadFailed) result.rows = std::make_unique<WatchedRows>(std::move(result.rows), onReadFailed);
  Open(std::move(result.rows));
}

void Recordset::Open(std::unique_ptr<RowSource> rows) {
  Close();
  const std::size_t windowRows = CursorLocation == adUseServer ? std::max<std::size_t>(CacheSize, 1) : 0;
  state_ = std::make_unique<State_>(std::make_shared<RowStore>(std::move(rows), windowRows));
  state_->bof = state_->eof;
}

void Recordset::Disconnect() {
  if (opened().store->holdsAll()) return;
  throw RuntimeError(errorNumber::operationNotAllowed,
                     "Operation is not allowed in this context: the rows are still on the server.");
}

void Recordset::Close() { state_.reset(); }

int Recordset::State() const { return state_ ? adStateOpen : adStateClosed; }

std::int64_t Recordset::RecordCount() { return static_cast<std::int64_t>(opened().view.presentCount()); }

bool Recordset::Bof() { return opened().bof; }
bool Recordset::Eof() { return opened().eof; }

void Recordset::MoveFirst() { opened().moveToFirst(); }

void Recordset::MoveLast() {
  State_& state = opened();
  state.moveTo(state.view.lastPresent());
  state.bof = state.eof;
}

void Recordset::MoveNext() {
  State_& state = opened();
  if (state.eof) State_::throwNoRecord();
  state.moveTo(state.view.nextPresent(state.hidden ? state.position : state.position + 1));
}

std::size_t Recordset::FieldCount() const { return opened().store->columns().size(); }

const ColumnInfo& Recordset::Column(std::size_t index) const {
  const std::vector<ColumnInfo>& columns = opened().store->columns();
  if (index < columns.size()) return columns[index];
  throw RuntimeError(errorNumber::itemNotFound,
                     "Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

Field Recordset::Fields(std::size_t index) {
  const ColumnInfo& column = Column(index);
  const std::size_t row = state_->current();
  return {&column, state_->store->cell(index, row)};
}

Field Recordset::Fields(std::string_view name) {
  const long index = FieldIndex(name);
  return Fields(index < 0 ? FieldCount() : static_cast<std::size_t>(index));
}

long Recordset::FieldIndex(std::string_view name) const {
  const std::vector<ColumnInfo>& columns = opened().store->columns();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (equalNoCase(columns[i].name, name)) return static_cast<long>(i);
  }
  return -1;
}

void Recordset::Filter(std::string_view conditions) {
  State_& state = complete();
  state.view.setFilter(parseConditions(conditions, *state.store));
  state.moveToFirst();
}

void Recordset::Sort(std::string_view columns) {
  State_& state = complete();
  state.view.setSort(parseSort(columns, *state.store));
  state.moveToFirst();
}

void Recordset::Find(std::string_view condition, bool fromFirst) {
  State_& state = complete();
  const std::vector<Condition> conditions = parseConditions(condition, *state.store);
  if (conditions.size() != 1) {
    throw RuntimeError(errorNumber::argumentsOutOfRange, "Find takes one condition: use Filter for several.");
  }
  if (!fromFirst && state.eof && !state.bof) State_::throwNoRecord();
  state.moveTo(state.view.find(conditions.front(), fromFirst || state.bof ? 0 : state.position));
}

void Recordset::FindValues(const std::vector<std::size_t>& columns, const std::vector<Cell>& values) {
  State_& state = complete();
  state.moveTo(state.view.findFirst(columns, values));
}

DataType Recordset::TypeOf(std::size_t index) const {
  Column(index);
  return complete().store->type(index);
}

std::int64_t Recordset::Bookmark() { return static_cast<std::int64_t>(complete().current()); }

void Recordset::MoveToBookmark(std::int64_t mark) {
  State_& state = complete();
  if (mark < 0 || mark >= static_cast<std::int64_t>(state.store->rowCount())) State_::throwNoRecord();
  const auto row = static_cast<std::size_t>(mark);
  if (state.store->isRemoved(row)) State_::throwNoRecord();
  state.position = state.view.placeOf(row);
  state.row = row;
  state.hidden = !state.view.shows(row, state.position);
  state.bof = state.eof = false;
}

Recordset Recordset::Clone() {
  State_& state = complete();
  Recordset clone;
  clone.CursorLocation = CursorLocation;
  clone.CacheSize = CacheSize;
  clone.MarshalOptions = MarshalOptions;
  clone.state_ = std::make_unique<State_>(state.store);
  clone.state_->bof = clone.state_->eof;
  return clone;
}

void Recordset::Delete() {
  State_& state = complete();
  state.store->remove(state.current());
}

}  // namespace qrel
