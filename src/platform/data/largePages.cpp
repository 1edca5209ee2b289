#include "platform/data/largePages.h"

#include <new>

#include "platform/system.h"

namespace qrel {
namespace {

constexpr std::size_t pageSize = std::size_t{2} << 20;

}  // namespace

void* allocateLarge(std::size_t bytes) {
  if (bytes < pageSize) return ::operator new(bytes);
  void* memory = ::operator new (bytes, std::align_val_t{pageSize});
  system::preferLargePages(memory, bytes);
  return memory;
}

void freeLarge(void* memory, std::size_t bytes) noexcept {
  if (bytes < pageSize) {
    ::operator delete(memory);
  } else {
    ::operator delete (memory, std::align_val_t{pageSize});
  }
}

}  // namespace qrel
