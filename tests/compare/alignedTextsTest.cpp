// Two texts side by side: as few lines as possible alone, the words that differ, and what the options leave out.
#include "compare/structure/alignedTexts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "compare/structure/longestCommon.h"

namespace qrel {
namespace {

// The length of the longest common sequence, by the table of all pairs of prefixes.
std::size_t lengthByTable(const std::vector<int>& a, const std::vector<int>& b) {
  std::vector<std::size_t> row(b.size() + 1, 0);
  for (const int each : a) {
    std::size_t diagonal = 0;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t above = row[j + 1];
      row[j + 1] = each == b[j] ? diagonal + 1 : std::max(above, row[j]);
      diagonal = above;
    }
  }
  return row.back();
}

TEST(LongestCommon, IsInOrderEqualAndAsLongAsCanBe) {
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    const auto make = [&] {
      std::vector<int> values(random() % 200);
      const unsigned kinds = 1 + random() % 12;
      for (int& value : values) value = static_cast<int>(random() % kinds);
      return values;
    };
    const std::vector<int> a = make();
    std::vector<int> b = make();
    if (round % 2 == 0) {  // a few changes of the same
      b = a;
      for (unsigned change = random() % 5; change > 0 && !b.empty(); --change)
        b.insert(b.begin() + static_cast<long>(random() % b.size()), static_cast<int>(random() % 12));
    }
    const std::vector<CommonElement> common = LongestCommon(a, b);
    ASSERT_EQ(common.size(), lengthByTable(a, b)) << "round " << round;
    for (std::size_t i = 0; i < common.size(); ++i) {
      ASSERT_EQ(a[common[i].source], b[common[i].target]);
      ASSERT_TRUE(i == 0 || (common[i - 1].source < common[i].source && common[i - 1].target < common[i].target));
    }
  }
}

// A row as "-2/": its sign, the Source's and the Target's line from 1 on. A changed one names what differs, too.
std::string rowsOf(const std::string& source, const std::string& target, const AlignOptions& options) {
  const std::vector<std::string_view> lines[] = {LinesOf(source), LinesOf(target)};
  std::string text;
  for (const AlignedRow& row : AlignTexts(source, target, options)) {
    text += (text.empty() ? "" : " ") + std::string(1, "=.~-+"[static_cast<std::size_t>(row.kind)]);
    for (const std::size_t side : {0U, 1U}) {
      if (row.lines[side] >= 0) text += std::to_string(row.lines[side] + 1);
      for (const AlignedStretch& change : row.changes[side])
        text +=
            "<" +
            std::string(lines[side][static_cast<std::size_t>(row.lines[side])].substr(change.start, change.length)) +
            ">";
      if (side == 0) text += "/";
    }
  }
  return text;
}

TEST(AlignTexts, PairsLinesAndNamesWhatDiffers) {
  constexpr AlignOptions all;
  constexpr AlignOptions noCase{false, true, true}, noBlanks{true, false, true}, noComments{true, true, false},
      none{false, false, false};
  const struct {
    const char* source;
    const char* target;
    AlignOptions options;
    const char* rows;
  } cases[] = {
      {"", "", all, "=1/1"},
      {"a\nb", "a\nx\nb", all, "=1/1 +/2 =2/3"},
      {"a\nb\n", "b\n", all, "-1/ =2/1 =3/2"},
      // One column more doesn't colour the lines behind it, and the changed one meets its namesake.
      {"[Id] int NOT NULL,\n[Name] varchar(20) NULL,\n[Price] money NOT NULL",
       "[Id] int NOT NULL,\n[Mail] varchar(90) NULL,\n[Name] varchar(40) NULL,\n[Price] money NOT NULL", all,
       "=1/1 +/2 ~2<20>/3<40> =3/4"},
      {"[Tax] money NOT NULL\nGO", "x\n[Price] money NOT NULL\nGO", all, "-1/ +/1 +/2 =2/3"},
      {"[Tax] money NOT NULL\nGO", "[Price] money NOT NULL\nGO", all, "~1<Tax>/1<Price> =2/2"},
      {"SELECT a FROM t", "SELECT a , b FROM t", all, "~1/1<, b >"},
      {"x = 1", "y = 2", all, "-1/ +/1"},
      {"Select\n\xC3\x84", "SELECT\n\xC3\xA4", all, "-1/ -2/ +/1 +/2"},
      {"Select\n\xC3\x84", "SELECT\n\xC3\xA4", noCase, ".1/1 .2/2"},
      {"a  b \n\n\nc", "\ta b\nc\n", noBlanks, ".1/1 .2/ .3/ =4/2 ./3"},
      {"a b", "ab", noBlanks, "-1/ +/1"},
      {"a\n\nb", "a\nb", all, "=1/1 -2/ =3/2"},
      {"a -- one\n/* two\nthree */b", "a \nb", noComments, ".1/1 .2/ .3/2"},
      {"a /* x */ b", "a b", none, ".1/1"},
      {"x = '--1'\ny = [/*]", "x = '--2'\ny = [/*]", noComments, "~1<1>/1<2> =2/2"},
      {"a\n-- gone", "a", noComments, "=1/1 .2/"},
      {"a\n-- one", "a\n-- two", all, "=1/1 -2/ +/2"},
  };
  for (const auto& each : cases) EXPECT_EQ(rowsOf(each.source, each.target, each.options), each.rows) << each.source;
}

}  // namespace
}  // namespace qrel
