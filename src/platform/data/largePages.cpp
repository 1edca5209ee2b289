#include "platform/data/largePages.h"

#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace qrel {
namespace {

constexpr std::size_t pageSize = std::size_t{2} << 20;

}  // namespace

void* allocateLarge(std::size_t bytes) {
  if (bytes < pageSize) return ::operator new(bytes);
  void* memory = ::operator new (bytes, std::align_val_t{pageSize});
#ifdef __linux__
  madvise(memory, bytes, MADV_HUGEPAGE);  // a wish: refused, the memory is as good
#endif
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
