// A grid keeps what a plain table of cells keeps.
#include <gtest/gtest.h>

#include <random>

#include "platform/controls/grid.h"
#include "platform/error.h"

namespace qrel {
namespace {

struct PlainCell {
  std::string text;
  std::uint32_t textColour = 0;
  std::uint32_t backColour = Grid::noColour;
};

struct PlainGrid {
  std::vector<std::vector<PlainCell>> rows{1};
  std::size_t columns = 0;

  void resize(std::size_t rowCount, std::size_t columnCount) {
    columns = columnCount;
    rows.resize(rowCount);
    for (auto& row : rows) row.resize(columns);
  }
};

void expectSame(const Grid& grid, const PlainGrid& plain, int step) {
  ASSERT_EQ(grid.rowCount(), plain.rows.size()) << step;
  ASSERT_EQ(grid.columnCount(), plain.columns) << step;
  for (std::size_t row = 0; row < plain.rows.size(); ++row)
    for (std::size_t column = 0; column < plain.columns; ++column) {
      const PlainCell& cell = plain.rows[row][column];
      ASSERT_EQ(grid.text(row, column), cell.text) << step << ": " << row << "," << column;
      ASSERT_EQ(grid.textColour(row, column), cell.textColour) << step << ": " << row << "," << column;
      ASSERT_EQ(grid.backColour(row, column), cell.backColour) << step << ": " << row << "," << column;
    }
}

TEST(GridTest, AnySeriesOfChangesLeavesWhatAPlainTableHas) {
  std::mt19937 random(2004);
  const auto upTo = [&](std::size_t most) { return static_cast<std::size_t>(random() % (most + 1)); };
  Grid grid("grd");
  PlainGrid plain;
  for (int step = 0; step < 3000; ++step) {
    const std::size_t kind = upTo(9);
    if (kind == 0) {
      const std::size_t rows = 1 + upTo(12);
      grid.setRowCount(rows);
      plain.resize(rows, plain.columns);
    } else if (kind == 1 || plain.columns == 0) {
      const std::size_t columns = 1 + upTo(4);
      grid.setColumnCount(columns);
      plain.resize(plain.rows.size(), columns);
    } else if (kind == 2) {
      const std::size_t from = upTo(plain.columns - 1), to = upTo(plain.columns - 1);
      grid.moveColumn(from, to);
      for (auto& row : plain.rows) {
        const PlainCell moved = row[from];
        row.erase(row.begin() + static_cast<std::ptrdiff_t>(from));
        row.insert(row.begin() + static_cast<std::ptrdiff_t>(to), moved);
      }
    } else if (kind <= 4) {
      const std::size_t first = upTo(plain.rows.size() - 1), last = upTo(plain.rows.size());
      const std::size_t left = upTo(1) * upTo(plain.columns - 1), right = upTo(plain.columns);
      const auto colour = static_cast<std::uint32_t>(upTo(3));
      grid.paint(first, last, left, right, colour);
      for (std::size_t row = first; row <= last && row < plain.rows.size(); ++row)
        for (std::size_t column = left; column <= right && column < plain.columns; ++column)
          plain.rows[row][column].backColour = colour;
    } else {
      const std::size_t row = upTo(plain.rows.size() - 1), column = upTo(plain.columns - 1);
      PlainCell& cell = plain.rows[row][column];
      if (kind == 5) {
        cell.textColour = static_cast<std::uint32_t>(upTo(2));
        grid.setTextColour(row, column, cell.textColour);
      } else {
        // Long ones too, so that what is written over is tidied away now and then.
        cell.text = std::string(upTo(5) * upTo(kind == 9 ? 20000 : 60), static_cast<char>('a' + upTo(25)));
        grid.setText(row, column, cell.text);
      }
    }
    expectSame(grid, plain, step);
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(GridTest, CellsOutsideAreRefused) {
  Grid grid("grd");
  grid.setColumnCount(2);
  for (const auto& [row, column] : {std::pair(1, 0), std::pair(0, 2)}) {
    const auto r = static_cast<std::size_t>(row), c = static_cast<std::size_t>(column);
    EXPECT_THROW(grid.text(r, c), RuntimeError);
    EXPECT_THROW(grid.setText(r, c, "x"), RuntimeError);
    EXPECT_THROW(grid.setTextColour(r, c, 1), RuntimeError);
  }
}

}  // namespace
}  // namespace qrel
