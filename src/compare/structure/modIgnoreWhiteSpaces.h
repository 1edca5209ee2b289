// Texts that differ in white space only.
#pragma once

#include <string>
#include <string_view>

namespace qrel {

class Program;

// Whether two texts are the same but for their white space: blanks at the ends don't count, every run of blanks, tabs,
// line ends, vertical tabs and zero characters counts as one blank. A line end at the end of one text is a blank there
// and keeps the two apart. An empty text equals only a text of nothing but blanks (U+0020). Case counts as the setting
// CaseSensitive says.
bool CompareProcs_IgnoreWhiteSpaces(const Program& program, std::string_view strA, std::string_view strB);

// Replaces CR, LF, NUL, TAB and VT and leaves one blank of every run of blanks, also at the ends of the text.
std::string ReplaceNonPrintableChars(std::string_view strText, std::string_view strReplacement);

// Word lngIndex, from 1; see GetDelimitedWord in app/modStrings.h.
std::string GetDelimitedWord_Extended(std::string_view strText, long lngIndex, std::string_view strDelimiter);

}  // namespace qrel
