// LIKE patterns: %, _, [a-z], [^a-z] and an escape character, without case.
#pragma once

#include <cstdint>
#include <string_view>

namespace qrel::tsql {

// `escape` is one character or empty.
bool matchesLike(std::string_view text, std::string_view pattern, std::string_view escape = {});

// A pattern, in lower case and without escape, that is tried at many places of one text: what stands in front of its
// first "%", and what follows from there on.
class LikePattern {
 public:
  enum class Match : std::uint8_t { None, HeadOnly, Whole };

  explicit LikePattern(std::string_view pattern);
  // Of a text in lower case, from its beginning to its end. HeadOnly: the part in front of "%" fits, what is behind it
  // doesn't.
  Match match(std::string_view text) const;

 private:
  std::string_view head_, rest_;
};

}  // namespace qrel::tsql
