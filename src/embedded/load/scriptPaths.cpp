#include "embedded/load/scriptPaths.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/text.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

bool isBelow(const fs::path& path, const fs::path& root) {
  const auto [end, ignored] = std::mismatch(root.begin(), root.end(), path.begin(), path.end());
  return end == root.end();
}

bool isForeign(std::string_view written) {
  const bool drive = written.size() > 1 && written[1] == ':';
  return drive || written.starts_with('/') || written.starts_with('\\') ||
         written.find("$(") != std::string_view::npos || written.find("://") != std::string_view::npos;
}

// What $(name) stands for ends most often in a slash, or has one behind it.
std::string withoutVariables(std::string_view written) {
  std::string text(written);
  for (std::size_t at = 0; (at = text.find("$(", at)) != std::string::npos;) {
    const std::size_t close = text.find(')', at);
    if (close == std::string::npos) break;
    text.replace(at, close + 1 - at, "/");
  }
  return text;
}

}  // namespace

std::vector<std::string> pathParts(std::string_view written) {
  std::vector<std::string> parts;
  while (!written.empty()) {
    const std::size_t end = std::min(written.find_first_of("/\\"), written.size());
    if (end > 0 && written.substr(0, end) != ".") parts.emplace_back(written.substr(0, end));
    written.remove_prefix(std::min(end + 1, written.size()));
  }
  return parts;
}

ScriptPaths::ScriptPaths(fs::path root) : root_(root.empty() ? fs::path(".") : std::move(root)) {
  std::error_code ignored;
  canonicalRoot_ = fs::canonical(root_, ignored);
}

const std::map<std::string, std::string>& ScriptPaths::namesIn(const fs::path& folder) {
  const auto [found, fresh] = names_.try_emplace(folder);
  if (!fresh) return found->second;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    const std::string name = it->path().filename().string();
    // Of names that differ in case alone the same one each time.
    auto [kept, first] = found->second.try_emplace(lowerCase(name), name);
    if (!first) kept->second = std::min(kept->second, name);
  }
  return found->second;
}

fs::path ScriptPaths::below(const fs::path& folder, const std::vector<std::string>& parts) {
  fs::path path = folder;
  for (const std::string& part : parts) {
    std::error_code ignored;
    if (part == ".." || fs::exists(path / part, ignored)) {
      path /= part;
      continue;
    }
    const auto& names = namesIn(path);
    const auto found = names.find(lowerCase(part));
    if (found == names.end()) return {};
    path /= found->second;
  }
  return path;
}

fs::path ScriptPaths::exact(const fs::path& from, const std::vector<std::string>& parts, bool& outside) {
  const fs::path path = below(from, parts);
  std::error_code error;
  if (path.empty() || !fs::is_regular_file(path, error)) return {};
  // Links and ".." may lead away.
  const fs::path real = fs::canonical(path, error);
  if (error || !isBelow(real, canonicalRoot_)) {
    outside = true;
    return {};
  }
  return path.lexically_normal();
}

fs::path ScriptPaths::find(const fs::path& base, std::string_view written, std::string& why) {
  written = trimBlanks(written);
  if (written.size() > 1 && (written.front() == '"' || written.front() == '\'') && written.back() == written.front())
    written = written.substr(1, written.size() - 2);
  std::vector<std::string> parts = pathParts(withoutVariables(written));
  bool outside = false;
  const bool foreign = isForeign(written);
  while (!parts.empty()) {
    for (const fs::path& from : {base, root_})
      if (fs::path found = exact(from, parts, outside); !found.empty()) return found;
    if (!foreign) break;
    parts.erase(parts.begin());
  }
  why = outside ? "lies outside of the folder that is loaded" : "isn't there";
  return {};
}

}  // namespace qrel
