#include "console/loadReport.h"

#include <cstdio>
#include <iomanip>
#include <ostream>

#include "platform/text.h"

namespace qrel {

namespace {

bool steersTerminal(char32_t c) {
  const bool control = c < 0x20 || (c >= 0x7F && c < 0xA0);
  const bool direction =
      c == 0x61C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
  return control || direction || c == 0x2028 || c == 0x2029 || c == 0xFEFF;
}

void list(std::ostream& out, const char* what, const std::vector<SkippedStatement>& statements, std::int64_t all) {
  for (const SkippedStatement& each : statements) {
    out << visibleText(each.file) << ':' << each.line << ": " << what << ": " << visibleText(each.firstWords) << " ("
        << visibleText(each.reason) << ')';
    if (each.times > 1) out << " (" << withThousands(each.times) << " times)";
    out << '\n';
    all -= each.times;
  }
  if (all > 0) out << "... and " << withThousands(all) << " more " << what << " that are not listed here.\n";
}

}  // namespace

std::string visibleText(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    const char32_t c = nextCodePoint(text, at);
    char shown[16];
    if (!steersTerminal(c)) {
      out.append(text.substr(begin, at - begin));
    } else {
      std::snprintf(shown, sizeof shown, c < 0x100 ? "\\x%02X" : "\\u{%04X}", static_cast<unsigned>(c));
      out += shown;
    }
  }
  return out;
}

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
  list(out, "skipped", report.skipped, report.statementsSkipped);
  list(out, "refused", report.failed, report.statementsFailed);
}

}  // namespace qrel
