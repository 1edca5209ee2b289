// The conditions of Filter and Find, and the columns of Sort, read from their texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/value.h"

namespace qrel {

class RowStore;

enum class ConditionOperator : std::uint8_t { Equal, NotEqual, Less, Greater, LessOrEqual, GreaterOrEqual, Like };

// One condition. `value` is of the column's type, or a Decimal that no value of an integer column equals; Null matches
// Nulls under Equal and values under NotEqual. For Like it is the pattern.
struct Condition {
  std::size_t column = 0;
  ConditionOperator op = ConditionOperator::Equal;
  Value value;

  bool matches(const Cell& cell) const;
};

struct SortColumn {
  std::size_t column = 0;
  bool descending = false;
};

// Conditions joined by AND. Raises error 3001 for a text that can't be read and for a literal that the column's type
// can't have, 3265 for a column that isn't there. An empty text gives none.
std::vector<Condition> parseConditions(std::string_view text, const RowStore& store);
std::vector<SortColumn> parseSort(std::string_view text, const RowStore& store);

}  // namespace qrel
