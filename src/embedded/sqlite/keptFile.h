// A database file that can be read on although another one has taken its place or it was removed.
#pragma once

#include <filesystem>
#include <string>

#include "platform/system.h"

namespace qrel::sqlite {

// Holds a file open for reading. Movable; the file is let go with the object, but what was opened by its name before
// stays readable.
class KeptFile {
 public:
  KeptFile() = default;
  // Holds nothing when the file can't be opened.
  explicit KeptFile(const std::filesystem::path& file);

  explicit operator bool() const { return file_.isOpen(); }
  // What SQLite opens it as, by the file system `vfs`; and the same for ATTACH.
  std::string name() const { return "kept-" + std::to_string(file_.number()); }
  std::string uri() const;
  static const char* vfs();

 private:
  system::OpenFile file_;
};

}  // namespace qrel::sqlite
