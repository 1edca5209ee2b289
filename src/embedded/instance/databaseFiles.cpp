#include "embedded/instance/databaseFiles.h"

#include <algorithm>
#include <system_error>

#include "platform/error.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr const char* databaseExtension = ".mdf";
constexpr std::string_view workCopyMark = ".loading-";  // then the process's number
constexpr std::size_t longestName = 128;

bool hasDatabaseExtension(const fs::path& file) { return equalNoCase(file.extension().string(), databaseExtension); }

}  // namespace

bool isLegalName(std::string_view name) {
  return !name.empty() && name.size() <= longestName && name.front() != '.' &&
         name.find_first_of("/\\:") == std::string_view::npos &&
         std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

std::string databaseNameOf(const fs::path& file) {
  std::string name = hasDatabaseExtension(file) ? file.stem().string() : std::string();
  return isLegalName(name) ? name : std::string();
}

std::vector<std::string> databaseNames(const fs::path& folder) {
  std::vector<std::string> names;
  for (const fs::path& entry : folderEntries(folder))
    if (std::string name = databaseNameOf(entry); !name.empty()) names.push_back(std::move(name));
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return compareCollated(a, b) < 0; });
  return names;
}

fs::path findDatabaseFile(const fs::path& folder, std::string_view name) {
  if (!isLegalName(name)) return {};
  fs::path exact = folder / (std::string(name) + databaseExtension);
  std::error_code ignored;
  if (fs::exists(exact, ignored)) return exact;
  for (const fs::path& entry : folderEntries(folder))
    if (equalNoCase(databaseNameOf(entry), name)) return entry;
  return {};
}

fs::path databaseFileFor(const fs::path& folder, std::string_view name) {
  const fs::path found = findDatabaseFile(folder, name);
  return found.empty() ? folder / (std::string(name) + databaseExtension) : found;
}

fs::path workCopyOf(const fs::path& databaseFile) {
  return databaseFile.string() + std::string(workCopyMark) + std::to_string(system::processId());
}

fs::path databaseFileOfWorkCopy(const fs::path& file) {
  const std::string name = file.filename().string();
  const std::size_t mark = name.rfind(workCopyMark);
  if (mark == std::string::npos) return {};
  const fs::path database = file.parent_path() / name.substr(0, mark);
  return hasDatabaseExtension(database) ? database : fs::path();
}

std::vector<fs::path> folderEntries(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  fs::directory_iterator it(folder, error);
  for (; !error && it != fs::directory_iterator(); it.increment(error)) entries.push_back(it->path());
  if (error)
    throw RuntimeError(errorNumber::pathAccess, "The folder '" + folder.string() +
                                                    "' cannot be read: " + error.message() +
                                                    ". Ask for the right to read it, or look after the disk.");
  return entries;
}

}  // namespace qrel
