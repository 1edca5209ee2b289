// An array whose first element has number 1; a number outside it raises error 9.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/error.h"

namespace qrel {

template <class T>
class OneBased {
 public:
  long count() const { return static_cast<long>(items_.size()); }
  bool empty() const { return items_.empty(); }

  T& operator[](long number) { return items_[checked(number)]; }
  const T& operator[](long number) const { return items_[checked(number)]; }

  void add(T item) { items_.push_back(std::move(item)); }
  void reserve(std::size_t count) { items_.reserve(count); }
  void clear() { items_.clear(); }

  auto begin() { return items_.begin(); }
  auto end() { return items_.end(); }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  std::size_t checked(long number) const {
    if (number < 1 || number > count()) throw RuntimeError(errorNumber::subscript, "Subscript out of range");
    return static_cast<std::size_t>(number - 1);
  }

  std::vector<T> items_;
};

}  // namespace qrel
