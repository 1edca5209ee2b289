// Whether key fields tell the records of a table apart.
#include <random>

#include "app/mdlMain.h"
#include "compare/data/frmCompareDataValidation.h"
#include "compare/data/modCompareData.h"
#include "tests/db/scriptedServer.h"

namespace qrel {
namespace {

// The table t of S.A, and in S.B one that is left alone.
class KeyValidations : public ::testing::Test {
 protected:
  KeyValidations() {
    SetFilePaths(program);
    program.main.gtypSelServ = {TestProgram::server("S"), TestProgram::server("S")};
    test.load("S", "B", "CREATE TABLE t (a int NULL)\n");
  }

  void load(const std::string& script) {
    test.servers.dropDatabase("S", "A");
    test.load("S", "A", script);
  }
  static KeyValidation key(const std::vector<std::string>& fields, const std::vector<std::string>& lines,
                           std::int32_t lngRecs) {
    KeyValidation made{"S", "A", "[dbo].[t]", "t", 0, lngRecs, {noField, noField, noField}, 0, {}};
    for (std::size_t i = 0; i < fields.size(); ++i) {
      made.arrFields[i] = fields[i];
      made.arrColDefs[i] = lines[i];
    }
    return made;
  }
  // Tests the key and gives the boxes, one a line.
  std::string validate(const KeyValidation& fields) {
    test.host.boxes.clear();
    test.said();
    test.host.windows.push_back([](Form&) {});
    frmCompareDataValidation form(program);
    form.ShowUp(fields);
    EXPECT_TRUE(form.closed());
    info = form.lblInfo[0].text() + "|" + form.lblInfo[1].text();
    std::string text;
    for (const auto& box : test.host.boxes) text += (text.empty() ? "" : "\n") + box.text;
    return text;
  }
  std::size_t queries(const std::string& part) {
    return static_cast<std::size_t>(std::count_if(test.sent.begin(), test.sent.end(), [&](const auto& each) {
      return each.text.find(part) != std::string::npos;
    }));
  }

  ScriptedServer test;
  Program& program = test.program;
  modCompareDataState& state = program.state<modCompareDataState>();
  KeyValidationEnd& end = program.state<KeyValidationState>().lngEnd;
  std::string info;
};

const std::string valid =
    "Fields selection is valid - data stored in selected fields is unique and doesn't contain nulls.";
const std::string hint =
    "\r\n\r\nPlease select different fields if possible, or change comparison method to 'Record by record' (although "
    "the 'Primary Key/Index' comparison method is preferred because it is usually faster).";
const std::string badKey = " and shouldn't be used for Primary Key/Index comparison method." + hint;

TEST_F(KeyValidations, ValuesDecide) {
  struct Case {
    const char* what;
    const char* columns;
    const char* rows;
    std::vector<std::string> fields, lines;
    std::int32_t records;
    std::string box;
    std::size_t nullQueries, recordQueries;
  };
  const Case cases[] = {
      {"unique", "a int NOT NULL", "(1), (2), (3)", {"a"}, {"[a] [int] NOT NULL"}, 3, valid, 0, 2},
      {"nullable without Null", "a int NULL", "(1), (2)", {"a"}, {"[a] [int] NULL"}, 2, valid, 1, 1},
      {"a Null",
       "a int NULL",
       "(1), (NULL)",
       {"a"},
       {"[a] [int] NULL"},
       2,
       "Field a contains Nulls and shouldn't be used for Primary Key/Index comparison method." + hint,
       1,
       0},
      {"a Null in the second",
       "a int, b int NULL",
       "(1, 1), (2, NULL)",
       {"a", "b"},
       {"[a] [int] not null", "[b] [int]"},
       2,
       "Field b contains Nulls and shouldn't be used for Primary Key/Index comparison method." + hint,
       1,
       0},
      {"the first member tells",
       "a int",
       "(1), (2), (2)",
       {"a"},
       {"[a] [int] NOT NULL"},
       3,
       "Selected fields (a) contain duplicate values (2)" + badKey,
       0,
       2},
      {"together unique",
       "a int, b varchar(9)",
       "(1, 'x'), (1, 'y'), (2, 'x')",
       {"a", "b"},
       {"[a] [int] NOT NULL", "[b] NOT NULL"},
       3,
       valid,
       0,
       2},
      {"three alike",
       "a int, b varchar(9), c bit",
       "(1, 'x', 1), (2, 'x', 1), (2, 'x', 1)",
       {"a", "b", "c"},
       {"[a] NOT NULL", "[b] NOT NULL", "[c] NOT NULL"},
       3,
       "Selected fields (a, b, c) contain duplicate values (2,x,True)" + badKey,
       0,
       2},
      {"a third and no second",
       "a int, c int",
       "(1, 7), (1, 7)",
       {"a", "No Field", "c"},
       {"[a] NOT NULL", "", "[c] NOT NULL"},
       2,
       "Selected fields (a, c) contain duplicate values (1,7)" + badKey,
       0,
       1},
      {"one record", "a int", "(1)", {"a"}, {"[a] [int] NOT NULL"}, 1, valid, 0, 0},
      {"identity, as the line says", "a int", "(1), (1)", {"a"}, {"[a] [int] identity(1, 1) NOT NULL"}, 2, valid, 0, 0},
      {"identity in the second",
       "a int, b int",
       "(1, 1), (1, 1)",
       {"a", "b"},
       {"[a] NOT NULL", "[b] IDENTITY(1,1) NOT NULL"},
       2,
       valid,
       0,
       0},
      {"records that came later", "a int", "(1), (2), (3), (3)", {"a"}, {"[a] [int] NOT NULL"}, 3, valid, 0, 2},
      {"records that went", "a int", "(1)", {"a"}, {"[a] [int] NOT NULL"}, 5, valid, 0, 1},
      {"dates and texts of their own form",
       "a datetime, b decimal(9,2)",
       "('2020-01-02 03:04:05', 1.5), ('2020-01-02 03:04:05', 1.5)",
       {"a", "b"},
       {"[a] NOT NULL", "[b] NOT NULL"},
       2,
       "Selected fields (a, b) contain duplicate values (2020-01-02 03:04:05,1.50)" + badKey,
       0,
       1},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    load(std::string("CREATE TABLE t (") + each.columns + ")\nINSERT t VALUES " + each.rows + "\n");
    EXPECT_EQ(validate(key(each.fields, each.lines, each.records)), each.box);
    EXPECT_EQ(queries("IS NULL) SELECT 1 ELSE"), each.nullQueries);
    EXPECT_EQ(queries("SELECT COUNT(*) AS RecsCount FROM [dbo].[t] WHERE [a] = '"), each.recordQueries);
    EXPECT_EQ(end, each.box == valid                             ? KeyValidationEnd::Valid
                   : each.box.find("Nulls") != std::string::npos ? KeyValidationEnd::Nulls
                                                                 : KeyValidationEnd::Duplicates);
    EXPECT_EQ(test.host.boxes.back().icon, each.box == valid ? Icon::Information : Icon::Warning);
  }
  EXPECT_EQ(info.find("Checking if selected fields contain nulls... Done|Checking"), 0u) << info;
}

TEST_F(KeyValidations, WhatCanNotBeAskedIsNeverValid) {
  const KeyValidation nullable = key({"a"}, {"[a] [varchar] (9) NULL"}, 2);
  const KeyValidation closed = key({"a"}, {"[a] [varchar] (9) NOT NULL"}, 2);
  const auto last = [](const std::string& text) { return text.substr(text.rfind('\n') + 1); };
  load("CREATE TABLE t (a varchar(9) NULL)\nINSERT t VALUES ('it''s'), ('x')\n");
  EXPECT_EQ(last(validate(closed)), "Database connection problem; cannot determine if the fields are unique.");
  EXPECT_EQ(queries("RecsCount"), 0u) << "a value with a quote is never sent";

  load("CREATE TABLE t (a varchar(9) NULL)\nINSERT t VALUES ('y'), ('x')\n");
  test.refuse("RecsCount");
  EXPECT_EQ(last(validate(closed)), "Database connection problem; cannot determine if the fields are unique.");
  test.forgetAnswers();
  test.refuse("SELECT [a] FROM [dbo].[t]");
  EXPECT_EQ(validate(closed).find("valid"), std::string::npos) << "the query layer has told it";
  EXPECT_EQ(test.host.boxes.size(), 1u);
  test.forgetAnswers();
  test.refuse("IS NULL) SELECT 1");
  test.expectReports(1);
  EXPECT_EQ(validate(nullable), "Cannot check for nulls - aborting validating fields.");
  test.forgetAnswers();
  EXPECT_EQ(end, KeyValidationEnd::NotDone);

  KeyValidation nowhere = closed;
  nowhere.strDb = "Nowhere";
  test.expectReports(1);
  EXPECT_EQ(validate(nowhere), "Cannot connect to database Nowhere - aborting.");
  nowhere.lngSide = 2;
  test.expectReports(1);
  EXPECT_EQ(validate(nowhere),
            "Wrong source-target parameter passed: 2\nCannot connect to database Nowhere - aborting.");
  EXPECT_EQ(end, KeyValidationEnd::NotDone);

  // In another schema the bare name is no table's.
  load("CREATE SCHEMA s\nGO\nCREATE TABLE s.t (a varchar(9) NULL)\nINSERT s.t VALUES (NULL), ('x')\n");
  KeyValidation inSchema = nullable;
  inSchema.strExtName = "[s].[t]";
  EXPECT_EQ(validate(inSchema).substr(0, 22), "Field a contains Nulls");
}

// Each command takes 10 milliseconds.
class SlowLine : public ProviderConnection {
 public:
  SlowLine(std::unique_ptr<ProviderConnection> inner, std::int64_t& ticks) : inner_(std::move(inner)), ticks_(ticks) {}
  CommandResult execute(const CommandRequest& request) override {
    ticks_ += 10;
    return inner_->execute(request);
  }
  void interrupt() override { inner_->interrupt(); }

 private:
  std::unique_ptr<ProviderConnection> inner_;
  std::int64_t& ticks_;
};

class SlowServer : public Provider {
 public:
  SlowServer(std::unique_ptr<Provider> inner, std::int64_t& ticks) : inner_(std::move(inner)), ticks_(ticks) {}
  bool serves(const std::string& server) const override { return inner_->serves(server); }
  std::unique_ptr<ProviderConnection> open(const ConnectionString& text) override {
    return std::make_unique<SlowLine>(inner_->open(text), ticks_);
  }

 private:
  std::unique_ptr<Provider> inner_;
  std::int64_t& ticks_;
};

// Cancel keeps its flag, so that the next test ends at its first look at it; Esc ends this one alone.
TEST_F(KeyValidations, CancelAndEscEndTheScanAtOnce) {
  std::string rows = "CREATE TABLE t (a int)\n";
  for (int i = 0; i < 300; ++i) rows += "INSERT t VALUES (" + std::to_string(i) + ")\n";
  load(rows);
  test.data.wrapProviders([this](std::unique_ptr<Provider> inner) {
    return std::make_unique<SlowServer>(std::move(inner), test.host.tickCount);
  });
  const KeyValidation fields = key({"a"}, {"[a] [int] NOT NULL"}, 300);
  for (const bool cancel : {false, true}) {
    test.sent.clear();
    test.host.tickCount = 0;
    test.host.windows.push_back([](Form&) {});
    frmCompareDataValidation form(program);
    test.host.onDoEvents = [&] {
      if (test.host.tickCount < 500 || form.closed()) return;
      if (cancel) return form.cmdCancel.personClicks();
      form.personPressesEnter();
      form.personPressesEsc();
      EXPECT_FALSE(form.closed()) << "Enter does nothing, and Esc is no Cancel";
      EXPECT_TRUE(form.closeRequested());
      form.close();
    };
    form.ShowUp(fields);
    EXPECT_LE(test.host.tickCount, 500 + 100) << "seen within a tenth of a second";
    EXPECT_LT(queries("RecsCount"), 60u);
    EXPECT_TRUE(test.host.boxes.empty()) << test.host.boxes.front().text;
    EXPECT_EQ(end, KeyValidationEnd::NotDone);
    EXPECT_EQ(state.gblnStopComparison, cancel);
  }
  test.host.onDoEvents = nullptr;
  EXPECT_EQ(validate(fields), "");
  EXPECT_EQ(queries("RecsCount"), 0u);
  state.gblnStopComparison = false;
  EXPECT_EQ(validate(key({"a"}, {"[a] [int] NOT NULL"}, 2)), valid);
}

TEST_F(KeyValidations, BearAnythingAtAnyMoment) {
  std::string rows = "CREATE TABLE t (a int NULL)\n";
  for (int i = 0; i < 30; ++i) rows += "INSERT t VALUES (" + std::to_string(i) + ")\n";
  load(rows);
  test.data.wrapProviders([this](std::unique_ptr<Provider> inner) {
    return std::make_unique<SlowServer>(std::move(inner), test.host.tickCount);
  });
  const KeyValidation fields = key({"a"}, {"[a] [int] NULL"}, 30);
  std::mt19937 random(42);
  for (int round = 0; round < 100; ++round) {
    state.gblnStopComparison = false;
    test.host.boxes.clear();
    int yields = static_cast<int>(random() % 16);
    bool disturbed = false;
    test.host.windows.push_back([](Form&) {});
    frmCompareDataValidation form(program);
    test.host.onDoEvents = [&] {
      if (yields-- != 0 || form.closed()) return;
      disturbed = true;
      if (random() % 2 == 0) return form.cmdCancel.personClicks();
      if (form.closeRequested()) form.close();
    };
    form.ShowUp(fields);
    EXPECT_TRUE(form.closed());
    EXPECT_EQ(test.host.pointer(), Pointer::Default);
    // A test that was ended has no result, and one that wasn't has its own.
    if (!test.host.boxes.empty()) {
      EXPECT_EQ(test.host.boxes[0].text, valid) << round;
    }
    EXPECT_EQ(end == KeyValidationEnd::NotDone, test.host.boxes.empty()) << round;
    EXPECT_TRUE(disturbed || !test.host.boxes.empty()) << round;
  }
  test.host.onDoEvents = nullptr;
}

}  // namespace
}  // namespace qrel
