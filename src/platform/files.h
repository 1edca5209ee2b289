// Files: whole reads, appended lines, and writes that leave either the old file or the new one.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system.h"

namespace qrel::files {

// Failures raise RuntimeError with a sentence that names the path, the reason and what to do: 53 for a file to read
// that isn't there, 61 for a full disk, 75 for all else.
constexpr std::int32_t fileNotFound = 53;

// Whether there is a file of this name; false for a folder and where nothing can be seen.
bool exists(const std::filesystem::path& path);
// A file of more than `mostBytes` is refused as none that the program can have written.
std::string readWholeFile(const std::filesystem::path& path, std::uintmax_t mostBytes = UINTMAX_MAX);

// The folder that a file lies in; "." for a bare name.
std::filesystem::path folderOf(const std::filesystem::path& file);

// What a path that is a link leads to in the end, whether it is there or not; any other path as it is.
std::filesystem::path linkTarget(const std::filesystem::path& path);

// Opens the file, making it when it isn't there, appends the text as it stands (with its line end) and closes it.
void appendLine(const std::filesystem::path& path, std::string_view line);

using system::Access;  // of files and folders that are new
// Writes a temporary file in the same folder, flushes it to the disk, puts it in the place of `path` and flushes the
// folder. Whatever goes wrong, either the old file is there as it was or the new one as a whole. A link stays a link:
// what it leads to is replaced. A file that was there keeps its permissions and, where that may be, its owner; one that
// is read-only is refused. A device or a pipe is written into as it stands.
void writeAtomically(const std::filesystem::path& path, std::string_view bytes, Access access = Access::Usual);

// The same for a file that is written piece by piece. Made, it is open for writing (or has raised why not) and what was
// there before stays until finish; one that goes without finish leaves no trace.
class AtomicFile {
 public:
  explicit AtomicFile(const std::filesystem::path& path, Access access = Access::Usual);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  // Pieces are gathered, so that a failure is told by a later one or by finish.
  void write(std::string_view bytes);
  // Puts the file in its place; it is closed then.
  void finish();

 private:
  struct Parts;
  void writeGathered();
  std::unique_ptr<Parts> parts_;
  std::string gathered_;
};

// Flush, rename and the folder's flush for who writes a file in a way of its own and has closed it; 0 or the error of
// what went wrong. What is in place stays there, whether or not the folder could be flushed.
system::Error putInPlace(const std::filesystem::path& from, const std::filesystem::path& target);

// Removes a file; none of that name is no error.
void removeFile(const std::filesystem::path& path);

// Removes the files of a folder whose names end with `ending`, in upper or lower case; hidden ones (".name"), folders
// and all that can't be removed stay.
void removeFilesEndingWith(const std::filesystem::path& folder, std::string_view ending);

// Makes a folder with the folders above it that are missing; new ones are open to their owner alone with OwnerOnly.
void makeFolder(const std::filesystem::path& path, Access access = Access::Usual);

// A name in the folder of `path` that no file has yet: hidden, and ending with ".tmp".
std::filesystem::path temporaryName(const std::filesystem::path& path);
// The files with such names for this path: what writers left that were killed, or what one is writing just now.
std::vector<std::filesystem::path> temporaryFiles(const std::filesystem::path& path);

}  // namespace qrel::files
