#include "embedded/sqlite/statementCache.h"

#include <cctype>
#include <charconv>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::size_t mostEntries = 32;
// Long lists of literals are seldom asked for twice, and SQLite binds only so many.
constexpr std::size_t mostLiterals = 100;

bool mustKeepLiterals(std::string_view sql) {
  const std::string upper = upperCase(sql);
  for (const char* word : {"GROUP BY", "UNION", "EXCEPT", "INTERSECT", " OVER"})
    if (upper.find(word) != std::string::npos) return true;
  for (std::size_t at = 0; (at = sql.find('*', at)) != std::string_view::npos; ++at)
    if (at == 0 || sql[at - 1] != '(') return true;
  return false;
}

// Behind the quoted text or name that begins at `at`; doubled quotes belong to it.
std::size_t behindQuoted(std::string_view sql, std::size_t at) {
  const char quote = sql[at];
  for (++at; at < sql.size(); ++at) {
    if (sql[at] != quote) continue;
    if (at + 1 >= sql.size() || sql[at + 1] != quote) return at + 1;
    ++at;
  }
  return at;
}

bool isWordPart(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '.'; }

// The end of a whole number of up to 18 digits that begins at `at`, or `at` itself.
std::size_t behindNumber(std::string_view sql, std::size_t at) {
  std::size_t end = at;
  while (end < sql.size() && std::isdigit(static_cast<unsigned char>(sql[end])) != 0) ++end;
  const bool whole = end > at && end - at <= 18 && (end == sql.size() || !isWordPart(sql[end]));
  return whole ? end : at;
}

}  // namespace

LiftedQuery liftLiterals(std::string_view sql) {
  LiftedQuery lifted;
  if (mustKeepLiterals(sql)) {
    lifted.sql = sql;
    return lifted;
  }
  lifted.reusable = true;
  lifted.sql.reserve(sql.size());
  char before = ' ';  // the last character that isn't a blank
  const auto lift = [&](Value value) {
    lifted.literals.push_back(std::move(value));
    lifted.sql += ":q" + std::to_string(lifted.literals.size());
  };
  for (std::size_t at = 0; at < sql.size();) {
    const char c = sql[at];
    std::size_t end = at + 1;
    if (c == '\'' && before != 'x' && before != 'X') {  // x'..' is a blob
      end = behindQuoted(sql, at);
      lift(Value::ofText(replaceAll(sql.substr(at + 1, end - at - 2), "''", "'")));
    } else if (before == '=' && (end = behindNumber(sql, at)) > at) {
      std::int64_t number = 0;
      std::from_chars(sql.data() + at, sql.data() + end, number);
      lift(Value::ofInteger(number));
    } else {
      end = c == '"' || c == '\'' ? behindQuoted(sql, at) : at + 1;
      lifted.sql += sql.substr(at, end - at);
    }
    if (lifted.literals.size() > mostLiterals) return {std::string(sql), {}, false};
    if (sql[end - 1] != ' ') before = sql[end - 1];
    at = end;
  }
  return lifted;
}

sqlite::Statement StatementCache::take(sqlite::Database& database, const std::string& sql) {
  for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
    if (entry->sql != sql) continue;
    sqlite::Statement statement = std::move(entry->statement);
    entries_.erase(entry);
    return statement;
  }
  return sqlite::Statement(database, sql);
}

void StatementCache::giveBack(const std::string& sql, sqlite::Statement statement) {
  if (!statement) return;
  statement.reset();
  sqlite3_clear_bindings(statement.get());
  entries_.push_front({sql, std::move(statement)});
  if (entries_.size() > mostEntries) entries_.pop_back();
}

}  // namespace qrel::tsql
