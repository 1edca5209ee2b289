#include "compare/structure/modDetails.h"

#include <algorithm>

#include "app/Program.h"
#include "app/modStrings.h"
#include "compare/structure/modIgnoreWhiteSpaces.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* crLf = "\r\n";

// The lines of a text that ends in CR LF, one by one.
class LineCutter {
 public:
  explicit LineCutter(std::string_view strText) : text_(EnsureTrailingCrLf(strText)) {}

  // The next line, from the LF of the line end before it (the first from the text's start) up to the next CR LF. A line
  // end in first position is not seen as one. False when no line end is left.
  bool next(std::string& strLine) {
    start_ = cut_;
    const std::size_t end = text_.find(crLf, start_ + 1);
    if (end == std::string::npos) return false;
    strLine = text_.substr(start_, end - start_);
    cut_ = end + 1;
    return true;
  }

  // The text behind the first character of the current line, and of the line that comes next.
  std::string restOfCurrent() const { return restBehind(start_); }
  std::string restOfNext() const { return restBehind(cut_); }

 private:
  std::string restBehind(std::size_t start) const { return text_.substr(start + byteOffset(text_.substr(start), 1)); }

  std::string text_;
  std::size_t start_ = 0;  // 0-based, of the current line
  std::size_t cut_ = 0;    // of the next one
};

struct Block {
  std::string text;
  bool filled = false;
  void add(const std::string& strLine) {
    (text += strLine) += crLf;
    filled = true;
  }
};

std::string trimmedWithoutComma(std::string_view strLine) {
  if (!strLine.empty() && strLine.back() == ',') strLine.remove_suffix(1);
  return std::string(trimBlanks(strLine));
}

// Whether a pair differs under the settings; the lines are left in the form in which they were compared last.
bool pairDiffers(const Program& program, std::string& a, std::string& b) {
  if (!program.settings.CaseSensitive) {
    a = upperCase(a);
    b = upperCase(b);
  }
  if (a == b) return false;
  if (!program.settings.IgnoreWhitespace) return true;
  a = ReplaceNonPrintableChars(a, " ");
  b = ReplaceNonPrintableChars(b, " ");
  return a != b;
}

std::string joinBlocks(const Block& source, const Block& target) {
  if (source.filled && target.filled) return source.text + crLf + target.text;
  return source.filled ? source.text : target.text;
}

}  // namespace

void AddDifferencesToDetails(const Program& program, std::string& strDetails, const std::string& strTypeName,
                             const std::string& strName, long lngOrdinal, const std::string& strSourceText,
                             const std::string& strTargetText) {
  if (lngOrdinal == 1) {
    strDetails = "\r\n===========================================\r\n\r\n";
    strDetails += "Detailed list of differences between compared " + strTypeName + crLf;
  }
  strDetails += crLf + std::to_string(lngOrdinal) + ". " + strName + crLf + crLf;
  std::string strDifferences;
  GetLineDifferences(program, strSourceText, strTargetText, strDifferences);
  strDetails += strDifferences;
}

void GetLineDifferences(const Program& program, std::string_view strSourceText, std::string_view strTargetText,
                        std::string& strResult) {
  strResult.clear();
  if (strSourceText == strTargetText) return;
  Block source{"Differences in Source:\r\n"};
  Block target{"Differences in Target:\r\n"};
  LineCutter sourceLines(strSourceText);
  LineCutter targetLines(strTargetText);
  std::string a, b;
  while (true) {
    if (!sourceLines.next(a)) {
      target.add(targetLines.restOfNext());
      break;
    }
    if (!targetLines.next(b)) {
      source.add(sourceLines.restOfCurrent());
      break;
    }
    if (pairDiffers(program, a, b) && !LinesDifferOnlyByComma(a, b)) {
      source.add(a);
      target.add(b);
    }
  }
  strResult = joinBlocks(source, target);
}

bool LinesDifferOnlyByComma(std::string_view strA, std::string_view strB) {
  return strA == strB || trimmedWithoutComma(strA) == trimmedWithoutComma(strB);
}

}  // namespace qrel
