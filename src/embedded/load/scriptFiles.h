// The script files that a load reads: those named and those in the folders named.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace qrel {

// Something that whoever reads the outcome should know of a file or folder: a sentence without a full stop that follows
// the path and a colon.
struct LoadRemark {
  std::string path;
  std::string what;
  bool lost = false;  // something that belongs to the scripts wasn't read
};

// Files as they are named, folders as their .sql files (in any case) at any depth: in each folder its files first, then
// its folders, each in the order of their names without case. Links are followed; a folder is gone through once.
// Folders whose names begin with a point are passed over, as are such files without .sql. All else that isn't read is
// told in one remark per folder named, or two, where something is lost. Raises RuntimeError with the path for what
// isn't there or is no file, and for a folder that can't be read or holds no .sql file.
std::vector<std::filesystem::path> scriptFiles(const std::vector<std::filesystem::path>& paths,
                                               std::vector<LoadRemark>& remarks);

// A script's text, whatever its encoding. Remarks tell what is odd: no text at all, NUL characters, a character that is
// cut off at the end. `stop` is asked while reading; true ends it with an empty text. Raises RuntimeError with the
// path.
std::string readScript(const std::filesystem::path& file, const std::function<bool()>& stop,
                       std::vector<LoadRemark>& remarks);

}  // namespace qrel
