#include "compare/structure/modCompareObjects.h"

#include <cstdlib>
#include <string_view>

#include "app/modStrings.h"
#include "app/modTextPane.h"
#include "app/trap.h"
#include "compare/structure/modIgnoreComments.h"
#include "compare/structure/modIgnoreWhiteSpaces.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::size_t headerCharacters = 500;
constexpr long headerEndsApart = 21;

std::string headerOf(std::string_view strText) {
  return upperCase(leftCharacters(trimLeftBlanks(strText), headerCharacters));
}

// 1-based position, in characters, of the header's end; 0 when there is none.
long endOfHeader(std::string_view strHeader) {
  for (const std::string_view ending : {"\nAS\n", " AS", "\r\nAS\r\n"}) {
    const std::size_t hit = strHeader.find(ending);
    if (hit != std::string_view::npos) return static_cast<long>(characterCount(strHeader.substr(0, hit))) + 1;
  }
  return 0;
}

// The bare name in a header cut behind its end; false when it is no view's.
bool nameOfView(std::string_view strHeader, std::string& strName) {
  constexpr std::string_view mark = " VIEW ";
  std::string header(strHeader);
  for (const char* unwanted : {"\"", "[", "]", "\n"}) header = StripChars(header, unwanted);
  const std::size_t hit = header.find(mark);
  if (hit == std::string::npos) return false;
  std::string rest;
  strName = GetLastWord(header.substr(hit + mark.size()), rest, ".");
  return true;
}

void adjustHeaders(std::string& strSource, std::string& strTarget) {
  if (strSource == strTarget) return;
  const std::string headerSource = headerOf(strSource);
  const std::string headerTarget = headerOf(strTarget);
  if (headerSource == headerTarget) return;
  const long endSource = endOfHeader(headerSource);
  const long endTarget = endOfHeader(headerTarget);
  if (endSource == 0 || endTarget == 0) return;
  if (std::abs(endSource - endTarget) >= headerEndsApart) return;
  const auto charactersSource = static_cast<std::size_t>(endSource);
  const auto charactersTarget = static_cast<std::size_t>(endTarget);
  std::string nameSource, nameTarget;
  if (!nameOfView(leftCharacters(headerSource, charactersSource), nameSource)) return;
  if (!nameOfView(leftCharacters(headerTarget, charactersTarget), nameTarget)) return;
  if (nameSource != nameTarget) return;
  strSource = std::string(trimLeftBlanks(strSource));
  strTarget = std::string(trimLeftBlanks(strTarget));
  strTarget = std::string(leftCharacters(strSource, charactersSource)) +
              strTarget.substr(byteOffset(strTarget, charactersTarget));
}

// Whether two lines agree under the settings. They are left stripped and upper-cased as the settings ask.
bool linesMatch(const Program& program, std::string& a, std::string& b) {
  if (program.settings.IgnoreComments && a != b) {
    a = StripCommentsFromProc(a);
    b = StripCommentsFromProc(b);
  }
  if (!program.settings.CaseSensitive) {
    a = upperCase(a);
    b = upperCase(b);
  }
  if (a == b) return true;
  return program.settings.IgnoreWhitespace && CompareProcs_IgnoreWhiteSpaces(program, a, b);
}

void removeOwner(std::string& strLine) {
  if (upperCase(strLine).find("DBO.") != std::string::npos) strLine = ReplaceString(strLine, "DBO.", "", false);
}

// Whether two lines that don't match do so as the header lines of a procedure, without its owner.
bool headerLinesMatch(const Program& program, std::string& a, std::string& b) {
  constexpr const char* header = "CREATE PROCEDURE";
  if (upperCase(a).find(header) == std::string::npos && upperCase(b).find(header) == std::string::npos) return false;
  removeOwner(a);
  removeOwner(b);
  if (a == b) return true;
  return program.settings.IgnoreWhitespace && CompareProcs_IgnoreWhiteSpaces(program, a, b);
}

}  // namespace

void AdjustCreateViewStatements(Program& program, std::string& strSource, std::string& strTarget) {
  trap(program, "modCompareObjects", "AdjustCreateViewStatements", [&] { adjustHeaders(strSource, strTarget); });
}

bool CompareProcs_IgnoreOwnerInName(Program& program, const TextPane& paneSource, const TextPane& paneTarget) {
  return trap(program, "modCompareObjects", "CompareProcs_IgnoreOwnerInName", false, [&] {
    CompLineArray arrSource, arrTarget;
    std::int32_t lngSource = 0, lngTarget = 0;
    if (!TXText_LinesOrBox(program, paneSource, "CompareProcs_IgnoreOwnerInName (Source)", arrSource, lngSource))
      return false;
    if (!TXText_LinesOrBox(program, paneTarget, "CompareProcs_IgnoreOwnerInName (Target)", arrTarget, lngTarget))
      return false;
    if (lngSource != lngTarget) return false;
    for (std::int32_t line = 1; line <= lngSource; ++line) {
      std::string& a = arrSource[line].strLine;
      std::string& b = arrTarget[line].strLine;
      if (!linesMatch(program, a, b) && !headerLinesMatch(program, a, b)) return false;
    }
    return true;
  });
}

}  // namespace qrel
