#include "tests/support/tds/bytes.h"

#include "platform/text.h"

namespace qrel::tds {

void appendNumber(std::string& out, std::uint64_t number, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i) out += static_cast<char>(number >> 8 * i & 0xFF);
}

std::uint64_t numberOf(std::string_view bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i > 0; --i) number = number << 8 | static_cast<unsigned char>(bytes[i - 1]);
  return number;
}

std::string toUtf16(std::string_view utf8) {
  std::string out;
  out.reserve(2 * utf8.size());
  for (std::size_t at = 0; at < utf8.size();) {
    const char32_t point = nextCodePoint(utf8, at);
    if (point < 0x10000) {
      appendNumber(out, point, 2);
    } else {
      appendNumber(out, 0xD800 + ((point - 0x10000) >> 10), 2);
      appendNumber(out, 0xDC00 + ((point - 0x10000) & 0x3FF), 2);
    }
  }
  return out;
}

std::string fromUtf16(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    auto point = static_cast<char32_t>(numberOf(bytes.substr(at, 2)));
    if (point >= 0xD800 && point < 0xDC00 && at + 3 < bytes.size()) {
      const auto low = static_cast<char32_t>(numberOf(bytes.substr(at + 2, 2)));
      if (low >= 0xDC00 && low < 0xE000) {
        point = 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00);
        at += 2;
      }
    }
    appendUtf8(out, point);
  }
  return out;
}

}  // namespace qrel::tds
