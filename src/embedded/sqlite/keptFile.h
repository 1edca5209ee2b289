// A database file that can be read on although another one has taken its place or it was removed.
#pragma once

#include <filesystem>
#include <string>

namespace qrel::sqlite {

// Holds a file open for reading. Movable; the file is let go with the object, but what was opened by its name before
// stays readable.
class KeptFile {
 public:
  KeptFile() = default;
  // Holds nothing when the file can't be opened, and where the system can't keep a file so.
  explicit KeptFile(const std::filesystem::path& file);
  KeptFile(KeptFile&& other) noexcept;
  KeptFile& operator=(KeptFile&& other) noexcept;
  ~KeptFile();

  explicit operator bool() const { return handle_ >= 0; }
  int handle() const { return handle_; }
  // What SQLite opens it as, by the file system `vfs`; and the same for ATTACH.
  std::string name() const { return "kept-" + std::to_string(handle_); }
  std::string uri() const;
  static const char* vfs();

 private:
  int handle_ = -1;
};

}  // namespace qrel::sqlite
