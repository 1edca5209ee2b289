#include "tests/support/tds/resultSender.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/data/columnStore.h"
#include "tests/support/tds/tokens.h"

namespace qrel::tds {

namespace {

constexpr std::size_t rowsAtOnce = 500, longRowsAtOnce = 16;
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

}  // namespace

std::uint64_t sendRows(PacketStream& stream, RowSource& rows, const Switches& switches) {
  const std::int64_t cutAfter = switches.cutAfterRows;
  ColumnStore store(rows.columns());
  // The types of expressions are known for sure only from all their values: those of a short result.
  std::size_t got = rows.fetch(store, rowsAtOnce);
  const std::vector<WireColumn> columns = wireColumns(rows.columns(), got < rowsAtOnce ? &store : nullptr);
  const bool isLong =
      std::any_of(columns.begin(), columns.end(), [](const WireColumn& column) { return column.type.isLong(); });
  stream.write(columnsToken(columns));
  std::uint64_t count = 0;
  std::string line;
  for (; got > 0; got = rows.fetch(store, isLong ? longRowsAtOnce : rowsAtOnce)) {
    for (std::size_t row = 0; row < got; ++row) {
      line.assign(1, rowMark);
      for (std::size_t i = 0; i < columns.size(); ++i) columns[i].type.append(line, store.cell(i, row));
      if (cutAfter >= 0 && count == static_cast<std::uint64_t>(cutAfter)) cut(stream, line);
      stream.write(line);
      ++count;
      if (count % 64 == 0 && !switches.ignoreAttention && stream.interruptionWaiting()) throw Interrupted();
    }
    store.clear();
  }
  return count;
}

}  // namespace qrel::tds
