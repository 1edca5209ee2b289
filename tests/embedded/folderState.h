// What a folder holds, to the byte.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>

namespace qrel {

// Each file below a folder with a hash of its bytes.
inline std::map<std::string, std::size_t> stateOf(const std::filesystem::path& folder) {
  std::map<std::string, std::size_t> state;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    state[entry.path().string()] = std::hash<std::string>()(bytes);
  }
  return state;
}

}  // namespace qrel
