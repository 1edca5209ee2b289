// The golden cases: each folder of tests/cases holds source.sql, target.sql, options and the expected reports, written
// from the rules by hand. `options` has two lines per run: "exit CODE" and "args ..."; the second run's report is in
// expected.report.2. An optional first line "version V" makes the server an older one; with "target-version V" the
// Target is a server of its own, "new", of that version. "ignored SERVER.DATABASE.TABLE COLUMN,COLUMN" leaves columns
// out of structure comparisons.
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "tests/console/runQrel.h"
#include "tests/support.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> words(const std::string& line) {
  std::istringstream stream(line);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::vector<std::string> caseNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(QREL_CASES)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// Writes a table's section of the list of ignored columns: "case.source.t a,b".
void ignoreColumns(const fs::path& home, const std::string& line) {
  const std::size_t blank = line.find(' ');
  std::ofstream file(home / "qrel_ignored_cols_struct.ini", std::ios::app);
  file << '[' << line.substr(0, blank) << "]\n";
  std::istringstream columns(line.substr(blank + 1));
  std::string column;
  for (int number = 0; std::getline(columns, column, ','); ++number) file << number << '=' << column << '\n';
}

// The report of a run that took no time at all, whatever the machine.
std::string withoutTime(std::string report) {
  const std::string label = "Time Elapsed: ";
  const std::size_t at = report.rfind(label);
  if (at != std::string::npos) report.replace(at + label.size(), 8, "00:00:00");
  return report;
}

class Cases : public ::testing::TestWithParam<std::string> {};

TEST_P(Cases, GiveTheReportWrittenByHand) {
  TemporaryFolder home;
  setenv("QREL_HOME", home.path().c_str(), 1);
  const fs::path folder = fs::path(QREL_CASES) / GetParam();
  std::istringstream options(readFile(folder / "options"));
  std::string line, versions[] = {defaultProductVersion, defaultProductVersion};
  std::string databases[] = {"case/source", "case/target"};
  int number = 0, code = 0;
  while (std::getline(options, line)) {
    const std::string word = line.substr(0, line.find(' '));
    if (word == "version") versions[0] = versions[1] = line.substr(8);
    if (word == "target-version") {
      versions[1] = line.substr(15);
      databases[1] = "new/target";
    }
    if (word == "ignored") ignoreColumns(home.path(), line.substr(8));
    if (word == "exit") code = std::stoi(line.substr(5));
    if (word != "args") continue;
    if (++number == 1) {
      for (const int side : {0, 1}) {
        const std::string script = side == 0 ? "source.sql" : "target.sql";
        const QrelRun load =
            runQrel({"load", databases[side], (folder / script).string(), "--version", versions[side]});
        ASSERT_EQ(load.code, 0) << load.err;
      }
    }
    std::vector<std::string> arguments = words(line.substr(5));
    arguments.insert(arguments.begin(), {"compare", databases[0], databases[1]});
    const QrelRun compared = runQrel(arguments);
    const std::string file = number == 1 ? "expected.report" : "expected.report." + std::to_string(number);
    EXPECT_EQ(withoutTime(compared.out), readFile(folder / file)) << line << '\n' << compared.err;
    EXPECT_EQ(compared.code, code) << line << '\n' << compared.err;
  }
  EXPECT_GT(number, 0) << "no run in options";
  unsetenv("QREL_HOME");
}

INSTANTIATE_TEST_SUITE_P(Folders, Cases, ::testing::ValuesIn(caseNames()), [](const auto& each) {
  std::string name = each.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

}  // namespace
}  // namespace qrel
