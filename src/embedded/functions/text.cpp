// Text functions.
#include <algorithm>
#include <vector>

#include "embedded/functions/functionCall.h"
#include "embedded/types/like.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::int64_t mostCharacters = sqlite::longestValue;

// A text that is put together. With a limit, in characters, what goes beyond is cut off, as the server does with texts
// of the types that hold 8,000 bytes; without one (0) the text must stay below longestValue.
class BoundedText {
 public:
  explicit BoundedText(std::int64_t limit) : limited_(limit > 0), left_(limit) {}

  // False when nothing more will fit.
  bool append(std::string_view part) {
    if (limited_) {
      part = leftCharacters(part, static_cast<std::size_t>(left_));
      left_ -= static_cast<std::int64_t>(characterCount(part));
    } else if (static_cast<std::int64_t>(text_.size() + part.size()) > sqlite::longestValue) {
      sqlite::failTooLong();
    }
    text_ += part;
    return !limited_ || left_ > 0;
  }
  const std::string& text() const { return text_; }

 private:
  bool limited_;
  std::int64_t left_;
  std::string text_;
};

// Characters `from` (0-based) up to `from + count` of a text; both may lie outside it.
std::string_view characters(std::string_view text, std::int64_t from, std::int64_t count) {
  if (from < 0) {
    count += from;
    from = 0;
  }
  if (count <= 0) return {};
  const std::size_t begin = byteOffset(text, static_cast<std::size_t>(from));
  const std::string_view rest = text.substr(begin);
  return rest.substr(0, byteOffset(rest, static_cast<std::size_t>(std::min(count, mostCharacters))));
}

void failLength(const char* function) {
  throw DataError(errorNumber::badSql,
                  std::string("Invalid length parameter passed to the ") + function + " function.");
}

void len(FunctionCall& call) {
  if (call.isNull(0)) return;
  call.result(static_cast<std::int64_t>(characterCount(trimRightBlanks(call.text(0)))));
}

void datalength(FunctionCall& call) {
  if (call.isNull(0)) return;
  if (call.type(0) == SQLITE_INTEGER) return call.result(std::int64_t{4});
  if (call.type(0) == SQLITE_FLOAT) return call.result(std::int64_t{8});
  const std::string_view text = call.text(0);
  call.result(static_cast<std::int64_t>(call.type(0) == SQLITE_BLOB ? text.size() : characterCount(text)));
}

void charindex(FunctionCall& call) {
  if (call.anyNull()) return;
  const std::string wanted = lowerCase(call.text(0));
  const std::string text = lowerCase(call.text(1));
  const std::int64_t start = call.count() > 2 ? std::max<std::int64_t>(call.integer(2) - 1, 0) : 0;
  const std::size_t found =
      wanted.empty() ? std::string::npos : text.find(wanted, byteOffset(text, static_cast<std::size_t>(start)));
  call.result(found == std::string::npos
                  ? std::int64_t{0}
                  : static_cast<std::int64_t>(characterCount(std::string_view(text).substr(0, found))) + 1);
}

// The first "%" behind the pattern's beginning parts it: where the part in front of it is found first, the rest either
// follows or follows nowhere, since a later place leaves it less text.
void patindex(FunctionCall& call) {
  if (call.anyNull()) return;
  const std::string text = lowerCase(call.text(1));
  const std::string lowered = lowerCase(call.text(0));
  std::string_view pattern = lowered;
  const bool anchored = pattern.empty() || pattern.front() != '%';
  while (!pattern.empty() && pattern.front() == '%') pattern.remove_prefix(1);
  const LikePattern parts(pattern);
  std::int64_t position = 1;
  for (std::size_t offset = 0; offset <= text.size(); ++position) {
    const auto found = parts.match(std::string_view(text).substr(offset));
    if (found == LikePattern::Match::Whole) return call.result(position);
    if (anchored || offset == text.size() || found == LikePattern::Match::HeadOnly) break;
    nextCodePoint(text, offset);
  }
  call.result(std::int64_t{0});
}

void left(FunctionCall& call) {
  if (call.anyNull()) return;
  if (call.integer(1) < 0) failLength("LEFT");
  call.result(characters(call.text(0), 0, call.integer(1)));
}

void right(FunctionCall& call) {
  if (call.anyNull()) return;
  if (call.integer(1) < 0) failLength("RIGHT");
  const std::string_view text = call.text(0);
  const auto count = static_cast<std::int64_t>(characterCount(text));
  call.result(characters(text, std::max<std::int64_t>(count - call.integer(1), 0), call.integer(1)));
}

void substring(FunctionCall& call) {
  if (call.anyNull()) return;
  if (call.integer(2) < 0) failLength("SUBSTRING");
  if (call.type(0) != SQLITE_BLOB) return call.result(characters(call.text(0), call.integer(1) - 1, call.integer(2)));
  const std::string_view bytes = call.text(0);
  const std::int64_t from = std::max<std::int64_t>(call.integer(1) - 1, 0);
  const std::int64_t to =
      std::min<std::int64_t>(call.integer(1) - 1 + call.integer(2), static_cast<std::int64_t>(bytes.size()));
  const std::string_view part =
      to > from ? bytes.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)) : "";
  sqlite3_result_blob64(call.context(), part.data(), part.size(), SQLITE_TRANSIENT);
}

void upper(FunctionCall& call) {
  if (!call.isNull(0)) call.result(upperCase(call.text(0)));
}
void lower(FunctionCall& call) {
  if (!call.isNull(0)) call.result(lowerCase(call.text(0)));
}
void ltrim(FunctionCall& call) {
  if (!call.isNull(0)) call.result(trimLeftBlanks(call.text(0)));
}
void rtrim(FunctionCall& call) {
  if (!call.isNull(0)) call.result(trimRightBlanks(call.text(0)));
}
void trim(FunctionCall& call) {
  if (!call.isNull(0)) call.result(trimBlanks(call.text(0)));
}

void cut(FunctionCall& call) {
  if (call.type(0) != SQLITE_TEXT) return call.resultArgument(0);
  call.result(leftCharacters(call.text(0), static_cast<std::size_t>(call.integer(1))));
}

// STRING_AGG doesn't cut what is too long.
void within(FunctionCall& call) {
  if (call.isNull(0)) return;
  const std::string_view text = call.text(0);
  if (leftCharacters(text, static_cast<std::size_t>(call.integer(1))).size() < text.size())
    throw DataError(errorNumber::badSql,
                    "STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to avoid result "
                    "truncation.",
                    "42000");
  call.resultArgument(0);
}

void repeat(FunctionCall& call, std::int64_t limit, std::string_view text, std::int64_t count) {
  if (count < 0) return;
  const auto size = static_cast<std::int64_t>(text.size());
  if (limit == 0 && size > 0 && count > sqlite::longestValue / size) sqlite::failTooLong();
  // No more than fill the limit; each round doubles what is there.
  const auto letters = static_cast<std::int64_t>(std::max<std::size_t>(characterCount(text), 1));
  const std::int64_t wanted = size == 0 ? 0 : limit == 0 ? count : std::min(count, limit / letters + 1);
  std::string out;
  out.reserve(static_cast<std::size_t>(size * wanted));
  if (wanted > 0) out = text;
  while (static_cast<std::int64_t>(out.size()) < size * wanted)
    out.append(out, 0, std::min(out.size(), static_cast<std::size_t>(size * wanted) - out.size()));
  call.result(limit == 0 ? std::string_view(out) : leftCharacters(out, static_cast<std::size_t>(limit)));
}
void replicate(FunctionCall& call) {
  if (!call.anyNull()) repeat(call, call.integer(0), call.text(1), call.integer(2));
}
void space(FunctionCall& call) {
  if (!call.isNull(1)) repeat(call, call.integer(0), " ", call.integer(1));
}

void reverse(FunctionCall& call) {
  if (call.isNull(0)) return;
  const std::string_view text = call.text(0);
  std::string out(text.size(), ' ');
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t from = offset;
    nextCodePoint(text, offset);
    text.copy(&out[text.size() - offset], offset - from, from);
  }
  call.result(out);
}

void stuff(FunctionCall& call) {
  if (call.isNull(1) || call.isNull(2) || call.isNull(3)) return;
  const std::string_view text = call.text(1);
  const std::int64_t start = call.integer(2);
  const std::int64_t count = call.integer(3);
  const auto size = static_cast<std::int64_t>(characterCount(text));
  if (start < 1 || start > size || count < 0) return;
  const std::int64_t behind = start - 1 + std::min(count, size);
  BoundedText out(call.integer(0));
  if (out.append(characters(text, 0, start - 1)) && out.append(call.text(4)))
    out.append(characters(text, behind, size));
  call.result(out.text());
}

// Where a text begins in another, case not counting, as offsets of the other.
class TextFinder {
 public:
  TextFinder(std::string_view text, std::string_view wanted) : lower_(lowerCase(text)), wanted_(lowerCase(wanted)) {
    if (lower_.size() == text.size()) return;
    // Some letter's counterpart is of another length: each place is looked up.
    for (std::size_t offset = 0; offset < text.size();) {
      const std::size_t from = offset;
      nextCodePoint(text, offset);
      places_.resize(places_.size() + lowerCase(text.substr(from, offset - from)).size(), from);
    }
    places_.push_back(text.size());
  }

  // From this place on; false when there is none. `begin` and `end` are offsets of the text.
  bool next(std::size_t& begin, std::size_t& end) {
    const std::size_t found = wanted_.empty() ? std::string::npos : lower_.find(wanted_, at_);
    if (found == std::string::npos) return false;
    at_ = found + wanted_.size();
    begin = places_.empty() ? found : places_[found];
    end = places_.empty() ? at_ : places_[at_];
    return true;
  }

 private:
  std::string lower_, wanted_;
  std::vector<std::size_t> places_;
  std::size_t at_ = 0;
};

// Finds without case; what stays keeps its own.
void replace(FunctionCall& call) {
  if (call.anyNull()) return;
  const std::string_view text = call.text(1);
  TextFinder finder(text, call.text(2));
  BoundedText out(call.integer(0));
  std::size_t from = 0;
  bool open = true;
  for (std::size_t begin = 0, end = 0; open && finder.next(begin, end); from = end)
    open = out.append(text.substr(from, begin - from)) && out.append(call.text(3));
  if (open) out.append(text.substr(from));
  call.result(out.text());
}

void concat(FunctionCall& call) {
  BoundedText out(call.integer(0));
  for (int i = 1; i < call.count(); ++i)
    if (!call.isNull(i)) out.append(call.text(i));
  call.result(out.text());
}

void concatWithSeparator(FunctionCall& call) {
  BoundedText out(call.integer(0));
  bool first = true;
  for (int i = 2; i < call.count(); ++i) {
    if (call.isNull(i)) continue;
    if (!first && !call.isNull(1)) out.append(call.text(1));
    out.append(call.text(i));
    first = false;
  }
  call.result(out.text());
}

void codeOf(FunctionCall& call) {
  if (call.isNull(0) || call.text(0).empty()) return;
  std::size_t offset = 0;
  call.result(static_cast<std::int64_t>(nextCodePoint(call.text(0), offset)));
}

void ascii(FunctionCall& call) {
  if (call.isNull(0) || call.text(0).empty()) return;
  const std::string bytes = toCodePage(leftCharacters(call.text(0), 1));
  call.result(static_cast<std::int64_t>(static_cast<unsigned char>(bytes.at(0))));
}

void character(FunctionCall& call) {
  if (call.isNull(0) || call.integer(0) < 0 || call.integer(0) > 255) return;
  const char byte = static_cast<char>(call.integer(0));
  call.result(fromCodePage(std::string_view(&byte, 1)));
}

void nationalCharacter(FunctionCall& call) {
  if (call.isNull(0) || call.integer(0) < 0 || call.integer(0) > 0x10FFFF) return;
  std::string out;
  appendUtf8(out, static_cast<char32_t>(call.integer(0)));
  call.result(out);
}

void quotename(FunctionCall& call) {
  if (call.isNull(0) || characterCount(call.text(0)) > 128) return;
  const std::string_view mark = call.count() > 1 ? call.text(1) : "[";
  if (mark.empty()) return;
  char opening = mark.front();
  char closing = opening;
  constexpr std::string_view pairs = "[](){}<>";
  if (const std::size_t at = pairs.find(opening); at != std::string_view::npos) {
    opening = pairs[at / 2 * 2];
    closing = pairs[at / 2 * 2 + 1];
  } else if (opening != '\'' && opening != '"' && opening != '`') {
    return;
  }
  call.result(opening + replaceAll(call.text(0), std::string(1, closing), std::string(2, closing)) + closing);
}

void str(FunctionCall& call) {
  if (call.anyNull()) return;
  const std::int64_t length = call.count() > 1 ? call.integer(1) : 10;
  const std::int64_t decimals = call.count() > 2 ? std::clamp<std::int64_t>(call.integer(2), 0, 16) : 0;
  if (length < 1 || length > 8000) return;
  char buffer[400];
  std::snprintf(buffer, sizeof buffer, "%.*f", static_cast<int>(decimals), call.real(0));
  std::string text = buffer;
  const auto width = static_cast<std::size_t>(length);
  const std::size_t point = std::min(text.find('.'), text.size());
  if (point > width)
    text.assign(width, '*');
  else if (text.size() > width)
    text.resize(point == width - 1 ? point : width);
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  call.result(text);
}

void like(FunctionCall& call) {
  if (call.anyNull()) return;
  call.result(
      std::int64_t{matchesLike(call.text(1), call.text(0), call.count() > 2 ? call.text(2) : std::string_view())});
}

using enum Function::Trait;

constexpr Function textTable[] = {
    {"len", 1, 1, DataType::Integer, callFunction<len>, Pure},
    {"datalength", 1, 1, DataType::Integer, callFunction<datalength>, Pure},
    {"charindex", 2, 3, DataType::Integer, callFunction<charindex>, Pure},
    {"patindex", 2, 2, DataType::Integer, callFunction<patindex>, Pure},
    {"left", 2, 2, DataType::Text, callFunction<left>, Pure, MadeWidth::AsFirst},
    {"right", 2, 2, DataType::Text, callFunction<right>, Pure, MadeWidth::AsFirst},
    {"substring", 3, 3, DataType::Text, callFunction<substring>, Pure, MadeWidth::AsFirst},
    {"upper", 1, 1, DataType::Text, callFunction<upper>, Pure, MadeWidth::AsFirst},
    {"lower", 1, 1, DataType::Text, callFunction<lower>, Pure, MadeWidth::AsFirst},
    {"ltrim", 1, 1, DataType::Text, callFunction<ltrim>, Pure, MadeWidth::AsFirst},
    {"rtrim", 1, 1, DataType::Text, callFunction<rtrim>, Pure, MadeWidth::AsFirst},
    {"trim", 1, 1, DataType::Text, callFunction<trim>, Pure, MadeWidth::AsFirst},
    {"cut", 2, 2, DataType::Empty, callFunction<cut>, Pure | Inside},
    {"within", 2, 2, DataType::Empty, callFunction<within>, Pure | Inside},
    {"replicate", 2, 2, DataType::Text, callFunction<replicate>, Pure | Limited, MadeWidth::AsFirst},
    {"space", 1, 1, DataType::Text, callFunction<space>, Pure | Limited, MadeWidth::AnyPlain},
    {"reverse", 1, 1, DataType::Text, callFunction<reverse>, Pure, MadeWidth::AsFirst},
    {"stuff", 4, 4, DataType::Text, callFunction<stuff>, Pure | Limited, MadeWidth::AsFirstOrLast},
    {"replace", 3, 3, DataType::Text, callFunction<replace>, Pure | Limited, MadeWidth::AsAll},
    {"concat", 2, manyArguments, DataType::Text, callFunction<concat>, Pure | Limited, MadeWidth::AsAll},
    {"concat_ws", 2, manyArguments, DataType::Text, callFunction<concatWithSeparator>, Pure | Limited,
     MadeWidth::AsAll},
    {"unicode", 1, 1, DataType::Integer, callFunction<codeOf>, Pure},
    {"ascii", 1, 1, DataType::Integer, callFunction<ascii>, Pure},
    {"char", 1, 1, DataType::Text, callFunction<character>, Pure},
    {"nchar", 1, 1, DataType::Text, callFunction<nationalCharacter>, Pure},
    {"quotename", 1, 2, DataType::Text, callFunction<quotename>, Pure},
    {"str", 1, 3, DataType::Text, callFunction<str>, Pure},
    {"like", 2, 3, DataType::Empty, callFunction<like>, Pure | Inside},
};

}  // namespace

std::span<const Function> textFunctions() { return textTable; }

}  // namespace qrel::tsql
