// Makes one call to the operating system fail, as a full disk or a bad sector would.
#pragma once

#include <cstdint>
#include <string>

namespace qrel {

enum class SystemCall : std::uint8_t { Open, Read, Write, Sync, Rename };

// While it lives, the nth call of the kind (from 1 on) on a file below the folder fails with the error; with
// `andAllAfter` each later one, too. Files that were opened before don't count. One at a time.
class FailingCall {
 public:
  FailingCall(SystemCall kind, long nth, int error, std::string folder, bool andAllAfter = false);
  ~FailingCall();
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;

  // Whether there were that many calls.
  bool failed() const { return calls_ >= nth_; }

  // For the calls themselves.
  bool below(const char* path) const { return path && std::string_view(path).starts_with(folder_); }
  bool fails(SystemCall kind);

 private:
  SystemCall kind_;
  long nth_;
  int error_;
  std::string folder_;
  bool andAllAfter_;
  long calls_ = 0;
};

}  // namespace qrel
