// Text functions.
#include <algorithm>
#include <vector>

#include "embedded/functions/functionCall.h"
#include "embedded/types/like.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::int64_t mostCharacters = 64 * 1024 * 1024;

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

void patindex(FunctionCall& call) {
  if (call.anyNull()) return;
  const std::string_view text = call.text(1);
  std::string pattern(call.text(0));
  const bool anchored = pattern.empty() || pattern.front() != '%';
  if (!anchored) pattern.erase(0, 1);
  std::int64_t position = 1;
  for (std::size_t offset = 0; offset <= text.size(); ++position) {
    if (matchesLike(text.substr(offset), pattern)) return call.result(position);
    if (anchored || offset == text.size()) break;
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

void repeat(FunctionCall& call, std::string_view text, std::int64_t count) {
  if (count < 0) return;
  if (static_cast<std::int64_t>(text.size()) * std::min(count, mostCharacters) >= mostCharacters)
    throw DataError(errorNumber::badSql, "The text is too long.");
  std::string out;
  out.reserve(text.size() * static_cast<std::size_t>(count));
  for (std::int64_t i = 0; i < count; ++i) out += text;
  call.result(out);
}
void replicate(FunctionCall& call) {
  if (!call.anyNull()) repeat(call, call.text(0), call.integer(1));
}
void space(FunctionCall& call) {
  if (!call.isNull(0)) repeat(call, " ", call.integer(0));
}

void reverse(FunctionCall& call) {
  if (call.isNull(0)) return;
  const std::string_view text = call.text(0);
  std::string out;
  out.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t from = offset;
    nextCodePoint(text, offset);
    out.insert(0, text.substr(from, offset - from));
  }
  call.result(out);
}

void stuff(FunctionCall& call) {
  if (call.isNull(0) || call.isNull(1) || call.isNull(2)) return;
  const std::string_view text = call.text(0);
  const std::int64_t start = call.integer(1);
  const std::int64_t count = call.integer(2);
  const auto size = static_cast<std::int64_t>(characterCount(text));
  if (start < 1 || start > size || count < 0) return;
  std::string out(characters(text, 0, start - 1));
  out += call.text(3);
  out += characters(text, start - 1 + count, size);
  call.result(out);
}

// Finds without case; what stays keeps its own.
void replace(FunctionCall& call) {
  if (call.anyNull()) return;
  const std::string_view text = call.text(0);
  const std::string lowerText = lowerCase(text);
  const std::string wanted = lowerCase(call.text(1));
  if (wanted.empty() || lowerText.size() != text.size())
    return call.result(replaceAll(text, call.text(1), call.text(2)));
  std::string out;
  std::size_t from = 0;
  for (std::size_t at = 0; (at = lowerText.find(wanted, from)) != std::string::npos; from = at + wanted.size()) {
    out += text.substr(from, at - from);
    out += call.text(2);
  }
  out += text.substr(from);
  call.result(out);
}

void concat(FunctionCall& call) {
  std::string out;
  for (int i = 0; i < call.count(); ++i)
    if (!call.isNull(i)) out += call.text(i);
  call.result(out);
}

void concatWithSeparator(FunctionCall& call) {
  std::string out;
  bool first = true;
  for (int i = 1; i < call.count(); ++i) {
    if (call.isNull(i)) continue;
    if (!first) out += call.text(0);
    out += call.text(i);
    first = false;
  }
  call.result(out);
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

}  // namespace

void addTextFunctions(FunctionSurroundings& to) {
  addFunction<len>(to, "len", 1, true);
  addFunction<datalength>(to, "datalength", 1, true);
  addFunction<charindex>(to, "charindex", -1, true);
  addFunction<patindex>(to, "patindex", 2, true);
  addFunction<left>(to, "left", 2, true);
  addFunction<right>(to, "right", 2, true);
  addFunction<substring>(to, "substring", 3, true);
  addFunction<upper>(to, "upper", 1, true);
  addFunction<lower>(to, "lower", 1, true);
  addFunction<ltrim>(to, "ltrim", 1, true);
  addFunction<rtrim>(to, "rtrim", 1, true);
  addFunction<trim>(to, "trim", 1, true);
  addFunction<replicate>(to, "replicate", 2, true);
  addFunction<space>(to, "space", 1, true);
  addFunction<reverse>(to, "reverse", 1, true);
  addFunction<stuff>(to, "stuff", 4, true);
  addFunction<replace>(to, "replace", 3, true);
  addFunction<concat>(to, "concat", -1, true);
  addFunction<concatWithSeparator>(to, "concat_ws", -1, true);
  addFunction<codeOf>(to, "unicode", 1, true);
  addFunction<ascii>(to, "ascii", 1, true);
  addFunction<character>(to, "char", 1, true);
  addFunction<nationalCharacter>(to, "nchar", 1, true);
  addFunction<quotename>(to, "quotename", -1, true);
  addFunction<str>(to, "str", -1, true);
  addFunction<like>(to, "like", -1, true);
}

}  // namespace qrel::tsql
