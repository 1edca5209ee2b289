// Two databases on one server, loaded from scripts, and a place for the report of their comparison.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "app/mdlMain.h"
#include "compare/all/compareAllCommands.h"
#include "compare/all/frmCompareAllTables.h"
#include "platform/text.h"
#include "tests/support.h"

namespace qrel {

class CompareAllTest : public testing::Test, public CompareAllSteps {
 protected:
  CompareAllTest() { SetFilePaths(program); }

  // Server "S" with nothing but the databases "A" and "B"; the version is what the program takes the server to be.
  void load(const std::string& source, const std::string& target, const std::string& version = defaultProductVersion) {
    for (const char* database : {"A", "B"})
      if (test.servers.exists("S")) test.servers.dropDatabase("S", database);
    test.load("S", "A", source);
    test.load("S", "B", target);
    program.main.gtypSelServ = {TestProgram::server("S", version), TestProgram::server("S", version)};
  }

  static void leaveAlone(Form&) {}

  // Runs one type and gives its part of the report with plain line ends; empty when there was no report.
  std::string section(long lngType, const ObjectSelection* selection = nullptr, bool blnDetails = false) {
    frmCompareAllTables form(program);
    if (selection) form.SetVarsForSelectiveComparison(*selection);
    program.report.gstrReportText.clear();
    test.host.windows.push_back(leaveAlone);
    bool blnResult = false;
    form.ShowUp("A", "B", lngType, blnDetails, true, blnResult);
    EXPECT_EQ(blnResult, !program.report.gstrReportText.empty());
    EXPECT_TRUE(form.closed() && form.closeRequested());
    if (!blnResult) return {};
    const std::string text = replaceAll(program.report.gstrReportText, "\r\n", "\n");
    const std::string head = "Comparison of databases\n\nSource database S.A\nTarget database S.B\n\n\n";
    const std::string foot = "\n\nTime Elapsed: 00:00:00";
    EXPECT_TRUE(text.starts_with(head) && text.ends_with(foot)) << text;
    return text.substr(head.size(), text.size() - head.size() - foot.size());
  }

  std::string DatabaseName(int side) const override { return databases[static_cast<std::size_t>(side)]; }
  void ShowReport(const CompareAllReportCall& shownCall) override {
    call = shownCall;
    shownText = program.report.gstrReportText;
  }

  modCompareAllState& state() { return program.state<modCompareAllState>(); }

  TestProgram test;
  Program& program = test.program;
  std::array<std::string, 2> databases{"A", "B"};
  CompareAllReportCall call;
  std::string shownText;
};

// One procedure; `body` is what it does.
inline std::string procedure(const std::string& name, const std::string& body = "SELECT 1") {
  return "CREATE PROCEDURE " + name + " AS " + body + "\nGO\n";
}

}  // namespace qrel
