#include "platform/fileFaults.h"

#include <atomic>
#include <utility>

namespace qrel::files {

namespace {
// Not a setting of the program: null but for the length of a test's scope.
std::atomic<const FaultScope::Fault*> current{nullptr};
}  // namespace

FaultScope::FaultScope(Fault fault) : fault_(std::move(fault)), before_(current.exchange(&fault_)) {}

FaultScope::~FaultScope() { current.store(before_); }

int injectedFault(Operation operation, const std::filesystem::path& path) {
  const FaultScope::Fault* fault = current.load();
  return fault ? (*fault)(operation, path) : 0;
}

}  // namespace qrel::files
