// The embedded server's instances: a folder each, with a file instance.txt that holds the product version and a .mdf
// file per database.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrel {

inline constexpr const char* defaultProductVersion = "11.0.2100.60";

class EmbeddedServers {
 public:
  // `root` holds the instances; it need not exist yet.
  explicit EmbeddedServers(std::filesystem::path root);
  ~EmbeddedServers();  // removes temporary instances

  // Names compare without case. "(localdb)\Name" is not taken apart here: pass Name.
  bool exists(std::string_view name) const;
  std::vector<std::string> list() const;  // without temporary ones, in order without case
  // Makes the folder, instance.txt and an empty master. Raises RuntimeError with the path when it can't, and for a name
  // that no folder can have (empty, "/", "\", ":", a leading point, control characters, over 128 bytes).
  void create(std::string_view name, std::string_view productVersion = defaultProductVersion);
  void setVersion(std::string_view name, std::string_view productVersion);
  std::string productVersion(std::string_view name) const;
  // The same of an instance's folder; nothing when the folder holds no instance.
  static std::optional<std::string> versionIn(const std::filesystem::path& folder);
  // The file that says so.
  static std::filesystem::path versionFileIn(const std::filesystem::path& folder);
  std::filesystem::path folder(std::string_view name) const;
  // An instance in a folder of its own under the system's temporary folder, gone with this object. Returns its name:
  // "script1", or the next number that no instance has.
  std::string createTemporary();

  // Databases are the .mdf files of the folder; names compare without case. Path for a new or existing one.
  std::vector<std::string> databases(std::string_view instance) const;
  std::filesystem::path databaseFile(std::string_view instance, std::string_view database) const;
  // Makes an empty database; false when there is one of that name.
  bool createDatabase(std::string_view instance, std::string_view database);
  bool dropDatabase(std::string_view instance, std::string_view database);

 private:
  std::filesystem::path root_;
  std::map<std::string, std::filesystem::path> temporary_;
};

}  // namespace qrel
