#include "embedded/sqlite/storageNames.h"

#include "embedded/sqlite/quoting.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr char mark = '\x01';

// Whether a name, but for marks at its end, is one under which SQLite gives the row's number, or one that it doesn't
// take as the name of a query's column.
bool hasOtherMeaning(std::string_view name) {
  while (!name.empty() && name.back() == mark) name.remove_suffix(1);
  for (const char* other : {"rowid", "oid", "_rowid_", "true", "false"})
    if (equalNoCase(name, other)) return true;
  return false;
}

void appendPart(std::string& out, std::string_view part) {
  for (const char c : part) {
    if (c == '.' || c == mark) out += mark;
    out += c;
  }
}

}  // namespace

std::string storageName(std::string_view schema, std::string_view name) {
  std::string out;
  if (equalNoCase(schema.substr(0, 7), "sqlite_")) out = {mark, '_'};
  appendPart(out, schema);
  out += '.';
  appendPart(out, name);
  return out;
}

std::string quoteColumn(std::string_view name) {
  return quoteName(hasOtherMeaning(name) ? std::string(name) + mark : std::string(name));
}

std::string shownColumn(std::string_view stored) {
  const bool marked = !stored.empty() && stored.back() == mark && hasOtherMeaning(stored);
  return std::string(stored.substr(0, stored.size() - (marked ? 1 : 0)));
}

}  // namespace qrel::tsql
