// Profile files: text of sections "[name]" with lines "key=value" in the 8-bit code page.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/fileLock.h"

namespace qrel {

// The content of one file. Sections and keys are found without case, the first of a name counts, and blanks and tabs
// around names and values don't. All text passes through the code page on its way in and out, so a name is found again
// under the characters that it lost there. What isn't a key stays in the file as it stands: comments (";" first),
// lines without "=", and what precedes the first section.
class ProfileFile {
 public:
  // A file that isn't there is an empty one. A file that can't be read, or not as what it is (zero bytes, another
  // encoding, half a line at its end), raises RuntimeError with a sentence that says so.
  static ProfileFile read(const std::filesystem::path& path);
  // Whole and atomically; missing folders are made. Raises RuntimeError. Where other processes write the same file, a
  // ProfileChange does it.
  void write(const std::filesystem::path& path) const;

  // The value without one pair of quotation marks around it, single or double. Empty optional: no such key.
  std::optional<std::string> value(std::string_view section, std::string_view key) const;
  // In file order, as they stand there.
  std::vector<std::string> sectionNames() const;
  // A section's "key=value" lines in file order, values with their quotation marks.
  std::vector<std::string> lines(std::string_view section) const;

  // A key that is there keeps its place; a new one goes to the end of its section, a new section to the end of the
  // file. The text ends at its first line break or zero character.
  void setValue(std::string_view section, std::string_view key, std::string_view text);
  // Puts these lines in the place of all that the section holds.
  void setLines(std::string_view section, const std::vector<std::string>& lines);
  // False when there was nothing to remove.
  bool removeKey(std::string_view section, std::string_view key);
  bool removeSection(std::string_view section);

  // The file's text, not yet in the code page.
  std::string format() const;

 private:
  struct Section {
    std::string header;  // the whole line; empty: what precedes the first section
    std::string name;
    std::vector<std::string> lines;
  };

  // The number of sections when there is none of that name.
  std::size_t indexOf(std::string_view section) const;
  Section& findOrAdd(std::string_view section);

  std::vector<Section> sections_;
};

// One change of a file that several processes share: other changes of it wait from here to the end of the scope. What
// is done to `file` is written by commit(), at once or not at all, unless it changed nothing; without commit() nothing
// is. Both raise RuntimeError.
class ProfileChange {
 public:
  explicit ProfileChange(std::filesystem::path path);
  void commit();

  ProfileFile file;  // as it stood when the change began

 private:
  std::filesystem::path path_;
  FileLock lock_;
  std::string before_;
};

}  // namespace qrel
