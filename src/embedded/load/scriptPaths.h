// Files that a script names, found below the folder that its load was given, and never outside of it.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qrel {

// Paths are written as on the machine that the script comes from: with either slash, in any case, in quotes, absolute
// or behind a $(variable). Of those last two only the tail counts that lies below the script's folder.
class ScriptPaths {
 public:
  // `root` is a folder.
  explicit ScriptPaths(std::filesystem::path root);

  const std::filesystem::path& root() const { return root_; }
  // What `written` means in a file of the folder `base`, which lies below the root, or else from the root on: the file,
  // or empty with `why` a reason that follows the path ("isn't there").
  std::filesystem::path find(const std::filesystem::path& base, std::string_view written, std::string& why);
  // A path from the root on, as it lies there whatever its case: the first that fits; empty: none.
  std::filesystem::path below(const std::filesystem::path& folder, const std::vector<std::string>& parts);

 private:
  std::filesystem::path exact(const std::filesystem::path& from, const std::vector<std::string>& parts, bool& outside);
  const std::map<std::string, std::string>& namesIn(const std::filesystem::path& folder);

  std::filesystem::path root_;
  std::filesystem::path canonicalRoot_;
  std::map<std::filesystem::path, std::map<std::string, std::string>> names_;  // by lower-case name
};

// "a\b/c" as its parts, without empty ones and "."; a drive letter is a part of its own.
std::vector<std::string> pathParts(std::string_view written);

}  // namespace qrel
