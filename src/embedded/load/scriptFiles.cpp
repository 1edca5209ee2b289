#include "embedded/load/scriptFiles.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>

#include "platform/error.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t blockSize = 1 << 20;
constexpr std::size_t namesInRemark = 5;
constexpr const char* notRegular = "cannot be read: it is not a regular file.";
constexpr const char* cutEnding = "its last character is cut off: the file is incomplete";

[[noreturn]] void fail(const fs::path& path, const std::string& what) {
  throw RuntimeError(errorNumber::pathAccess, "'" + path.string() + "' " + what);
}

bool isScript(const fs::path& path) { return equalNoCase(path.extension().string(), ".sql"); }

// What was passed over in a folder: how much, and the first of it by name.
struct PassedOver {
  std::size_t count = 0;
  std::string names;

  void add(const fs::path& path, const std::string& why) {
    if (count++ < namesInRemark)
      names += (names.empty() ? "" : ", ") + path.string() + (why.empty() ? "" : " (" + why + ")");
  }
  std::string text(const char* one, const char* many) const {
    std::string said = (count == 1 ? std::string("1 ") + one : std::to_string(count) + " " + many) + ": " + names;
    if (count > namesInRemark) said += ", and " + std::to_string(count - namesInRemark) + " more";
    return said;
  }
};

// Goes through one named folder.
class FolderWalk {
 public:
  explicit FolderWalk(fs::path root) : root_(std::move(root)) {}

  std::vector<fs::path> run(std::vector<LoadRemark>& remarks) {
    system::FileFacts facts;
    if (system::look(root_, facts) == 0) seen_.insert(facts.id);
    if (const std::string why = visit(root_); !why.empty()) fail(root_, "cannot be read: " + why + ".");
    if (files_.empty() && lost_.count == 0) fail(root_, "holds no .sql file.");
    if (others_.count > 0)
      remarks.push_back(
          {root_.string(),
           others_.text("file that is no .sql file was not read", "files that are no .sql files were not read"),
           false});
    if (lost_.count > 0)
      remarks.push_back({root_.string(), lost_.text("entry could not be read", "entries could not be read"), true});
    if (files_.empty()) fail(root_, "holds no .sql file that can be read: " + remarks.back().what + ".");
    return std::move(files_);
  }

 private:
  // Takes the folder's files and then goes into its folders; the reason when it can't be read.
  std::string visit(const fs::path& folder) {
    std::vector<fs::path> entries, folders;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
      entries.push_back(it->path());
    if (error) return error.message();
    std::sort(entries.begin(), entries.end(), [](const fs::path& a, const fs::path& b) {
      const int order = compareCollated(a.filename().string(), b.filename().string());
      return order != 0 ? order < 0 : a < b;
    });
    for (const fs::path& entry : entries)
      if (sort(entry)) folders.push_back(entry);
    for (const fs::path& each : folders)
      if (const std::string why = visit(each); !why.empty()) lost_.add(shown(each), why);
    return {};
  }

  // What becomes of an entry; true for a folder to go into.
  bool sort(const fs::path& entry) {
    const bool hidden = entry.filename().string().front() == '.';
    system::FileFacts facts;
    if (const system::Error why = system::look(entry, facts); why != 0) {
      if (isScript(entry) || !hidden)
        lost_.add(shown(entry), why == ENOENT  ? "a link that leads nowhere"
                                : why == ELOOP ? "a link that leads to itself"
                                               : std::generic_category().message(why));
      return false;
    }
    if (facts.kind == system::Kind::Folder) {
      if (hidden) return false;
      if (seen_.insert(facts.id).second) return true;
      lost_.add(shown(entry), "a link to a folder that is read already");
      return false;
    }
    if (!isScript(entry)) {
      if (!hidden) others_.add(shown(entry), "");
    } else if (hidden) {
      others_.add(shown(entry), "hidden");
    } else if (facts.kind != system::Kind::File) {
      lost_.add(shown(entry), "not a regular file");
    } else {
      files_.push_back(entry);
    }
    return false;
  }

  fs::path shown(const fs::path& path) const { return path.lexically_relative(root_); }

  fs::path root_;
  std::vector<fs::path> files_;
  std::set<system::FileId> seen_;
  PassedOver others_, lost_;
};

class OpenScript {
 public:
  explicit OpenScript(const fs::path& file) : file_(file) {
    // At once: a pipe that nobody writes to would hold up the run before it can be told from a file.
    system::Error why = opened_.open(file, system::Open::ReadAtOnce);
    system::FileFacts facts;
    if (why == 0) why = opened_.facts(facts);
    if (why != 0) fail(file, "cannot be read: " + std::generic_category().message(why) + ".");
    if (facts.kind != system::Kind::File) fail(file, notRegular);
    size_ = facts.size;
  }

  std::string read(const std::function<bool()>& stop) {
    std::string bytes;
    bytes.reserve(size_);
    for (std::size_t had = 0;; had = bytes.size()) {
      if (stop && stop()) return {};
      bytes.resize(had + std::min(blockSize, std::max<std::size_t>(size_ - std::min(size_, had), 4096)));
      std::size_t count = 0;
      if (const system::Error why = opened_.read(bytes.data() + had, bytes.size() - had, count))
        fail(file_, "cannot be read: " + std::generic_category().message(why) + ".");
      bytes.resize(had + count);
      if (count == 0) break;
    }
    if (bytes.size() < size_) fail(file_, "cannot be read to its end.");
    return bytes;
  }

 private:
  fs::path file_;
  system::OpenFile opened_;
  std::size_t size_ = 0;
};

std::size_t countOf(std::string_view text, std::string_view what) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string_view::npos; at += what.size()) ++count;
  return count;
}

// Whether a text that says that it is UTF-8 ends in the middle of a character.
bool endsInCharacter(std::string_view bytes) {
  std::size_t behind = 0;
  while (behind < bytes.size() && behind < 4 &&
         (static_cast<unsigned char>(bytes[bytes.size() - 1 - behind]) & 0xC0) == 0x80)
    ++behind;
  if (behind == bytes.size()) return false;
  const auto lead = static_cast<unsigned char>(bytes[bytes.size() - 1 - behind]);
  return (lead >= 0xC2 && behind < 1) || (lead >= 0xE0 && behind < 2) || (lead >= 0xF0 && behind < 3);
}

bool isUtf8(std::string_view bytes) {
  for (std::size_t offset = 0; offset < bytes.size();) {
    if (static_cast<unsigned char>(bytes[offset]) < 0x80) {
      ++offset;
      continue;
    }
    const std::size_t start = offset;
    constexpr char32_t replacement = 0xFFFD;
    if (nextCodePoint(bytes, offset) == replacement && offset - start == 1) return false;
  }
  return true;
}

// The byte order mark that a file of UTF-16 lacks, told by where its zeros are; empty: it isn't one.
std::string_view missingMark(std::string_view bytes) {
  constexpr std::size_t sample = 4096, least = 8;
  bytes = bytes.substr(0, sample);
  if (bytes.size() < least || bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) return {};
  std::size_t zeros[2] = {};
  for (std::size_t i = 0; i < bytes.size(); ++i) zeros[i % 2] += bytes[i] == '\0';
  const std::size_t most = bytes.size() / 2;
  if (zeros[1] > most / 2 && zeros[0] == 0) return "\xFF\xFE";
  if (zeros[0] > most / 2 && zeros[1] == 0) return "\xFE\xFF";
  return {};
}

// The text of a file's bytes, without a second copy where they are it already.
std::string textOfBytes(std::string&& bytes) {
  const bool utf16 = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
  if (utf16 || !isUtf8(bytes)) return decodeText(bytes);
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
  return std::move(bytes);
}

}  // namespace

std::vector<fs::path> scriptFiles(const std::vector<fs::path>& paths, std::vector<LoadRemark>& remarks) {
  std::vector<fs::path> files;
  for (const fs::path& path : paths) {
    system::FileFacts facts;
    if (const system::Error why = system::look(path, facts); why != 0) {
      if (why == ENOENT || why == ENOTDIR) fail(path, "does not exist.");
      fail(path, "cannot be read: " + std::generic_category().message(why) + ".");
    }
    if (facts.kind == system::Kind::Folder) {
      const std::vector<fs::path> inside = FolderWalk(path).run(remarks);
      files.insert(files.end(), inside.begin(), inside.end());
    } else if (facts.kind == system::Kind::File) {
      files.push_back(path);
    } else {
      fail(path, notRegular);
    }
  }
  return files;
}

std::string readScript(const fs::path& file, const std::function<bool()>& stop, std::vector<LoadRemark>& remarks) {
  std::string bytes = OpenScript(file).read(stop);
  const std::string_view mark = missingMark(bytes);
  bytes.insert(0, mark);
  const bool utf16 = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
  const bool marked = utf16 || bytes.starts_with("\xEF\xBB\xBF");
  const bool cut = utf16 ? bytes.size() % 2 != 0 : marked && endsInCharacter(bytes);
  std::string text = textOfBytes(std::move(bytes));
  const auto remark = [&](std::string what, bool lost) { remarks.push_back({file.string(), std::move(what), lost}); };
  if (cut) remark(cutEnding, true);
  if (!mark.empty()) remark("it is read as UTF-16, although it has no byte order mark", false);
  if (const std::size_t zeros = countOf(text, std::string_view("\0", 1)); zeros > 0)
    remark("it holds " + std::to_string(zeros) + " NUL characters" +
               (marked ? "" : ": it may be no text, or UTF-16 without its byte order mark"),
           false);
  const bool blank = std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c) != 0; });
  if (blank) remark("it is empty", false);
  return text;
}

}  // namespace qrel
