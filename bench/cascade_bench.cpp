// A pair of long procedures with the same lines in random order, through every test of the pair comparison.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "app/Workspace.h"
#include "compare/structure/modCompareSelected.h"
#include "db/mdlObjects.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "platform/host/consoleHost.h"

namespace {

using namespace qrel;

class QuietSteps : public PairComparisonSteps {
 public:
  explicit QuietSteps(Program& program) : program_(program) {}
  bool CanStartComparison() override { return true; }
  void ShowReport(const PairReport&) override { verdict = program_.report.gstrReportText; }
  bool printRunInProgress() override { return false; }
  void PrintPane(const std::string&, TextPane&) override {}

  std::string verdict;

 private:
  Program& program_;
};

std::string shuffled(std::vector<std::string>& lines, std::mt19937& random) {
  std::shuffle(lines.begin(), lines.end(), random);
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

// `kinds` is the number of different lines.
void runCascade(benchmark::State& state, int kinds) {
  const auto count = static_cast<int>(state.range(0));
  std::vector<std::string> lines;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i % kinds);
    lines.push_back("    SELECT column_" + number + ", other FROM dbo.SomeTable WHERE id = " + number + " -- line");
  }
  std::mt19937 random(7);
  EmbeddedServers servers("");
  DataAccess data;
  data.add(std::make_unique<EmbeddedProvider>(servers, data.providerStop()));
  KeyStore store;
  ConsoleHost host(std::cerr);
  Program program(host, data, store);
  program.settings.CaseSensitive = false;
  Workspace workspace;
  workspace.cmbType.add("Procedures", objProcedures);
  workspace.cmbType.select(0);
  QuietSteps steps(program);
  for (auto _ : state) {
    state.PauseTiming();
    for (TextPane& pane : workspace.txtTXProc) pane.setText(shuffled(lines, random));
    state.ResumeTiming();
    CompareSelProcs(program, workspace, steps, false, "", "");
    if (steps.verdict.find("are identical.") == std::string::npos) state.SkipWithError("wrong verdict");
  }
  state.SetItemsProcessed(state.iterations() * count);
  state.SetComplexityN(count);
}

void BM_Cascade(benchmark::State& state) { runCascade(state, static_cast<int>(state.range(0))); }
BENCHMARK(BM_Cascade)->Arg(1000)->Arg(7500)->Arg(15000)->Arg(30000)->Unit(benchmark::kMillisecond)->Complexity();

// Ten different lines only: the order of equal lines is what takes the time.
void BM_CascadeTies(benchmark::State& state) { runCascade(state, 10); }
BENCHMARK(BM_CascadeTies)->Arg(7500)->Arg(30000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
