// What an operating system gives: files, the calendar, the process and the terminal that it runs in. No type of a
// system is seen here; each system has a folder beside this file with the same functions (posix/), and only there are
// its headers included.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace qrel::system {

// 0 when all went well, else a number of <cerrno>: std::generic_category() has its words. Calls that a signal broke off
// are repeated, so that EINTR is never among them.
using Error = int;

// Whether there is no space left, on the disk or of what this user may take.
bool isDiskFull(Error error);

// What a name leads to.
enum class Kind : std::uint8_t {
  File,
  Folder,
  Other,  // a device, a pipe
};

// Tells a file or folder from all others that are there at the same time, whatever name it has.
struct FileId {
  std::uint64_t volume = 0;
  std::uint64_t number = 0;
  bool operator==(const FileId&) const = default;
  bool operator<(const FileId& other) const { return std::tie(volume, number) < std::tie(other.volume, other.number); }
};

// As exact as the file system has it.
struct FileTime {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;
  bool operator==(const FileTime&) const = default;
};

// Who may do what with a file; good for handing it on to another one.
struct FileRights {
  std::uint32_t owner = 0;
  std::uint32_t group = 0;
  std::uint32_t permissions = 0;
  bool operator==(const FileRights&) const = default;
};

// Equal as long as nobody has written to the file, changed its rights or put another one in its place.
struct FileFacts {
  Kind kind = Kind::File;
  FileId id;
  std::uintmax_t size = 0;  // bytes
  FileTime written;         // when the content was changed last
  FileTime changed;         // when the content or what is known of the file was
  FileRights rights;
  bool operator==(const FileFacts&) const = default;
};

// Of what the path leads to in the end. `facts` is set when there is no error.
Error look(const std::filesystem::path& path, FileFacts& facts);

// Whether the file must not be written (`rights` are its own). Taking its place needs no such right, so that this is
// asked before; the superuser is held to it, too.
bool isReadOnly(const std::filesystem::path& file, const FileRights& rights);
// The error that making or replacing a file in this folder would have for want of rights.
Error checkFolderWritable(const std::filesystem::path& folder);
// Whether it is a folder itself, no link to one, and belongs to the user who runs the program.
bool isOwnFolder(const std::filesystem::path& path);

// Who may see what is made.
enum class Access : std::uint8_t {
  Usual,      // as the system gives new files
  OwnerOnly,  // readable and writable by its owner alone
};

enum class Open : std::uint8_t {
  Read,
  ReadAtOnce,    // the same; a pipe that nobody writes to doesn't hold it up
  Write,         // what is there
  ReadAndWrite,  // what is there
  Append,        // at the end; made when it isn't there
  Make,          // to read and write; made when it isn't there
  MakeNew,       // to write; an error when there is something of this name
};

// A file that is open. No other program that is started from here gets it.
class OpenFile {
 public:
  OpenFile() = default;
  ~OpenFile();  // closes
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&& other) noexcept;
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  // Not for one that is open already. `access` is of a file that is made.
  Error open(const std::filesystem::path& path, Open how, Access access = Access::Usual);
  bool isOpen() const { return number_ != none; }
  // An error when closing tells of what could not be written; it is closed all the same.
  Error close();

  // The number that tells it from all others that are open; -1 when it isn't.
  std::intptr_t number() const { return number_; }
  // Opens once more what is open under this number.
  Error openAgain(std::intptr_t number);

  Error facts(FileFacts& facts) const;
  // From where the last read ended, or from `offset` on: up to `size` bytes; `got` is 0 behind the end.
  Error read(char* into, std::size_t size, std::size_t& got);
  Error readAt(std::int64_t offset, char* into, std::size_t size, std::size_t& got) const;
  // All of it.
  Error write(std::string_view bytes);

  // To the disk; what is written is there when it returns.
  Error flush();
  // Lets the system write this part and waits for it, so that there is less to do for flush. Only a wish.
  void writeBack(std::int64_t offset, std::int64_t bytes);

  // Takes the permissions of the file whose place it will take, and owner and group where this user may give them: the
  // content matters more.
  Error takeRights(const FileRights& before);

  // Locks it against others who lock it, until it is closed; EWOULDBLOCK when one of them has it.
  Error lock();

 private:
  static constexpr std::intptr_t none = -1;
  std::intptr_t number_ = none;
};

// Gives a file the place of another one, in one step for everybody who looks.
Error replaceFile(const std::filesystem::path& from, const std::filesystem::path& target);
// Makes sure that a replacement in this folder outlasts a power failure, where the file system can do that.
Error flushFolder(const std::filesystem::path& folder);
Error removeFile(const std::filesystem::path& path);
// EEXIST when there is something of this name.
Error makeFolder(const std::filesystem::path& path, Access access);

// The calendar's fields of a time, in the time zone of this machine or in UTC.
std::tm localTime(std::time_t time);
std::tm utcTime(std::time_t time);

// The number of this process: no other one has it at the same time.
std::int64_t processId();
// At once: nothing is tidied up and nothing that waits in a buffer is written.
[[noreturn]] void endProcess(int exitCode);
// The file that this process runs; empty where the system doesn't tell.
std::filesystem::path programFile();

// Where this user's files belong; they need not be there.
struct UserFolders {
  std::filesystem::path home;
  std::filesystem::path documents;
  std::filesystem::path settings;
  std::filesystem::path data;
};
UserFolders userFolders();

enum class Stream : std::uint8_t { Input, Output, Errors };
bool isTerminal(Stream stream);
// A line typed at the terminal of standard input without being shown there, behind `prompt`, which goes to standard
// error. Nothing when it is given up (Ctrl+C, Ctrl+D) or can't be read.
std::optional<std::string> readSecret(std::string_view prompt);
// Characters in a row of the terminal that standard output is, or as the user's settings say; 0 when unknown.
int terminalColumns();
// Past all buffers; what can't be written is lost.
void writeToErrors(std::string_view text);
// Whether there is a screen that windows could be shown on.
bool hasDisplay();

// A wish that this memory, which begins at a multiple of the large pages' size, is kept in such pages.
void preferLargePages(void* memory, std::size_t bytes);

}  // namespace qrel::system
