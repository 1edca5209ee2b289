#include "embedded/types/collations.h"

#include <array>
#include <optional>

#include "embedded/types/dates.h"
#include "platform/data/value.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

std::string_view view(int size, const void* data) {
  return size == 0 ? std::string_view()
                   : std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(size));
}

int compareText(void*, int sizeA, const void* a, int sizeB, const void* b) {
  return compareCollated(view(sizeA, a), view(sizeB, b));
}

int compareDecimal(void*, int sizeA, const void* a, int sizeB, const void* b) {
  return compareDecimals(view(sizeA, a), view(sizeB, b));
}

// Stored dates of one column compare as they stand; a literal in another form is read first.
std::optional<std::int64_t> dateKey(std::string_view text) {
  const auto moment = readDate(text);
  if (!moment) return {};
  return moment->day * unitsPerDay + moment->units -
         std::int64_t{moment->offsetMinutes.value_or(0)} * 60 * unitsPerSecond;
}

int compareDate(void*, int sizeA, const void* a, int sizeB, const void* b) {
  const std::string_view left = view(sizeA, a);
  const std::string_view right = view(sizeB, b);
  if (left == right) return 0;
  const auto leftKey = dateKey(left);
  const auto rightKey = dateKey(right);
  if (leftKey && rightKey) return *leftKey < *rightKey ? -1 : *leftKey > *rightKey ? 1 : 0;
  if (leftKey.has_value() != rightKey.has_value()) return leftKey ? -1 : 1;
  return left.compare(right);
}

// The server compares GUIDs by their last group first; the first three groups byte by byte from the right.
int compareGuid(void*, int sizeA, const void* a, int sizeB, const void* b) {
  constexpr std::array<int, 16> order = {24, 26, 28, 30, 32, 34, 19, 21, 16, 14, 11, 9, 6, 4, 2, 0};
  std::string_view left = view(sizeA, a);
  std::string_view right = view(sizeB, b);
  if (!left.empty() && left.front() == '{') left = left.substr(1);
  if (!right.empty() && right.front() == '{') right = right.substr(1);
  if (left.size() < 36 || right.size() < 36) return compareCollated(left, right);
  const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? c - 32 : c; };
  for (const int pair : order) {
    for (std::size_t i = static_cast<std::size_t>(pair); i < static_cast<std::size_t>(pair) + 2; ++i) {
      const int difference = upper(left[i]) - upper(right[i]);
      if (difference != 0) return difference;
    }
  }
  return 0;
}

}  // namespace

void registerCollations(sqlite::Database& database) {
  using Compare = int (*)(void*, int, const void*, int, const void*);
  constexpr std::array<std::pair<const char*, Compare>, 4> collations = {
      {{"q_text", compareText}, {"q_decimal", compareDecimal}, {"q_date", compareDate}, {"q_guid", compareGuid}}};
  for (const auto& [name, compare] : collations) {
    const int code = sqlite3_create_collation_v2(database.get(), name, SQLITE_UTF8, nullptr, compare, nullptr);
    if (code != SQLITE_OK) database.fail(code, name);
  }
}

}  // namespace qrel::tsql
