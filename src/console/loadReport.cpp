#include "console/loadReport.h"

#include <iomanip>
#include <ostream>

namespace qrel {

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
      {"statements", report.statements},
      {"made", report.made},
      {"ran", report.ran},
      {"without effect", report.withoutEffect},
      {"statements skipped", static_cast<std::int64_t>(report.skipped.size())},
      {"statements refused", static_cast<std::int64_t>(report.failed.size())},
  };
  for (const auto& [what, count] : rows)
    out << std::left << std::setw(20) << what << std::right << std::setw(10) << count << '\n';
}

namespace {

void list(std::ostream& out, const char* what, const std::vector<SkippedStatement>& statements) {
  for (const SkippedStatement& each : statements)
    out << each.file << ':' << each.line << ": " << what << ": " << each.firstWords << " (" << each.reason << ")\n";
}

}  // namespace

void listSkipped(std::ostream& out, const LoadReport& report) {
  list(out, "skipped", report.skipped);
  list(out, "refused", report.failed);
}

}  // namespace qrel
