#include "platform/text.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <span>

#include "platform/caseTable.h"
#include "platform/error.h"

namespace qrel {
namespace {

using caseTable::CaseRange;

// A malformed byte is told from all real characters by a number in the range of low surrogates.
constexpr char32_t malformedBase = 0xDC00;

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }
bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }
bool isMalformed(char32_t c) { return c >= malformedBase && c <= malformedBase + 0xFF; }

// The code point at `offset`, or malformedBase plus the byte there; moves behind it.
char32_t decodeAt(std::string_view text, std::size_t& offset) {
  const auto lead = static_cast<unsigned char>(text[offset]);
  const std::size_t start = offset++;
  if (lead < 0x80) return lead;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() - start < length) return malformedBase + lead;
  char32_t value = lead & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[start + i])) return malformedBase + lead;
    value = (value << 6) | (static_cast<unsigned char>(text[start + i]) & 0x3Fu);
  }
  const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
  if (overlong || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000)) return malformedBase + lead;
  offset = start + length;
  return value;
}

void appendDecoded(std::string& out, char32_t c) {
  if (isMalformed(c)) {
    out += static_cast<char>(c - malformedBase);
  } else {
    appendUtf8(out, c);
  }
}

char32_t mapByRanges(char32_t c, std::span<const CaseRange> ranges) {
  const auto next = std::upper_bound(ranges.begin(), ranges.end(), c,
                                     [](char32_t letter, const CaseRange& range) { return letter < range.first; });
  if (next == ranges.begin()) return c;
  const CaseRange& range = *std::prev(next);
  if (c > range.last || (c - range.first) % range.step != 0) return c;
  return static_cast<char32_t>(static_cast<std::int64_t>(c) + range.delta);
}

char upperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

std::string mapCase(std::string_view text, char (*mapAscii)(char), std::span<const CaseRange> ranges) {
  std::string out(text.size(), '\0');
  std::size_t offset = 0;
  for (; offset < text.size() && isAscii(text[offset]); ++offset) out[offset] = mapAscii(text[offset]);
  out.resize(offset);
  while (offset < text.size()) {
    if (isAscii(text[offset])) {
      out += mapAscii(text[offset++]);
    } else {
      appendDecoded(out, mapByRanges(decodeAt(text, offset), ranges));
    }
  }
  return out;
}

// A number that orders code points as their first UTF-16 unit does where that unit decides.
char32_t utf16Rank(char32_t c) { return c >= 0xE000 && c < 0x10000 ? c + 0x110000 : c; }

int order(char32_t a, char32_t b) {
  const char32_t left = utf16Rank(a);
  const char32_t right = utf16Rank(b);
  return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace

std::string upperCase(std::string_view text) { return mapCase(text, upperAscii, caseTable::upperRanges); }
std::string lowerCase(std::string_view text) { return mapCase(text, lowerAscii, caseTable::lowerRanges); }

std::string_view trimBlanks(std::string_view text) { return trimLeftBlanks(trimRightBlanks(text)); }

std::string_view trimLeftBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return text;
}

std::string_view trimRightBlanks(std::string_view text) { return text.substr(0, text.find_last_not_of(' ') + 1); }

int compareBinary(std::string_view a, std::string_view b) {
  const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  if (left == a.end() || right == b.end()) return left != a.end() ? 1 : right != b.end() ? -1 : 0;
  // Back to the start of the character that differs; what stands before is the same in both.
  std::size_t offset = static_cast<std::size_t>(left - a.begin());
  for (std::size_t back = 1; back <= 3 && back <= offset && (isContinuation(*left) || isContinuation(*right)); ++back) {
    if (isContinuation(a[offset - back])) continue;
    offset -= back;
    break;
  }
  std::size_t i = offset;
  std::size_t j = offset;
  while (i < a.size() && j < b.size()) {
    if (const int result = order(decodeAt(a, i), decodeAt(b, j))) return result;
  }
  return i < a.size() ? 1 : j < b.size() ? -1 : 0;
}

int compareCollated(std::string_view a, std::string_view b) {
  a = trimRightBlanks(a);
  b = trimRightBlanks(b);
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (isAscii(a[i]) && isAscii(b[j])) {
      const char left = lowerAscii(a[i++]);
      const char right = lowerAscii(b[j++]);
      if (left != right) return left < right ? -1 : 1;
      continue;
    }
    const char32_t left = mapByRanges(decodeAt(a, i), caseTable::lowerRanges);
    const char32_t right = mapByRanges(decodeAt(b, j), caseTable::lowerRanges);
    const auto foldAscii = [](char32_t c) { return c < 0x80 ? char32_t(lowerAscii(static_cast<char>(c))) : c; };
    if (const int result = order(foldAscii(left), foldAscii(right))) return result;
  }
  return i < a.size() ? 1 : j < b.size() ? -1 : 0;
}

std::string collationKey(std::string_view text) { return lowerCase(trimRightBlanks(text)); }

bool equalNoCase(std::string_view a, std::string_view b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (isAscii(a[i]) != isAscii(b[j])) return false;
    if (isAscii(a[i])) {
      if (lowerAscii(a[i++]) != lowerAscii(b[j++])) return false;
    } else if (mapByRanges(decodeAt(a, i), caseTable::lowerRanges) !=
               mapByRanges(decodeAt(b, j), caseTable::lowerRanges)) {
      return false;
    }
  }
  return i == a.size() && j == b.size();
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t offset = 0; offset < text.size(); ++count) {
    if (isAscii(text[offset])) {
      ++offset;
    } else {
      decodeAt(text, offset);
    }
  }
  return count;
}

std::size_t byteOffset(std::string_view text, std::size_t characters) {
  std::size_t offset = 0;
  while (characters > 0 && offset < text.size()) {
    decodeAt(text, offset);
    --characters;
  }
  return offset;
}

std::string_view leftCharacters(std::string_view text, std::size_t count) {
  return text.substr(0, byteOffset(text, count));
}

std::string replaceAll(std::string_view text, std::string_view find, std::string_view replacement) {
  std::string out;
  if (find.empty()) return out.append(text);
  std::size_t from = 0;
  for (std::size_t at; (at = text.find(find, from)) != std::string_view::npos; from = at + find.size()) {
    out.append(text, from, at - from).append(replacement);
  }
  return out.append(text, from, std::string_view::npos);
}

std::vector<std::string> splitAt(std::string_view text, char delimiter) {
  std::vector<std::string> pieces;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(delimiter, begin), text.size());
    pieces.emplace_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return pieces;
}

std::int32_t numericPrefix(std::string_view text) {
  text = trimLeftBlanks(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  std::int64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    value = value * 10 + (c - '0');
    if (value > most + (negative ? 1 : 0)) throw RuntimeError(errorNumber::overflow, "Overflow");
  }
  return static_cast<std::int32_t>(negative ? -value : value);
}

void appendUtf8(std::string& out, char32_t c) {
  const auto tail = [&out, c](int shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    tail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

char32_t nextCodePoint(std::string_view text, std::size_t& offset) {
  const char32_t c = decodeAt(text, offset);
  return isMalformed(c) ? replacementCharacter : c;
}

}  // namespace qrel
