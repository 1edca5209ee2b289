#include "app/modStrings.h"

#include "app/trap.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr auto npos = std::string_view::npos;

// Moves `offset` over whole characters of `text` until `follower`, moving in step over `folded`, has reached `target`.
void walkTo(std::string_view text, std::size_t& offset, std::string_view folded, std::size_t& follower,
            std::size_t target) {
  while (follower < target && offset < text.size()) {
    nextCodePoint(folded, follower);
    nextCodePoint(text, offset);
  }
}

}  // namespace

long CountDelimitedWords(std::string_view strText, std::string_view strDelimiter) {
  return 1 + CountOccurrences(strText, strDelimiter);
}

long CountOccurrences(std::string_view strText, std::string_view strSearch) {
  if (strSearch.empty()) return 0;
  long count = 0;
  for (auto hit = strText.find(strSearch); hit != npos; hit = strText.find(strSearch, hit + 1)) ++count;
  return count;
}

std::string_view DelimitedWords::next() {
  const std::size_t start = start_;
  if (delimiter_.empty()) return text_;
  const std::size_t hit = text_.find(delimiter_, start);
  start_ = hit == npos ? 0 : hit + delimiter_.size();
  if (hit == npos || hit == 0) return text_.substr(start);
  return text_.substr(start, hit - start);
}

void DelimitedWords::skip() { next(); }

std::string GetDelimitedWord(std::string_view strText, long lngIndex, std::string_view strDelimiter) {
  DelimitedWords words(strText, strDelimiter);
  for (long index = 1; index < lngIndex; ++index) words.skip();
  return std::string(words.next());
}

std::string GetFirstWord(Host& host, std::string_view strText, std::string& strRest, std::string_view strDelimiter) {
  const std::string_view text = trimBlanks(strText);
  const std::size_t hit = strDelimiter.empty() ? npos : text.find(strDelimiter);
  if (hit == npos && !text.empty()) {
    trapWithBox(host, "GetFirstWord", 0,
                []() -> int { throw RuntimeError(errorNumber::invalidUseOfNull, "Invalid use of Null"); });
    return std::string(text);
  }
  std::string word(text.substr(0, hit));  // before strRest changes: it may be what strText looks at
  strRest = hit == npos ? std::string() : std::string(trimBlanks(text.substr(hit + strDelimiter.size())));
  return word;
}

std::string GetLastWord(std::string_view strText, std::string& strRest, std::string_view strDelimiter) {
  const std::string_view text = trimBlanks(strText);
  const std::size_t hit = strDelimiter.empty() ? npos : text.rfind(strDelimiter);
  if (hit == npos || hit == 0) {
    std::string word(text);
    strRest.clear();
    return word;
  }
  std::string word(text.substr(hit + strDelimiter.size()));
  strRest = std::string(trimBlanks(text.substr(0, hit)));
  return word;
}

std::string ReplaceChars(std::string_view strText, std::string_view strFind, std::string_view strReplacement) {
  if (characterCount(strFind) != 1) return std::string(strText);
  return replaceAll(strText, strFind, strReplacement);
}

std::string ReplaceString(std::string_view strText, std::string_view strFind, std::string_view strReplacement,
                          bool blnBinary) {
  if (strFind.empty()) return std::string(strText);
  if (blnBinary) return replaceAll(strText, strFind, strReplacement);
  const std::string folded = lowerCase(strText);
  const std::string find = lowerCase(strFind);
  std::string result;
  std::size_t copied = 0;  // of strText
  std::size_t offset = 0;  // in strText, in step with
  std::size_t inFolded = 0;
  for (auto hit = folded.find(find); hit != npos; hit = folded.find(find, hit + find.size())) {
    walkTo(strText, offset, folded, inFolded, hit);
    result.append(strText, copied, offset - copied);
    result += strReplacement;
    walkTo(strText, offset, folded, inFolded, hit + find.size());
    copied = offset;
  }
  return result.append(strText, copied);
}

long StringToArray(std::string_view strText, OneBased<std::string>& arrWords, std::string_view strDelimiter) {
  const long count = CountDelimitedWords(strText, strDelimiter);
  arrWords.clear();
  arrWords.reserve(static_cast<std::size_t>(count));
  DelimitedWords words(strText, strDelimiter);
  for (long index = 1; index <= count; ++index) arrWords.add(std::string(words.next()));
  return count;
}

std::string StripChars(std::string_view strText, std::string_view strChar) {
  return ReplaceChars(strText, strChar, {});
}

std::string StripRightChars(std::string_view strText, long lngCount) {
  if (lngCount <= 0) return std::string(strText);
  const std::size_t characters = characterCount(strText);
  const auto dropped = static_cast<std::size_t>(lngCount);
  return std::string(leftCharacters(strText, characters > dropped ? characters - dropped : 0));
}

std::string StripFirstChar(std::string_view strText) { return std::string(strText.substr(byteOffset(strText, 1))); }

std::string FormatThousands(std::int64_t lngNumber) {
  std::string text = std::to_string(lngNumber);
  for (std::size_t at = text.size(); at > 3 && text[at - 4] != '-';) text.insert(at -= 3, ",");
  return text;
}

std::string EnsureTrailingCrLf(std::string_view strText) { return std::string(strText) += "\r\n"; }

}  // namespace qrel
