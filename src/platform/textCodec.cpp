// The encodings of files: UTF-8, UTF-16 and Windows-1252.
#include <array>
#include <cstdint>
#include <utility>

#include "platform/text.h"

namespace qrel {
namespace {

// Windows-1252 from 0x80 to 0x9F; the five bytes that it leaves free stand for the control characters of that number.
constexpr std::array<char16_t, 32> codePageHigh = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The text with each malformed byte replaced; `malformed` tells whether there was one.
std::string validUtf8(std::string_view bytes, bool& malformed) {
  malformed = false;
  std::string out;
  std::size_t copied = 0;
  for (std::size_t offset = 0; offset < bytes.size();) {
    if (static_cast<unsigned char>(bytes[offset]) < 0x80) {
      ++offset;
      continue;
    }
    const std::size_t start = offset;
    if (nextCodePoint(bytes, offset) != replacementCharacter || offset - start > 1) continue;
    malformed = true;
    out.append(bytes, copied, start - copied);
    appendUtf8(out, replacementCharacter);
    copied = offset;
  }
  return out.append(bytes, copied, std::string_view::npos);
}

std::string decodeUtf16(std::string_view bytes, bool bigEndian) {
  std::string out;
  out.reserve(bytes.size());
  const auto unitAt = [&](std::size_t i) -> char32_t {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    return bigEndian ? first * 256u + second : second * 256u + first;
  };
  std::size_t i = 0;
  for (; i + 1 < bytes.size(); i += 2) {
    char32_t c = unitAt(i);
    if (c >= 0xD800 && c < 0xE000) {
      const char32_t low = c < 0xDC00 && i + 3 < bytes.size() ? unitAt(i + 2) : 0;
      if (low >= 0xDC00 && low < 0xE000) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      } else {
        c = replacementCharacter;
      }
    }
    appendUtf8(out, c);
  }
  if (i < bytes.size()) appendUtf8(out, replacementCharacter);
  return out;
}

}  // namespace

std::string decodeText(std::string_view bytes, std::string* encodingName) {
  const auto result = [encodingName](const char* name, std::string text) {
    if (encodingName) *encodingName = name;
    return text;
  };
  if (bytes.starts_with("\xFF\xFE")) return result("UTF-16LE", decodeUtf16(bytes.substr(2), false));
  if (bytes.starts_with("\xFE\xFF")) return result("UTF-16BE", decodeUtf16(bytes.substr(2), true));
  const bool marked = bytes.starts_with("\xEF\xBB\xBF");
  bool malformed = false;
  std::string text = validUtf8(marked ? bytes.substr(3) : bytes, malformed);
  if (malformed && !marked) return result("Windows-1252", fromCodePage(bytes));
  return result("UTF-8", std::move(text));
}

std::string toCodePage(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  for (std::size_t offset = 0; offset < utf8.size();) {
    const char32_t c = nextCodePoint(utf8, offset);
    char byte = '?';
    if (c < 0x80 || (c >= 0xA0 && c < 0x100)) {
      byte = static_cast<char>(c);
    } else {
      for (std::size_t i = 0; i < codePageHigh.size(); ++i) {
        if (codePageHigh[i] == c) byte = static_cast<char>(0x80 + i);
      }
    }
    out += byte;
  }
  return out;
}

std::string fromCodePage(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (const char byte : bytes) {
    const auto c = static_cast<unsigned char>(byte);
    appendUtf8(out, c >= 0x80 && c < 0xA0 ? codePageHigh[c - 0x80u] : c);
  }
  return out;
}

}  // namespace qrel
