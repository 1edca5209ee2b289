#include "platform/data/embedded/instances.h"

#include <algorithm>
#include <fstream>
#include <random>

#include "platform/data/embedded/catalogue.h"
#include "platform/data/embedded/sqlite.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

namespace fs = std::filesystem;

constexpr const char* versionFile = "instance.txt";
constexpr const char* databaseExtension = ".mdf";
constexpr std::size_t longestName = 128;

[[noreturn]] void fail(const std::string& text) { throw RuntimeError(errorNumber::pathAccess, text); }

void checkName(std::string_view name, const char* what) {
  const bool bad = name.empty() || name.size() > longestName || name.front() == '.' ||
                   name.find_first_of("/\\:") != std::string_view::npos ||
                   std::any_of(name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
  if (bad) fail("'" + std::string(name) + "' can't be the name of " + what + ".");
}

[[noreturn]] void failReading(const fs::path& folder, const std::error_code& error) {
  fail("The folder '" + folder.string() + "' cannot be read: " + error.message() +
       ". Ask for the right to read it, or look after the disk.");
}

// The names of a folder's entries; none when there is no such folder.
std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  fs::directory_iterator it(folder, error);
  if (error == std::errc::no_such_file_or_directory) return entries;
  for (; !error && it != fs::directory_iterator(); it.increment(error)) entries.push_back(it->path());
  if (error) failReading(folder, error);
  return entries;
}

bool isThere(const fs::path& file) {
  std::error_code error;
  const bool there = fs::exists(file, error);
  if (error) fail("The file '" + file.string() + "' cannot be looked at: " + error.message() + ".");
  return there;
}

// The folder entry whose name (without `extension`) equals `name` without case; empty when there is none.
fs::path findEntry(const fs::path& folder, std::string_view name, std::string_view extension) {
  const fs::path exact = folder / (std::string(name) + std::string(extension));
  std::error_code ignored;
  if (fs::exists(exact, ignored)) return exact;
  for (const fs::path& entry : entriesOf(folder)) {
    const std::string file = entry.filename().string();
    if (file.size() < extension.size() || file.front() == '.') continue;
    const std::size_t length = file.size() - extension.size();
    if (equalNoCase(file.substr(length), extension) && equalNoCase(file.substr(0, length), name)) return entry;
  }
  return {};
}

void writeVersion(const fs::path& folder, std::string_view version) {
  const fs::path target = folder / versionFile;
  const fs::path fresh = folder / (std::string(versionFile) + ".new");
  {
    std::ofstream out(fresh, std::ios::binary | std::ios::trunc);
    out << version << '\n';
    out.flush();
    if (!out) fail("The file '" + fresh.string() + "' cannot be written.");
  }
  std::error_code error;
  fs::rename(fresh, target, error);
  if (error) fail("The file '" + target.string() + "' cannot be written: " + error.message() + ".");
}

bool isVersion(std::string_view text) {
  return !text.empty() && text.front() != '.' &&
         std::all_of(text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
}

void createEmptyDatabase(const fs::path& file) {
  sqlite::Database database(file, sqlite::OpenMode::Create);
  tsql::Catalogue::createStorage(database);
}

void fillInstance(const fs::path& folder, std::string_view version) {
  if (!isVersion(version)) fail("'" + std::string(version) + "' is no product version such as 11.0.2100.60.");
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) fail("The folder '" + folder.string() + "' cannot be made: " + error.message() + ".");
  writeVersion(folder, version);
  const fs::path master = folder / ("master" + std::string(databaseExtension));
  if (!fs::exists(master)) createEmptyDatabase(master);
}

std::vector<std::string> sorted(std::vector<std::string> names) {
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return compareCollated(a, b) < 0; });
  return names;
}

}  // namespace

EmbeddedServers::EmbeddedServers(fs::path root) : root_(std::move(root)) {}

EmbeddedServers::~EmbeddedServers() {
  std::error_code ignored;
  for (const auto& [name, folder] : temporary_) fs::remove_all(folder, ignored);
}

bool EmbeddedServers::exists(std::string_view name) const {
  if (temporary_.count(lowerCase(name)) != 0) return true;
  const fs::path found = name.empty() ? fs::path() : findEntry(root_, name, "");
  return !found.empty() && found.filename() != "." && isThere(found / versionFile);
}

std::vector<std::string> EmbeddedServers::list() const {
  std::vector<std::string> names;
  for (const fs::path& entry : entriesOf(root_)) {
    std::error_code none;
    if (fs::exists(entry / versionFile, none)) names.push_back(entry.filename().string());
  }
  return sorted(std::move(names));
}

void EmbeddedServers::create(std::string_view name, std::string_view productVersion) {
  checkName(name, "a server");
  if (exists(name)) fail("There is a server '" + std::string(name) + "' already.");
  fillInstance(root_ / std::string(name), productVersion);
}

void EmbeddedServers::setVersion(std::string_view name, std::string_view productVersion) {
  if (!isVersion(productVersion))
    fail("'" + std::string(productVersion) + "' is no product version such as 11.0.2100.60.");
  writeVersion(folder(name), productVersion);
}

std::string EmbeddedServers::productVersion(std::string_view name) const {
  return versionIn(folder(name)).value_or(defaultProductVersion);
}

std::optional<std::string> EmbeddedServers::versionIn(const fs::path& folder) {
  const fs::path file = folder / versionFile;
  if (!isThere(file)) return {};
  std::ifstream in(file);
  std::string version;
  in >> version;
  // Another version would change what the server answers: it isn't made up.
  if (!isVersion(version))
    fail("The file '" + file.string() +
         "' cannot be read, or holds no product version such as 11.0.2100.60. \"qrel load\" with --version writes it.");
  return version;
}

fs::path EmbeddedServers::versionFileIn(const fs::path& folder) { return folder / versionFile; }

fs::path EmbeddedServers::folder(std::string_view name) const {
  if (const auto found = temporary_.find(lowerCase(name)); found != temporary_.end()) return found->second;
  if (!exists(name)) fail("There is no server '" + std::string(name) + "' in '" + root_.string() + "'.");
  return findEntry(root_, name, "");
}

std::string EmbeddedServers::createTemporary() {
  std::string name;
  for (int number = 1; name.empty() || exists(name); ++number) name = "script" + std::to_string(number);
  std::random_device random;
  for (int attempt = 0; attempt < 100; ++attempt) {
    const fs::path folder = fs::temp_directory_path() / ("qrel-" + std::to_string(random()) + std::to_string(random()));
    std::error_code error;
    if (!fs::create_directory(folder, error)) {
      if (error) fail("The folder '" + folder.string() + "' cannot be made: " + error.message() + ".");
      continue;
    }
    temporary_[name] = folder;
    fs::permissions(folder, fs::perms::owner_all, error);
    fillInstance(folder, defaultProductVersion);
    return name;
  }
  fail("No temporary folder can be made in '" + fs::temp_directory_path().string() + "'.");
}

std::vector<std::string> EmbeddedServers::databases(std::string_view instance) const {
  std::vector<std::string> names;
  for (const fs::path& file : entriesOf(folder(instance))) {
    if (equalNoCase(file.extension().string(), databaseExtension) && file.filename().string().front() != '.')
      names.push_back(file.stem().string());
  }
  return sorted(std::move(names));
}

fs::path EmbeddedServers::databaseFile(std::string_view instance, std::string_view database) const {
  checkName(database, "a database");
  const fs::path found = findEntry(folder(instance), database, databaseExtension);
  return found.empty() ? folder(instance) / (std::string(database) + databaseExtension) : found;
}

bool EmbeddedServers::createDatabase(std::string_view instance, std::string_view database) {
  const fs::path file = databaseFile(instance, database);
  if (fs::exists(file)) return false;
  try {
    createEmptyDatabase(file);
  } catch (...) {
    std::error_code ignored;
    fs::remove(file, ignored);
    throw;
  }
  return true;
}

bool EmbeddedServers::dropDatabase(std::string_view instance, std::string_view database) {
  std::error_code error;
  const fs::path file = databaseFile(instance, database);
  const bool removed = fs::remove(file, error);
  if (error) fail("The file '" + file.string() + "' cannot be removed: " + error.message() + ".");
  return removed;
}

}  // namespace qrel
