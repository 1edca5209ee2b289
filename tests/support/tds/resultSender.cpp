#include "tests/support/tds/resultSender.h"

#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "platform/data/columnStore.h"
#include "platform/error.h"
#include "tests/support/tds/tokens.h"

namespace qrel::tds {

namespace {

constexpr std::size_t rowsAtOnce = 500, longRowsAtOnce = 16, rowsBetweenLooks = 64;
constexpr char rowMark = static_cast<char>(0xD1);

// Whether no value of the expression that a column is goes beyond the types of limited length.
bool isShort(const ColumnStore& store, std::size_t column) {
  constexpr std::size_t mostCharacters = 4000;  // of UTF-16, of which UTF-8 has at least as many bytes
  for (std::size_t row = 0; row < store.rowCount(); ++row)
    if (store.cell(column, row).text.size() > mostCharacters) return false;
  return true;
}

std::vector<WireColumn> wireColumns(const std::vector<ColumnInfo>& columns, const ColumnStore* all) {
  std::vector<WireColumn> wire;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    ColumnInfo info = columns[i];
    // An expression is what its values are, unless they differ.
    if (info.typeName.empty() && all) info.type = all->type(i);
    wire.push_back({info.name, WireType::of(info, all && isShort(*all, i))});
  }
  return wire;
}

[[noreturn]] void cut(PacketStream& stream, const std::string& row) {
  stream.write(std::string_view(row).substr(0, 1 + row.size() / 2));
  stream.flush();
  throw LineGone();
}

// Puts the next rows in the place of those before; none are left at the end. The rows in front of a failure are sent
// before it is told.
void fetchInto(ColumnStore& store, RowSource& rows, std::size_t most, std::exception_ptr& failure) {
  store.clear();
  if (failure) return;
  try {
    rows.fetch(store, most);
  } catch (const RuntimeError&) {
    failure = std::current_exception();
  }
}

// Until the client asks for an end, or has gone where that isn't heard.
[[noreturn]] void stall(PacketStream& stream, const Switches& switches) {
  stream.flush();
  while (!stream.interruptedWithin(-1)) {
  }
  while (switches.ignoreAttention) stream.receive();
  throw Interrupted();
}

}  // namespace

std::uint64_t sendRows(PacketStream& stream, RowSource& rows, const Switches& switches) {
  // -1 is a number that no count of rows reaches.
  const auto cutAfter = static_cast<std::uint64_t>(switches.cutAfterRows);
  const auto stallAfter = static_cast<std::uint64_t>(switches.stallAfterRows);
  ColumnStore store(rows.columns());
  std::exception_ptr failure;
  // The types of expressions are known for sure only from all their values: those of a short result.
  fetchInto(store, rows, rowsAtOnce, failure);
  const bool isAll = store.rowCount() < rowsAtOnce;
  const std::vector<WireColumn> columns = wireColumns(rows.columns(), isAll ? &store : nullptr);
  const bool isLong =
      std::any_of(columns.begin(), columns.end(), [](const WireColumn& column) { return column.type.isLong(); });
  stream.write(columnsToken(columns));
  std::uint64_t count = 0;
  std::string line;
  while (store.rowCount() > 0) {
    for (std::size_t row = 0; row < store.rowCount(); ++row) {
      line.assign(1, rowMark);
      for (std::size_t i = 0; i < columns.size(); ++i) columns[i].type.append(line, store.cell(i, row));
      if (count == cutAfter) cut(stream, line);
      if (count == stallAfter) stall(stream, switches);
      stream.write(line);
      if (++count % rowsBetweenLooks == 0 && !switches.ignoreAttention && stream.interruptionWaiting())
        throw Interrupted();
    }
    fetchInto(store, rows, isLong ? longRowsAtOnce : rowsAtOnce, failure);
  }
  if (failure) std::rethrow_exception(failure);
  return count;
}

void sendColumns(PacketStream& stream, RowSource& rows) {
  stream.write(columnsToken(wireColumns(rows.columns(), nullptr)));
}

}  // namespace qrel::tds
