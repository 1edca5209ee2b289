// A seam for tests: each call on a file is asked for here first, and can be made to fail.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

namespace qrel::files {

enum class Operation : std::uint8_t { Open, Read, Write, Flush, Close, Rename, Remove, MakeFolder };

// While it lives, `fault` is asked before each operation of the whole process, from whatever thread: 0 lets it happen,
// anything else is the errno with which it fails. Scopes nest; the inner one alone is asked.
class FaultScope {
 public:
  using Fault = std::function<int(Operation, const std::filesystem::path&)>;
  explicit FaultScope(Fault fault);
  ~FaultScope();
  FaultScope(const FaultScope&) = delete;
  FaultScope& operator=(const FaultScope&) = delete;

 private:
  Fault fault_;
  const Fault* before_;
};

// For those who call the system: the errno with which the operation is to fail, 0 to go ahead.
int injectedFault(Operation operation, const std::filesystem::path& path);

}  // namespace qrel::files
