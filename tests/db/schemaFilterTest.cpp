// The filter dialog and what a chosen filter becomes.
#include "db/frmFilterBySchema.h"
#include "db/modSchema.h"
#include "tests/support.h"

namespace qrel {
namespace {

const std::vector<std::string> schemaNames = {"dbo", "sales", "sales2"};

struct Outcome {
  bool blnFilter = false;
  std::string strFilter = "before";
  bool changed = false;
};

Outcome show(TestProgram& test, const std::function<void(frmFilterBySchema&)>& person, long kind = 1) {
  Outcome outcome;
  test.host.windows.push_back([&](Form& form) { person(dynamic_cast<frmFilterBySchema&>(form)); });
  frmFilterBySchema form(test.program);
  form.ShowUp(schemaNames, 3, 1, outcome.blnFilter, outcome.strFilter, kind, outcome.changed);
  return outcome;
}

std::string ticks(const frmFilterBySchema& form) {
  std::string text;
  for (std::size_t row = 0; row < form.grdNames.count(); ++row) text += form.grdNames.ticked(row) ? 'x' : '-';
  return text;
}

TEST(FilterDialog, JoinsWhatIsTicked) {
  TestProgram test;
  Outcome some = show(test, [](frmFilterBySchema& form) {
    EXPECT_EQ(form.caption, "Filter by Schema");
    EXPECT_EQ(form.grdNames.cell(0, 0), "(Select All)");
    EXPECT_EQ(ticks(form), "xxxx") << "without a filter all start ticked";
    form.grdNames.personTicks(2, false);
    EXPECT_EQ(ticks(form), "-x-x");
    form.personPressesEnter();
  });
  EXPECT_TRUE(some.changed && some.blnFilter);
  EXPECT_EQ(some.strFilter, "dbo,sales2");

  for (const bool all : {true, false}) {
    const Outcome outcome = show(test, [&](frmFilterBySchema& form) {
      form.grdNames.personTicks(0, all);
      form.cmdOK.personClicks();
    });
    EXPECT_TRUE(outcome.changed && !outcome.blnFilter && outcome.strFilter.empty()) << "all or none is no filter";
  }

  const Outcome cancelled = show(
      test,
      [](frmFilterBySchema& form) {
        form.grdNames.personTicks(1, false);
        form.personPressesEsc();
      },
      2);
  EXPECT_TRUE(!cancelled.changed && !cancelled.blnFilter && cancelled.strFilter == "before");
}

TEST(FilterDialog, StartsWithEachNameThatOccursInTheFilterText) {
  TestProgram test;
  auto& state = test.program.state<modSchemaState>();
  state.gblnSchemaFilter[1] = true;
  state.gstrSchemaFilter[1] = "sales2";
  show(
      test,
      [](frmFilterBySchema& form) {
        EXPECT_EQ(form.caption, "Filter by Owner");
        EXPECT_EQ(form.lblInfo.text(), "Only objects belonging to selected Owners will be analyzed/compared.");
        EXPECT_EQ(ticks(form), "--xx") << "sales is a part of sales2";
      },
      2);
  show(
      test, [](frmFilterBySchema&) {}, 3);
  EXPECT_EQ(test.host.boxes.back().text, "Wrong Filter parameter");
}

TEST(SchemaFilter, BecomesAQuotedListAndAReportLine) {
  for (const auto& [in, out] : std::vector<std::pair<std::string, std::string>>{
           {" a,b ", "'a','b'"}, {"a", "'a'"}, {"'a','b'", "'a','b'"}, {"'a,b", "'a,b'"}, {"o'x", "'o'x'"}, {"", "''"}})
    EXPECT_EQ(WrapStringIntoQuotes(in), out);
  TestProgram test;
  auto& state = test.program.state<modSchemaState>();
  state.gstrSchemaFilter = {"dbo", "sales,x"};
  EXPECT_EQ(BuildSchemaFilteringString(test.program), "");
  state.gblnSchemaFilter[1] = true;
  EXPECT_EQ(BuildSchemaFilteringString(test.program), "Target - applied filtering by Schema: sales,x");
  state.gblnSchemaFilter[0] = true;
  EXPECT_EQ(BuildSchemaFilteringString(test.program),
            "Source - applied filtering by Schema: dbo\r\nTarget - applied filtering by Schema: sales,x");
}

}  // namespace
}  // namespace qrel
