// Memory for the long arrays of large results. From two megabytes on it is asked for in the system's large pages, which
// are handed out and looked up far quicker than small ones; where there are none it is ordinary memory.
#pragma once

#include <cstddef>

namespace qrel {

// Not set to zero. Throws std::bad_alloc.
void* allocateLarge(std::size_t bytes);
// `bytes` as given to allocateLarge.
void freeLarge(void* memory, std::size_t bytes) noexcept;

// For containers: std::vector<T, LargePages<T>>.
template <typename T>
struct LargePages {
  using value_type = T;

  LargePages() = default;
  template <typename Other>
  LargePages(const LargePages<Other>&) {}

  T* allocate(std::size_t count) { return static_cast<T*>(allocateLarge(count * sizeof(T))); }
  void deallocate(T* memory, std::size_t count) noexcept { freeLarge(memory, count * sizeof(T)); }
  bool operator==(const LargePages&) const = default;
};

}  // namespace qrel
