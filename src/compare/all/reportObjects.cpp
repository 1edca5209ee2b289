#include "compare/all/reportObjects.h"

#include <algorithm>
#include <string_view>

#include "app/modStrings.h"
#include "platform/controls/textPane.h"

namespace qrel {

namespace {

// The type of the part of the report that the line stands in; 0 in front of the first one.
long typeOfSection(const TextPane& report, std::size_t line) {
  for (std::size_t at = line + 1; at-- > 0;) {
    std::string strHeading = report.lineText(at);
    for (const std::string_view start : {"Selective comparison of ", "Comparison of data in ", "Comparison of "}) {
      if (!strHeading.starts_with(start)) continue;
      strHeading.erase(0, start.size());
      for (const long lngType : compareAllTypes)
        if (strHeading == GetObjectTypeName(lngType, false)) return lngType;
      return 0;
    }
  }
  return 0;
}

// What a line may have behind a name.
std::string_view withoutSuffix(std::string_view strName) {
  constexpr std::string_view ignored = " (some columns ignored during comparison)";
  constexpr std::string_view records = " different record(s)";
  if (strName.ends_with(ignored)) return strName.substr(0, strName.size() - ignored.size());
  if (strName.ends_with(records)) return strName.substr(0, std::min(strName.rfind(" - "), strName.size()));
  return strName;
}

// The name as the line has it, and whether it may be without its schema; empty when the line can't name an object.
std::string_view nameInLine(std::string_view strLine, bool& blnBare) {
  blnBare = false;
  if (strLine.starts_with('\t')) return withoutSuffix(strLine.substr(1));
  if (strLine.starts_with("One ")) {
    const std::size_t open = strLine.find('['), close = strLine.rfind("] ");
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) return {};
    return withoutSuffix(strLine.substr(open + 1, close - open - 1));
  }
  const std::size_t digits = strLine.find_first_not_of("0123456789");
  if (digits == 0 || digits == std::string_view::npos || !strLine.substr(digits).starts_with(". ")) return {};
  blnBare = true;
  return strLine.substr(digits + 2);
}

}  // namespace

const ObjectVerdict* ObjectOfReportLine(const std::vector<ObjectVerdict>& arrVerdicts, const TextPane& report,
                                        std::size_t line) {
  bool blnBare = false;
  const std::string strLine = report.lineText(line);
  const std::string_view strName = nameInLine(strLine, blnBare);
  const long lngType = strName.empty() ? 0 : typeOfSection(report, line);
  if (lngType == 0) return nullptr;
  const auto find = [&](const auto& sameName) {
    const auto found = std::find_if(arrVerdicts.begin(), arrVerdicts.end(), [&](const ObjectVerdict& each) {
      return each.lngType == lngType && sameName(each);
    });
    return found == arrVerdicts.end() ? nullptr : &*found;
  };
  if (const auto* found = find([&](const ObjectVerdict& each) { return each.strName == strName; })) return found;
  if (!blnBare) return nullptr;
  return find([&](const ObjectVerdict& each) {
    std::string strRest;
    return each.state == VerdictState::Different && GetLastWord(each.strName, strRest, ".") == strName;
  });
}

std::string VerdictWords(VerdictState state, bool blnData, int side) {
  switch (state) {
    case VerdictState::Identical:
      return blnData ? "data identical" : "identical";
    case VerdictState::Different:
      return blnData ? "data differ" : "differs";
    case VerdictState::SourceOnly:
      return side == 0 ? "only here" : "";
    case VerdictState::TargetOnly:
      return side == 1 ? "only here" : "";
    case VerdictState::NotCompared:
      return "not compared";
  }
  return {};
}

}  // namespace qrel
