// A script as it is run: sqlcmd's commands carried out, its variables replaced, the files in it that :r names.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/load/batches.h"
#include "embedded/load/scriptFiles.h"
#include "embedded/load/scriptPaths.h"

namespace qrel {

using ScriptVariables = std::vector<std::pair<std::string, std::string>>;

class ScriptText {
 public:
  struct Place {
    std::filesystem::path file;
    std::size_t line = 1;  // 1-based
  };

  struct Told {
    std::size_t at = 1;  // the line of the text
    SkippedStatement what;
  };

  std::string text;
  // Commands that weren't carried out, variables that have no value, what an `exit` leaves out; in order.
  std::vector<Told> told;
  std::size_t carriedOut = 0;  // commands
  // $(name) without a value in texts between quotes: of a script without any command they may be just that.
  std::vector<Told> quoted;

  // Where a line of the text stands. Lines are 1-based.
  Place placeOf(std::size_t line) const;
  // Whether ":on error exit" is in force at a line.
  bool exitsOnError(std::size_t line) const;

 private:
  friend class ScriptReader;
  struct Segment {
    std::size_t firstLine = 1;  // in the text
    Place place;                // of that line
  };
  std::vector<Segment> segments_;
  std::vector<std::pair<std::size_t, bool>> errorExits_;  // by line
};

// Reads a file. $(name) becomes its value; :setvar, :r, :on error, exit and quit are carried out, other commands told
// and blanked. A $(name) without a value stays as it is. What an `exit` stands in front of is left out, and so is the
// batch that it stands in, as by sqlcmd. Files of :r are looked for beside the file that names them, below the root of
// `paths`. `stop` is asked while reading; true ends it. Raises RuntimeError when the file itself can't be read.
ScriptText readScriptText(const std::filesystem::path& file, ScriptPaths& paths, ScriptVariables& variables,
                          const std::function<bool()>& stop, std::vector<LoadRemark>& remarks);

// The files that :r lines of a file name, as far as they are there.
std::vector<std::filesystem::path> includedFiles(const std::filesystem::path& file, ScriptPaths& paths,
                                                 const std::function<bool()>& stop);

}  // namespace qrel
