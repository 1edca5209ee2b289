// A run that reads ahead and one that doesn't tell the same, failures included.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "compare/all/modCompareAll.h"
#include "platform/data/connectionString.h"
#include "platform/error.h"
#include "tests/support.h"

namespace qrel {
namespace {

// Lets queries that hold a text fail, and counts what other threads ask for.
class Failing : public Provider {
 public:
  struct State {
    std::string part;
    std::thread::id main = std::this_thread::get_id();
    std::atomic<int> ahead = 0;
  };
  Failing(std::unique_ptr<Provider> inner, State& state) : inner_(std::move(inner)), state_(state) {}
  bool serves(const std::string& server) const override { return inner_->serves(server); }
  std::size_t connectionsAhead() const override { return 3; }
  std::shared_ptr<void> holdState() override { return inner_->holdState(); }
  std::unique_ptr<ProviderConnection> open(const ConnectionString& text) override {
    return std::make_unique<Line>(inner_->open(text), state_);
  }

 private:
  class Line : public ProviderConnection {
   public:
    Line(std::unique_ptr<ProviderConnection> inner, State& state) : inner_(std::move(inner)), state_(state) {}
    CommandResult execute(const CommandRequest& request) override {
      if (std::this_thread::get_id() != state_.main) ++state_.ahead;
      if (!state_.part.empty() && request.text.find(state_.part) != std::string::npos)
        throw DataError(errorNumber::timeout, "refused");
      return inner_->execute(request);
    }
    void interrupt() override { inner_->interrupt(); }

   private:
    std::unique_ptr<ProviderConnection> inner_;
    State& state_;
  };
  std::unique_ptr<Provider> inner_;
  State& state_;
};

// All that a run over all types shows, in order.
std::string told(TestProgram& test, std::size_t most) {
  test.data.prefetcher().setMost(most);
  struct Window : Form {
    Window() : Form("frmCompareAll") {}
  } window;
  CompareAllControls controls(window);
  for (CheckBox& box : controls.chkObjType) box.setChecked(true);
  test.program.settings.AnalyzeConstraints = true;
  CompareAllInput input;
  input.arrDatabases = {"A", "B"};
  input.blnDetails = true;
  std::string flags;
  test.program.state<ReadFailuresState>() = {};
  test.program.main.gtypSelServ = {TestProgram::server("S"), TestProgram::server("S")};
  std::string text = CompareAll_Structure(test.program, controls, flags, input) ? "done\n" : "not done\n";
  text += test.program.report.gstrReportText;
  for (const auto& box : test.host.boxes) text += "\nbox: " + box.text;
  for (const auto& each : test.host.unexpected) text += "\nwindow: " + each;
  for (const ReadFailure& each : test.program.state<ReadFailuresState>().arrFailures)
    text += "\nfailed: " + each.strDb + " " + each.strObject + " " + each.strDescription;
  test.host.boxes.clear();
  test.host.unexpected.clear();
  return text;
}

TEST(ReadAhead, RunsTellTheSame) {
  TestProgram test;
  for (const std::string side : {"A", "B"}) {
    std::string script;
    for (int i = 0; i < 6; ++i) {
      const std::string n = std::to_string(i);
      const std::string changed = side == "B" && i % 3 == 0 ? "2" : "1";
      script += "CREATE TABLE t" + n + " (a int NOT NULL CONSTRAINT pk" + n + " PRIMARY KEY, b int CONSTRAINT df" + n +
                " DEFAULT " + changed + ", c int CONSTRAINT fk" + n + " REFERENCES t" + n + " (a))\nGO\n";
      if (side == "A" || i != 4) script += "CREATE PROCEDURE p" + n + " AS SELECT " + changed + "\nGO\n";
    }
    test.load("S", side, script + "CREATE PROCEDURE secret WITH ENCRYPTION AS SELECT 1\nGO\n");
  }
  Failing::State state;
  test.data.wrapProviders([&](auto inner) { return std::make_unique<Failing>(std::move(inner), state); });
  // Nothing; the text of one procedure; what follows from the columns of each table.
  for (const char* part : {"", "'p1'", "[ctext]"}) {
    SCOPED_TRACE(part);
    state.part = part;
    const std::string without = told(test, 0);
    EXPECT_EQ(state.ahead, 0);
    EXPECT_EQ(told(test, 8), without);
    EXPECT_GT(state.ahead.exchange(0), 10);
    EXPECT_EQ(without.find("failed:") != std::string::npos, *part != 0);
  }
}

}  // namespace
}  // namespace qrel
