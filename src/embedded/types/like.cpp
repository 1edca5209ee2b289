#include "embedded/types/like.h"

#include <optional>
#include <string>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

class Matcher {
 public:
  Matcher(std::string_view text, std::string_view pattern, char32_t escape)
      : text_(text), pattern_(pattern), escape_(escape) {}

  // The last "%" seen is the only one that needs to be tried again.
  bool run() {
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t starPattern = std::string_view::npos;
    std::size_t starText = 0;
    while (in < text_.size() || at < pattern_.size()) {
      if (at < pattern_.size() && pattern_[at] == '%' && escape_ != U'%') {
        starPattern = ++at;
        starText = in;
        continue;
      }
      std::size_t nextPattern = at;
      std::size_t nextText = in;
      if (at < pattern_.size() && in < text_.size() && matchOne(nextPattern, nextText)) {
        at = nextPattern;
        in = nextText;
        continue;
      }
      // Trailing blanks of the text don't count against the pattern's end.
      if (at == pattern_.size() && text_.find_first_not_of(' ', in) == std::string_view::npos) return true;
      if (starPattern == std::string_view::npos || starText >= text_.size()) return false;
      nextCodePoint(text_, starText);
      at = starPattern;
      in = starText;
    }
    return true;
  }

  // Matches a pattern without "%" against the text's beginning; gives the offset behind it.
  std::optional<std::size_t> runHead() {
    std::size_t at = 0;
    std::size_t in = 0;
    while (at < pattern_.size())
      if (in == text_.size() || !matchOne(at, in)) return {};
    return in;
  }

 private:
  bool matchOne(std::size_t& at, std::size_t& in) const {
    const char32_t wanted = nextCodePoint(pattern_, at);
    const char32_t found = nextCodePoint(text_, in);
    if (wanted == escape_ && escape_ != 0 && at < pattern_.size()) return nextCodePoint(pattern_, at) == found;
    if (wanted == U'_') return true;
    if (wanted == U'[') return matchSet(at, found);
    return wanted == found;
  }

  // Reads "a-z]" behind its "[". A set that isn't closed matches nothing.
  bool matchSet(std::size_t& at, char32_t found) const {
    bool negated = false;
    bool inside = false;
    bool first = true;
    if (at < pattern_.size() && pattern_[at] == '^') {
      negated = true;
      ++at;
    }
    while (at < pattern_.size()) {
      char32_t low = nextCodePoint(pattern_, at);
      if (low == U']' && !first) return inside != negated;
      first = false;
      if (low == escape_ && escape_ != 0 && at < pattern_.size()) low = nextCodePoint(pattern_, at);
      char32_t high = low;
      if (at + 1 < pattern_.size() && pattern_[at] == '-' && pattern_[at + 1] != ']') {
        ++at;
        high = nextCodePoint(pattern_, at);
      }
      inside = inside || (found >= low && found <= high);
    }
    return false;
  }

  std::string_view text_;
  std::string_view pattern_;
  char32_t escape_;
};

}  // namespace

bool matchesLike(std::string_view text, std::string_view pattern, std::string_view escape) {
  std::size_t offset = 0;
  const std::string lowerEscape = lowerCase(escape);
  const char32_t mark = lowerEscape.empty() ? U'\0' : nextCodePoint(lowerEscape, offset);
  const std::string lowerText = lowerCase(text);
  const std::string lowerPattern = lowerCase(pattern);
  return Matcher(lowerText, lowerPattern, mark).run();
}

LikePattern::LikePattern(std::string_view pattern) : head_(pattern) {
  bool inSet = false;
  std::size_t setBegin = 0;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (!inSet && pattern[i] == '[') {
      inSet = true;
      setBegin = i + (i + 1 < pattern.size() && pattern[i + 1] == '^' ? 2 : 1);
    } else if (inSet && pattern[i] == ']' && i > setBegin) {
      inSet = false;
    } else if (!inSet && pattern[i] == '%') {
      head_ = pattern.substr(0, i);
      rest_ = pattern.substr(i);
      return;
    }
  }
}

LikePattern::Match LikePattern::match(std::string_view text) const {
  if (rest_.empty()) return Matcher(text, head_, 0).run() ? Match::Whole : Match::None;
  const auto behind = Matcher(text, head_, 0).runHead();
  if (!behind) return Match::None;
  return Matcher(text.substr(*behind), rest_, 0).run() ? Match::Whole : Match::HeadOnly;
}

}  // namespace qrel::tsql
