// Marks of lines, the colours of panes and their legend.
#include "compare/structure/modMarkDifferences.h"

#include "compare/structure/frmColorSchema.h"
#include "db/mdlObjects.h"
#include "platform/controls/textPane.h"
#include "platform/text.h"
#include "tests/support.h"

namespace qrel {
namespace {

struct Observer : ControlObserver {
  void controlChanged(Control&) override { ++changes; }
  int changes = 0;
};

// Two panes after the marking of their difference.
struct Marked {
  Marked(TestProgram& test, const std::string& source, const std::string& target, long type) {
    paneSource.setText(source);
    paneTarget.setText(target);
    paneTarget.setBackground(0, 1, 7);
    paneSource.observer = &observer;
    std::int32_t error = -1;
    Mark_Differences(test.program, paneSource, paneTarget, arrSource, arrTarget, error, type);
    EXPECT_EQ(error, 0);
  }

  // One digit per line, "1" for mark 10.
  static std::string digits(const CompLineArray& arr) {
    std::string result;
    for (const CompLine& line : arr) result += static_cast<char>('0' + line.lngMark / 10);
    return result;
  }
  std::string marks() const { return digits(arrSource) + "/" + digits(arrTarget); }

  TextPane paneSource{"txtTXProc(0)"}, paneTarget{"txtTXProc(1)"};
  CompLineArray arrSource, arrTarget;
  Observer observer;
};

struct MarkCase {
  std::string source, target;  // "|" ends a line
  std::string marks;           // Source/Target
  std::size_t boxes = 0;
};

void expectMarks(const std::vector<MarkCase>& cases, long type) {
  for (const MarkCase& each : cases) {
    TestProgram test;
    const Marked marked(test, replaceAll(each.source, "|", "\n"), replaceAll(each.target, "|", "\n"), type);
    EXPECT_EQ(marked.marks(), each.marks) << each.source << " / " << each.target;
    EXPECT_EQ(test.host.boxes.size(), each.boxes) << each.source;
    for (const auto& box : test.host.boxes)
      EXPECT_EQ(box.title + ": " + box.text, "GetFirstWord: Error: 94. Invalid use of Null");
  }
}

std::string numbered(const std::string& word, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += word + std::to_string(i) + "|";
  return text;
}

std::string repeated(char digit, std::size_t count) { return std::string(count, digit); }

TEST(MarkDifferences, WalksBothTextsSideBySide) {
  expectMarks(
      {
          {"a|b|c", "a|x|b|c", "111/1311"},
          {"a|x|b", "a|b", "141/11"},
          {"a|b|c", "a|x|c", "121/121"},
          {"A|b ", "a|b", "22/22"},
          {"a||b", "a|b", "141/11"},
          // Each line occurs ahead on the other side: it counts as inserted, and what is left of Source as deleted.
          {"a|b", "b|a", "14/31"},
          {"a|b|c|d", "c|a|b|x", "1124/3112"},
          {"x|a", "a|b", "41/13"},           // Source is through before the steps are
          {"a|b", "x|a|b|c|d", "11/31133"},  // the steps are through first
          {"a|b|c|d", "a", "1444/1"},
          {"a\r|b", "a|b\r|", "11/113"},  // line ends are no part of a line
          {"", "a|b", "/33"},
          {"a|b", "", "44/"},
          {"a|b", "a|b", "/"},
      },
      objViews);
}

TEST(MarkDifferences, FindsALineTwentyLinesAheadAndNoFurther) {
  expectMarks(
      {
          {"a|z", "a|" + numbered("n", 20) + "z", "11/1" + repeated('3', 20) + "1"},
          {"a|z", "a|" + numbered("n", 21) + "z", "12/12" + repeated('3', 21)},
          {"a|" + numbered("n", 20) + "z", "a|z", "1" + repeated('4', 20) + "1/11"},
          {"a|" + numbered("n", 21) + "z", "a|z", "12" + repeated('4', 21) + "/12"},
      },
      objProcedures);
}

TEST(MarkDifferences, MatchesTableLinesByTheirFirstWord) {
  expectMarks(
      {
          {"a int|b int", "b int|A INT", "11/11"},
          {"a int|b int", "a char|c int", "24/23"},
          {"  a int", "a  int |", "2/23"},
          {"  a int", "a int |", "1/13"},
          {"a int CONSTRAINT c DEFAULT 0", "a int DEFAULT 1", "1/1"},
          {"a int DEFAULT 0 null", "a int DEFAULT 1 not null", "1/1"},
          {"default int", "DEFAULT char", "2/2"},  // not a clause at the start of a line
          {"constraint p key", "CONSTRAINT q key", "2/2"},
          {"INDEX i CONSTRAINT 1", "INDEX i CONSTRAINT 2", "2/2"},
          // Several lines claim the first Target line that has their word; the last one's mark stays.
          {"CONSTRAINT p 1|CONSTRAINT q 2|a int", "a int|CONSTRAINT p 1|CONSTRAINT q 2", "121/123"},
          {"a int|a char", "a int|b int", "12/23"},
          {"a char|a int", "a int|b int", "21/13"},
          // A blank line is no line of Source, but stays open only between others.
          {"a int||b int|  |", "a int|b int", "10144/11"},
          {"a int", "|a int||", "1/3133"},
          // A line of one word is matched as well, after a box.
          {"(|a int|)", "a int|) y|go", "412/123", 2},
          {"a int\r|\r|b int\r|\r|", "a int\r|b int DEFAULT 1", "10144/11", 0},
      },
      objTables);
}

TEST(MarkDifferences, MarksLargePairsWithoutComparingAllWithAll) {
  TestProgram test;
  std::string lines, reversed;
  for (int i = 0; i < 20000; ++i) {
    lines += "c" + std::to_string(i) + " int\n";
    reversed += "c" + std::to_string(19999 - i) + " INT\n";
  }
  const std::string all = repeated('1', 20000);
  EXPECT_EQ(Marked(test, lines, reversed, objTables).marks(), all + "4/" + all + "3");
  EXPECT_EQ(Marked(test, lines, "new\n" + lines, objViews).marks(), all + "1/3" + all + "1");
}

TEST(MarkDifferences, PaintsEachLineWithoutItsEnd) {
  TestProgram test;
  const Marked marked(test, "a\r\nb\r\ngone\r\nz", "a\r\nnew\r\nb\r\nz", objViews);
  ASSERT_EQ(marked.marks(), "1141/1311");
  std::string painted;
  for (const auto& range : marked.paneSource.backgrounds())
    painted += std::to_string(range.start) + "+" + std::to_string(range.length) + " ";
  EXPECT_EQ(painted, "0+1 2+1 4+4 9+1 ");
  ASSERT_EQ(marked.paneTarget.backgrounds().size(), 4U) << "the earlier colours are painted over";
  EXPECT_EQ(marked.paneTarget.backgrounds()[0].colour, 0xFFFFFFU);
  EXPECT_EQ(marked.paneTarget.backgrounds()[1].colour, 0xD9C37AU);
  EXPECT_EQ(marked.paneSource.backgrounds()[2].colour, 0xC0C0FFU);
  EXPECT_EQ(marked.observer.changes, 1) << "all lines in one step";
}

TEST(MarkDifferences, LeavesThePanesAloneWhenOneIsEmptyOrBothAreEqual) {
  for (const char* target : {"", "a"}) {
    TestProgram test;
    const Marked marked(test, "a", target, objTables);
    EXPECT_EQ(marked.observer.changes, 0);
    EXPECT_EQ(marked.paneTarget.backgrounds().size(), 1U);
  }
}

TEST(ColorSchema, ShowsTheColoursBesideTheirMeaning) {
  TestProgram test;
  test.host.windows.push_back([](Form& form) {
    const auto& window = dynamic_cast<frmColorSchema&>(form);
    const std::pair<std::uint32_t, std::string> rows[] = {{0xD9C37A, "Inserted (exists only in target)"},
                                                          {0xC0C0FF, "Deleted (exists only in source)"},
                                                          {0xC0FFC0, "Changed"},
                                                          {0xFFFFFF, "Not Changed"},
                                                          {0x00FFFF, "NA"}};
    for (std::size_t row = 0; row < 5; ++row) {
      EXPECT_EQ(window.lblCol[row].backColour, rows[row].first);
      EXPECT_EQ(window.lblText[row].text(), rows[row].second);
    }
    form.personPressesEsc();
    EXPECT_TRUE(form.closed());
  });
  ShowColorSchema(test.program);
  EXPECT_EQ(GetMarkColor(50), 0U);
}

}  // namespace
}  // namespace qrel
