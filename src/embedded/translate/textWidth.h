// How long a text may be by its type: the server cuts what doesn't fit.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "embedded/types/expressionType.h"

namespace qrel::tsql {

// What is known of a text's length before the query runs. Plain texts (char, varchar) hold 8,000 characters, National
// ones (nchar, nvarchar) 4,000, Long ones (max, text, ntext, xml) what longestValue allows. `most`: characters that a
// Plain or National one has at most; more than it holds where it hasn't been cut yet.
struct TextWidth {
  enum class Kind : std::uint8_t { Unknown, Plain, National, Long };
  Kind kind = Kind::Unknown;
  std::int64_t most = 0;

  static TextWidth ofType(const TypeRef& type);
  static TextWidth ofLiteral(std::string_view text, bool national);
  // 0 where nothing is cut.
  std::int64_t limit() const { return kind == Kind::Plain ? 8000 : kind == Kind::National ? 4000 : 0; }
  bool exceeds() const { return limit() > 0 && most > limit(); }
  // The same kind, as long as it can be.
  TextWidth full() const { return {kind, limit()}; }
};

// The type of a text of this width; unknown where the width is.
ExpressionType typeOf(const TextWidth& width);

// Of a text that may be either, and of one that is both behind each other.
TextWidth either(const TextWidth& a, const TextWidth& b);
TextWidth joined(const TextWidth& a, const TextWidth& b);

// The SQL of a text, cut where it may be too long; `width` is then what is left.
std::string cutToWidth(std::string sql, TextWidth& width);

}  // namespace qrel::tsql
