// Words and characters of a text. Positions and word numbers are 1-based; searches are binary unless told otherwise;
// trimming takes blanks (U+0020) and nothing else. None of these raises an error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/OneBased.h"

namespace qrel {

class Host;

// 1 plus the number of delimiters, so an empty text has one word.
long CountDelimitedWords(std::string_view strText, std::string_view strDelimiter);

// Overlapping hits count: "---" holds "--" twice. An empty search text is found nowhere.
long CountOccurrences(std::string_view strText, std::string_view strSearch);

// Word lngIndex. A text that begins with the delimiter is its own first word as a whole. Beyond the last word the count
// wraps round to the first. For a run through all words take DelimitedWords, which doesn't start anew for each.
std::string GetDelimitedWord(std::string_view strText, long lngIndex, std::string_view strDelimiter);

// Gives the words that GetDelimitedWord gives for 1, 2, 3, ... one after the other. The texts must outlive it.
class DelimitedWords {
 public:
  DelimitedWords(std::string_view strText, std::string_view strDelimiter) : text_(strText), delimiter_(strDelimiter) {}
  std::string_view next();
  void skip();

 private:
  std::string_view text_;
  std::string_view delimiter_;
  std::size_t start_ = 0;  // 0-based, of the next word
};

// The trimmed text's first word; strRest becomes what follows it, trimmed. A text of one single word shows a box
// (error 94) and leaves strRest alone; an empty text gives an empty word and an empty rest without a box.
std::string GetFirstWord(Host& host, std::string_view strText, std::string& strRest, std::string_view strDelimiter);

// The trimmed text's last word behind the last strDelimiter (one character); strRest becomes what precedes it, trimmed.
// Without a delimiter, or with the last one in first position, the word is the whole trimmed text and the rest empty.
std::string GetLastWord(std::string_view strText, std::string& strRest, std::string_view strDelimiter);

// Replaces each character equal to strFind; a strFind that isn't one character equals none.
std::string ReplaceChars(std::string_view strText, std::string_view strFind, std::string_view strReplacement);

// Replaces every occurrence from left to right, going on behind the insertion. The search ignores case unless
// blnBinary.
std::string ReplaceString(std::string_view strText, std::string_view strFind, std::string_view strReplacement,
                          bool blnBinary);

// All words of the text, as GetDelimitedWord gives them; returns their count.
long StringToArray(std::string_view strText, OneBased<std::string>& arrWords, std::string_view strDelimiter);

// The text without every character equal to strChar.
std::string StripChars(std::string_view strText, std::string_view strChar);
// The text less its last lngCount characters, empty when it has no more.
std::string StripRightChars(std::string_view strText, long lngCount);
std::string StripFirstChar(std::string_view strText);

// A number in the format "#,##0".
std::string FormatThousands(std::int64_t lngNumber);

// Appends CR LF, also to a text that ends in one.
std::string EnsureTrailingCrLf(std::string_view strText);

}  // namespace qrel
