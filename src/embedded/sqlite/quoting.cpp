#include "embedded/sqlite/quoting.h"

namespace qrel::tsql {

namespace {

std::string quoted(std::string_view text, char mark) {
  std::string out;
  out.reserve(text.size() + 2);
  out += mark;
  for (const char c : text) {
    if (c == mark) out += mark;
    out += c;
  }
  return out + mark;
}

}  // namespace

std::string quoteName(std::string_view name) { return quoted(name, '"'); }

std::string quoteText(std::string_view text) {
  if (text.find('\0') == std::string_view::npos) return quoted(text, '\'');
  // SQL text ends at a zero byte: such a literal travels as bytes.
  constexpr std::string_view digits = "0123456789abcdef";
  std::string out = "cast(x'";
  for (const char c : text) {
    out += digits[static_cast<unsigned char>(c) >> 4];
    out += digits[static_cast<unsigned char>(c) & 15];
  }
  return out + "' as text)";
}

}  // namespace qrel::tsql
