#include "db/SqlText.h"

#include <algorithm>

#include "platform/error.h"

namespace qrel {

namespace {

constexpr char noCharacter = '\0';

bool isNamePart(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '#' || c == '@' || c == '$';
}

std::string unclosed(std::string_view text) {
  return "Unclosed quotation mark after the character string '" + std::string(text) + "'.";
}

// What the server says of a value that ends at `end`, before its text does.
std::string refusalOf(std::string_view value, std::size_t end) {
  if (value[end] == noCharacter) return unclosed(value.substr(0, end));
  const std::size_t begin = value.find_first_not_of(" \t\r\n'", end + 1);
  if (begin == std::string_view::npos) return unclosed(value);
  std::size_t size = 0;
  while (begin + size < value.size() && isNamePart(value[begin + size])) ++size;
  return "Incorrect syntax near '" + std::string(value.substr(begin, std::max<std::size_t>(size, 1))) + "'.";
}

// Where a text ends that stands before `closing`; npos when it is whole. A doubled closing character would go on, but
// as another text than this one.
std::size_t endOf(std::string_view value, char closing) {
  const char ends[] = {closing, noCharacter};
  return value.find_first_of(std::string_view(ends, 2));
}

// The end of the parts "[a]" or "[a].[b]"; npos when they are all of the text.
std::size_t endOfParts(std::string_view name) {
  std::size_t at = 0;
  for (int part = 0; part < 2; ++part) {
    if (at >= name.size() || name[at] != '[') return at - 1;  // a part is wanted
    const std::size_t close = at + 1 + std::min(endOf(name.substr(at + 1), ']'), name.size() - at - 1);
    if (close >= name.size()) return name.size() - 1;
    if (name[close] == noCharacter) return close;
    if (close + 1 == name.size()) return std::string_view::npos;
    if (name[close + 1] != '.') return close;
    at = close + 2;
  }
  return at - 1;
}

// The end of 'a','b'; npos when it is all of the text. Doubled quotes inside an entry belong to it.
std::size_t endOfList(std::string_view list) {
  bool inside = false, wanted = true;  // an entry is wanted next
  for (std::size_t i = 0; i < list.size(); ++i) {
    const char c = list[i];
    if (c == noCharacter) return i;
    if (inside) {
      if (c == '\'' && list.substr(i + 1).starts_with('\''))
        ++i;
      else if (c == '\'')
        inside = false;
      continue;
    }
    const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
    if (blank) continue;
    if (c != (wanted ? '\'' : ',')) return i == 0 ? 0 : i - 1;
    inside = wanted;
    wanted = !wanted;
  }
  return inside || wanted ? list.size() - 1 : std::string_view::npos;
}

}  // namespace

bool FitsInBrackets(std::string_view strName) {
  return !strName.starts_with('[') && endOf(strName, ']') == std::string_view::npos;
}

void SqlText::spoil(std::string strDescription) {
  if (strSpoiled_.empty()) strSpoiled_ = std::move(strDescription);
}

SqlText& SqlText::operator<<(long number) {
  text_ += std::to_string(number);
  return *this;
}

SqlText& SqlText::operator<<(const SqlValue& value) {
  std::string_view open, close;
  std::size_t end = std::string_view::npos;
  switch (value.kind) {
    case SqlValue::Kind::Quotes:
      open = close = "'";
      end = endOf(value.text, '\'');
      break;
    case SqlValue::Kind::Name:
      if (value.text.empty()) return *this;
      if (value.text.starts_with('[')) {
        end = endOfParts(value.text);
        break;
      }
      [[fallthrough]];
    case SqlValue::Kind::Brackets:
      open = "[";
      close = "]";
      end = endOf(value.text, ']');
      break;
    case SqlValue::Kind::List:
      end = value.text.empty() ? end : endOfList(value.text);
      break;
  }
  text_.append(open).append(value.text).append(close);
  if (end != std::string_view::npos) spoil(refusalOf(value.text, end));
  return *this;
}

SqlText& SqlText::operator<<(const SqlText& other) {
  text_ += other.text_;
  if (!other.strSpoiled_.empty()) spoil(other.strSpoiled_);
  return *this;
}

SqlText SqlText::ofExec(std::string strWrapped, std::string_view strDb) {
  SqlText sql;
  sql.text_ = std::move(strWrapped);
  const bool bracketed = strDb.starts_with('[') && endOfParts(strDb) == std::string_view::npos &&
                         strDb.find('\'') == std::string_view::npos && strDb.find("].[") == std::string_view::npos;
  const auto odd = std::find_if_not(strDb.begin(), strDb.end(), isNamePart);
  if (!bracketed && odd != strDb.end()) sql.spoil("Incorrect syntax near '" + std::string(1, *odd) + "'.");
  return sql;
}

const std::string& SqlText::text() const {
  if (!strSpoiled_.empty()) throw DataError(errorNumber::badSql, strSpoiled_, "42000", text_);
  return text_;
}

}  // namespace qrel
