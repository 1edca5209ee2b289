// Positions of a text from 1, for the plain versions of procedures that the tests hold the fast ones against.
#pragma once

#include <random>
#include <string>
#include <string_view>

namespace qrel::basic {

// Position of `find` at or after `start`; 0 when there is none or `start` lies behind the text.
inline long inStr(long start, std::string_view text, std::string_view find) {
  if (start > static_cast<long>(text.size())) return 0;
  const auto hit = text.find(find, static_cast<std::size_t>(start - 1));
  return hit == std::string_view::npos ? 0 : static_cast<long>(hit) + 1;
}

inline std::string left(std::string_view text, long count) {
  return std::string(text.substr(0, static_cast<std::size_t>(count)));
}

inline std::string mid(std::string_view text, long start) {
  return start > static_cast<long>(text.size()) ? std::string()
                                                : std::string(text.substr(static_cast<std::size_t>(start - 1)));
}

inline std::string mid(std::string_view text, long start, long count) { return left(mid(text, start), count); }

inline std::string randomText(std::mt19937& random, std::string_view letters, std::size_t longest) {
  std::string text(random() % (longest + 1), ' ');
  for (char& c : text) c = letters[random() % letters.size()];
  return text;
}

}  // namespace qrel::basic
