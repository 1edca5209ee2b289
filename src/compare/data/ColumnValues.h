// The distinct values of a column, counted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qrel {

struct tColumnValue {
  std::string strValue;       // "Null" for Null
  std::int32_t lngIndex = 0;  // order of first appearance, from 0
  std::int32_t lngCount = 0;  // records that hold it
};

class ColumnValues {
 public:
  // One more record holds the value. Values are the same when all their bytes are.
  void add(std::string_view value);
  // In the order of first appearance. What is done to them is seen by no later add.
  std::vector<tColumnValue>& values() { return values_; }

 private:
  std::size_t slotOf(std::string_view value, std::uint32_t hash) const;
  void grow();

  std::vector<tColumnValue> values_;
  std::vector<std::uint32_t> hashes_;  // of the values
  std::vector<std::int32_t> slots_;    // index of a value, -1: free; a power of two of them
};

}  // namespace qrel
