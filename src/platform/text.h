// Text as the whole program sees it: UTF-8 in std::string, blanks are U+0020 only, case folding one letter to one
// letter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qrel {

// What stands for bytes that are no character.
inline constexpr char32_t replacementCharacter = 0xFFFD;

// Upper and lower case, letter by letter (Latin, Greek, Cyrillic, ...); letters without a single counterpart stay.
// Bytes that are not UTF-8 are copied unchanged.
std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);

// Removes blanks (U+0020 only, no tabs or line ends) at both ends, at the left, at the right.
std::string_view trimBlanks(std::string_view text);
std::string_view trimLeftBlanks(std::string_view text);
std::string_view trimRightBlanks(std::string_view text);

// Orders two texts by UTF-16 code units: negative, 0 or positive. This is the binary order of the program.
int compareBinary(std::string_view a, std::string_view b);

// Orders two texts without case, trailing blanks not counting, as a server of default collation does.
int compareCollated(std::string_view a, std::string_view b);
// The text under which texts that compareCollated calls equal are the same.
std::string collationKey(std::string_view text);
bool equalNoCase(std::string_view a, std::string_view b);

// Letters and digits of ASCII alone, whatever the locale.
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

// Number of characters (code points), and the byte offset of the character with 0-based index `characters`
// (the size of the text when it has fewer).
std::size_t characterCount(std::string_view text);
std::size_t byteOffset(std::string_view text, std::size_t characters);
// The first `count` characters.
std::string_view leftCharacters(std::string_view text, std::size_t count);

// Every occurrence of `find` replaced, left to right, going on behind the insertion. An empty `find` changes nothing.
std::string replaceAll(std::string_view text, std::string_view find, std::string_view replacement);

// The pieces between the delimiters, empty ones too: one more than there are delimiters.
std::vector<std::string> splitAt(std::string_view text, char delimiter);

// The integer that a text starts with, after leading blanks: optional sign and digits; 0 when there is none.
// Beyond 32 bits it raises error 6.
std::int32_t numericPrefix(std::string_view text);

// Appends one code point as UTF-8.
void appendUtf8(std::string& out, char32_t codePoint);
// Reads the code point at `offset` and moves behind it; a malformed byte reads as U+FFFD and is one byte long.
char32_t nextCodePoint(std::string_view text, std::size_t& offset);

// What a text file's bytes mean: UTF-8 or UTF-16 with a byte order mark, UTF-8 without one where the bytes are valid
// UTF-8, otherwise Windows-1252. `encodingName` (may be null) receives "UTF-8", "UTF-16LE", "UTF-16BE" or
// "Windows-1252". An odd last byte of UTF-16 reads as U+FFFD.
std::string decodeText(std::string_view bytes, std::string* encodingName = nullptr);

// The 8-bit code page of profile files and side files, Windows-1252; characters it lacks become '?'.
std::string toCodePage(std::string_view utf8);
std::string fromCodePage(std::string_view bytes);

}  // namespace qrel
