#include "embedded/load/loadReport.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <utility>
#include <vector>

#include "platform/visibleText.h"

namespace qrel {

namespace {

struct Line {
  const char* what;
  const SkippedStatement* statement;
};

void print(std::ostream& out, const Line& line) {
  const SkippedStatement& each = *line.statement;
  out << visibleText(each.file) << ':' << each.line << ": " << line.what << ": " << visibleText(each.firstWords);
  if (!each.reason.empty()) out << " (" << visibleText(each.reason) << ')';
  if (each.times > 1) out << " (" << withThousands(each.times) << " times)";
  out << '\n';
}

void tellMore(std::ostream& out, const char* what, const std::vector<SkippedStatement>& listed, std::int64_t all) {
  for (const SkippedStatement& each : listed) all -= each.times;
  if (all > 0) out << "... and " << withThousands(all) << " more " << what << " that are not listed here.\n";
}

}  // namespace

std::string withThousands(std::int64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
  return digits;
}

void printLoadReport(std::ostream& out, const LoadReport& report) {
  const std::pair<const char*, std::int64_t> rows[] = {
      {"tables", report.tables},
      {"procedures", report.procedures},
      {"functions", report.functions},
      {"views", report.views},
      {"triggers", report.triggers},
      {"relationships", report.relationships},
      {"indexes", report.indexes},
      {"types", report.types},
      {"sequences", report.sequences},
      {"rows", report.rows},
      {"statements", report.statements()},
      {"  made", report.statementsMade},
      {"  ran", report.statementsRan},
      {"  without effect", report.statementsWithoutEffect},
      {"  skipped", report.statementsSkipped},
      {"  refused", report.statementsFailed},
  };
  for (const auto& [what, count] : rows)
    out << std::left << std::setw(20) << what << std::right << std::setw(10) << count << '\n';
}

void listSkipped(std::ostream& out, const LoadReport& report) {
  for (const LoadRemark& each : report.remarks)
    out << visibleText(each.path) << ": " << visibleText(each.what) << ".\n";
  std::vector<Line> lines;
  for (const auto& [what, list] :
       {std::pair("message", &report.messages), {"skipped", &report.skipped}, {"refused", &report.failed}})
    for (const SkippedStatement& each : *list) lines.push_back({what, &each});
  std::stable_sort(lines.begin(), lines.end(),
                   [](const Line& a, const Line& b) { return a.statement->order < b.statement->order; });
  for (const Line& each : lines) print(out, each);
  tellMore(out, "messages", report.messages, report.messageCount);
  tellMore(out, "skipped", report.skipped, report.statementsSkipped);
  tellMore(out, "refused", report.failed, report.statementsFailed);
}

}  // namespace qrel
