// Many small tables compared, against the same comparison done the slow way.
#include <random>

#include "compare/data/CompareTableRecords.h"
#include "platform/text.h"
#include "tests/compare/data/recordModel.h"
#include "tests/compare/data/twoTables.h"
#include "tests/thorough.h"

namespace qrel {
namespace {

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t bound) { return random() % bound; }

// A table's columns are those of this list, as many as it has.
const std::vector<std::string> columnNames = {"Nr", "K", "My K", "Size"};
const std::vector<std::string> columnTypes = {"int", "nvarchar(20)", "nvarchar(20)", "int"};

std::optional<std::string> someValue(Random& random, bool isText) {
  static const std::vector<std::string> texts = {"",     " ",    "a",      "A", "a ", "  a", "b", "b c", "Null",
                                                 "null", "it's", "'Null'", "ä", "Ä",  "c",   "d", "e"};
  if (below(random, 8) == 0) return std::nullopt;
  return isText ? texts[below(random, texts.size())] : std::to_string(below(random, 6));
}

ModelCase someCase(Random& random) {
  ModelCase made;
  const std::size_t columns1 = 1 + below(random, 4), columns2 = 1 + below(random, 4);
  // The Target's columns are the Source's if it has them all, else its own.
  const std::size_t selected2 = std::min(columns1, columns2);
  made.names[0].assign(columnNames.begin(), columnNames.begin() + static_cast<std::ptrdiff_t>(columns1));
  made.names[1].assign(columnNames.begin(), columnNames.begin() + static_cast<std::ptrdiff_t>(selected2));
  made.isText = {false, true, true, false};
  const std::size_t most = below(random, 3) == 0 ? 13 : 5;
  std::vector<ModelRow> pool;
  for (int side : {0, 1}) {
    const std::size_t count = below(random, most);
    for (std::size_t i = 0; i < count; ++i) {
      ModelRow row;
      for (std::size_t column = 0; column < columnNames.size(); ++column)
        row.push_back(someValue(random, made.isText[column]));
      // Most of the Target's rows are the Source's, some with a change.
      if (side == 1 && !pool.empty() && below(random, 4) != 0) {
        const ModelRow changed = row;
        row = pool[i < pool.size() && below(random, 2) ? i : below(random, pool.size())];
        if (below(random, 3) == 0) row[below(random, row.size())] = changed.back();
        for (std::size_t column : {std::size_t{1}, std::size_t{2}})
          if (row[column] && changed.back() && *changed.back() == "1") *row[column] += ' ';
      }
      if (side == 0) pool.push_back(row);
      made.rows[side].push_back(row);
    }
  }
  made.byKey = below(random, 2) == 0;
  const std::size_t keys = 1 + below(random, std::min<std::size_t>(3, selected2));
  std::vector<std::size_t> order(selected2);
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), random);
  made.keys.assign(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(keys));
  made.keyCannotBeWritten = std::count(made.keys.begin(), made.keys.end(), 2U) > 0;
  for (int side : {0, 1})
    if (below(random, 4) == 0) made.offsets[side] = static_cast<int>(below(random, 6));
  made.limit = below(random, 3) == 0 ? 500 : 1 + static_cast<int>(below(random, 12));
  made.caseSensitive = below(random, 2) == 0;
  return made;
}

std::string scriptOf(const ModelCase& made, int side, const std::string& table, std::size_t columns) {
  std::string script = "CREATE TABLE " + table + " (";
  for (std::size_t i = 0; i < columns; ++i)
    script += (i == 0 ? "[" : ", [") + columnNames[i] + "] " + columnTypes[i] + " NULL";
  script += ")\nGO\n";
  for (const ModelRow& row : made.rows[side]) {
    script += "INSERT " + table + " VALUES (";
    for (std::size_t i = 0; i < columns; ++i)
      script += (i == 0 ? "" : ", ") + (!row[i]          ? "NULL"
                                        : made.isText[i] ? "N'" + replaceAll(*row[i], "'", "''") + "'"
                                                         : *row[i]);
    script += ")\n";
  }
  return script;
}

std::string describe(const ModelCase& made) {
  std::string text = made.byKey ? "by key" : "by position";
  for (const std::size_t key : made.keys) text += made.byKey ? " " + columnNames[key] : "";
  text += ", offsets " + std::to_string(made.offsets[0]) + " " + std::to_string(made.offsets[1]) + ", limit " +
          std::to_string(made.limit) + (made.caseSensitive ? ", with case" : "");
  for (int side : {0, 1}) {
    text += side == 0 ? "\nSource:" : "\nTarget:";
    for (const ModelRow& row : made.rows[side]) {
      text += "\n ";
      for (std::size_t i = 0; i < made.names[side].size(); ++i) text += row[i] ? " [" + *row[i] + "]" : " Null";
    }
  }
  return text;
}

class RecordWalk : public TwoTables {
 protected:
  void check(const ModelCase& made, const std::string& table) {
    RecordModel model(made);
    model.run();

    state.differences.reset();
    state.gblnFillDiffTable = made.fill;
    state.gblnMarkDiffCells = true;
    test.host.boxes.clear();
    program.settings.glngMaxRowsInDiffTable = made.limit;
    program.settings.gblnDataCaseSensitive = made.caseSensitive;
    select(table);
    std::vector<std::string> keys;
    for (const std::size_t key : made.keys) keys.push_back(columnNames[key]);
    tDataCompRequest wanted = request(keys);
    wanted.lngCompMethod = made.byKey ? compPrimaryKey : compRecordByRecord;
    for (std::size_t side : {0U, 1U}) wanted.arrOffsets[side] = made.offsets[side];
    frmCompareStatus status(program);
    std::int32_t diffs = 0;
    const bool identical = CompareTableRecords(
        program, status,
        {wanted,
         {"[" + table + "]", "[" + table + "]"},
         {static_cast<std::int32_t>(made.rows[0].size()), static_cast<std::int32_t>(made.rows[1].size())}},
        diffs, status.lblCurRec, status.ProgressBar);

    EXPECT_EQ(identical, model.identical);
    EXPECT_EQ(diffs, model.diffs);
    if (!made.fill) {
      EXPECT_EQ(state.differences, nullptr) << "nothing reaches a window that nobody prepared";
      return;
    }
    ASSERT_EQ(test.host.boxes.size(), model.boxes.size());
    for (std::size_t i = 0; i < model.boxes.size(); ++i)
      EXPECT_TRUE(test.host.boxes[i].text.starts_with(model.boxes[i])) << test.host.boxes[i].text;
    ASSERT_EQ(state.differences != nullptr, !model.grid.empty());
    if (state.differences) checkGrid(state.differences->VSFlexGrid1, model.grid);
  }

  static void checkGrid(const Grid& grid, const std::vector<std::vector<ModelCell>>& expected) {
    ASSERT_EQ(grid.rowCount(), expected.size());
    ASSERT_EQ(grid.columnCount(), expected[0].size());
    for (std::size_t row = 0; row < expected.size(); ++row)
      for (std::size_t column = 0; column < expected[row].size(); ++column) {
        const ModelCell cell{std::string(grid.text(row, column)), grid.textColour(row, column),
                             grid.backColour(row, column)};
        EXPECT_TRUE(cell == expected[row][column])
            << "row " << row << ", column " << column << ": \"" << cell.text << "\" in " << cell.textColour << " on "
            << cell.backColour << " instead of \"" << expected[row][column].text << "\" in "
            << expected[row][column].textColour << " on " << expected[row][column].backColour;
      }
  }
};

TEST_F(RecordWalk, GivesWhatTheSlowWayGives) {
  Random random(20);
  std::vector<ModelCase> cases;
  std::string scripts[2];
  for (int number = 0; number < rounds(400, 100); ++number) {
    cases.push_back(someCase(random));
    const std::string table = "T" + std::to_string(number);
    for (int side : {0, 1}) scripts[side] += scriptOf(cases.back(), side, table, cases.back().names[side].size());
  }
  load(scripts[0], scripts[1]);
  for (std::size_t number = 0; number < cases.size() && !HasFailure(); ++number) {
    SCOPED_TRACE(describe(cases[number]));
    const int cursor = number % 3 == 0 ? adUseClient : adUseServer;
    program.settings.glngCursorLocation = cursor;
    for (const bool fill : {true, false}) {
      cases[number].fill = fill;
      check(cases[number], "T" + std::to_string(number));
    }
    EXPECT_EQ(program.settings.glngCursorLocation, cursor);
  }
}

}  // namespace
}  // namespace qrel
