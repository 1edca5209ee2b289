#include "compare/structure/modIgnoreWhiteSpaces.h"

#include "app/Program.h"
#include "app/modStrings.h"
#include "platform/text.h"

namespace qrel {

namespace {

bool isNonPrintable(char c) { return c == '\r' || c == '\n' || c == '\0' || c == '\t' || c == '\v'; }

// Word by word, as GetDelimitedWord_Extended gives them.
bool sameWords(std::string_view strA, std::string_view strB, long count) {
  DelimitedWords wordsA(strA, " ");
  DelimitedWords wordsB(strB, " ");
  for (long word = 1; word <= count; ++word) {
    if (wordsA.next() != wordsB.next()) return false;
  }
  return true;
}

}  // namespace

bool CompareProcs_IgnoreWhiteSpaces(const Program& program, std::string_view strA, std::string_view strB) {
  std::string a(trimBlanks(strA));
  std::string b(trimBlanks(strB));
  if (!program.settings.CaseSensitive) {
    a = upperCase(a);
    b = upperCase(b);
  }
  if (a == b) return true;
  if (a.empty() || b.empty()) return false;
  a = ReplaceNonPrintableChars(a, " ");
  b = ReplaceNonPrintableChars(b, " ");
  if (a == b) return true;
  const long count = CountDelimitedWords(a, " ");
  if (count != CountDelimitedWords(b, " ")) return false;
  return sameWords(a, b, count);
}

std::string ReplaceNonPrintableChars(std::string_view strText, std::string_view strReplacement) {
  std::string result;
  result.reserve(strText.size());
  for (std::size_t i = 0; i < strText.size(); ++i) {
    const bool replaced = isNonPrintable(strText[i]);
    if (replaced) {
      result += strReplacement;
    } else {
      result += strText[i];
    }
    const bool blank = replaced ? strReplacement == " " : strText[i] == ' ';
    if (blank && i > 0 && result.size() > 1 && result[result.size() - 2] == ' ') result.pop_back();
  }
  return result;
}

std::string GetDelimitedWord_Extended(std::string_view strText, long lngIndex, std::string_view strDelimiter) {
  return GetDelimitedWord(strText, lngIndex, strDelimiter);
}

}  // namespace qrel
