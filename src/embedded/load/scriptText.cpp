#include "embedded/load/scriptText.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <system_error>

#include "embedded/language/scan.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t deepestInclusion = 32;
constexpr std::size_t mostInclusions = 10000;
constexpr std::size_t mostBytes = std::size_t{1} << 30;  // of all that :r has put together
constexpr std::size_t shownCommand = 60;

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isSpace(unsigned char c) { return std::isspace(c) != 0; }

std::string_view skipBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  return text;
}

// Goes through a script line by line and tells at which lines nothing quoted is open.
class LineWalker {
 public:
  explicit LineWalker(std::string_view text) : text_(text) {}

  bool atEnd() const { return at_ >= text_.size(); }
  std::size_t offset() const { return at_; }
  std::size_t line() const { return line_; }
  std::string_view current() const { return tsql::lineAt(text_, at_); }
  // Moves behind the line end.
  void skipLine() { moveTo(tsql::nextLine(text_, at_)); }
  // Moves to the next line that starts outside of every quoted part and comment.
  void skipText() {
    std::size_t at = at_;
    while (at < text_.size()) {
      const char c = text_[at];
      if (c == '\n' || c == '\r') {
        moveTo(tsql::nextLine(text_, at));
        return;
      }
      const std::size_t behind = tsql::skipQuotedOrComment(text_, at);
      at = behind == at ? at + 1 : behind;
    }
    moveTo(text_.size());
  }

 private:
  void moveTo(std::size_t target) {
    while (at_ < target) {
      at_ = tsql::nextLine(text_, at_);
      if (at_ <= target) ++line_;
    }
    at_ = target;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
};

// A command of sqlcmd by its first word, in lower case and without its colon; empty: the line is none.
std::string commandOf(std::string_view line) {
  line = trimRightBlanks(skipBlanks(line));
  if (line.starts_with("!!")) return "!!";
  const bool colon = line.starts_with(':');
  std::size_t end = colon ? 1 : 0;
  while (end < line.size() && std::isalpha(static_cast<unsigned char>(line[end])) != 0) ++end;
  std::string word = lowerCase(line.substr(colon ? 1 : 0, end - (colon ? 1 : 0)));
  if (colon) return word;
  // These two need no colon, but then nothing else may stand there.
  if ((word == "exit" || word == "quit") && (end == line.size() || (word == "exit" && line[end] == '('))) return word;
  return {};
}

// Whether a script may hold anything of sqlcmd; no command is missed.
bool mayUseSqlcmd(std::string_view script) {
  if (script.find("$(") != std::string_view::npos) return true;
  for (std::size_t at = 0; at < script.size();) {
    std::size_t first = at;
    while (first < script.size() && isBlank(script[first])) ++first;
    const char c = first < script.size() ? script[first] : ' ';
    if ((c == ':' || c == '!' || (c | 0x20) == 'e' || (c | 0x20) == 'q') &&
        !commandOf(tsql::lineAt(script, at)).empty())
      return true;
    at = tsql::nextLine(script, at);
  }
  return false;
}

const std::string* valueOf(const ScriptVariables& variables, std::string_view name) {
  for (const auto& [known, value] : variables)
    if (equalNoCase(known, name)) return &value;
  return nullptr;
}

// `rest` is what follows :setvar on its line.
void runSetvar(ScriptVariables& variables, std::string_view rest) {
  rest = skipBlanks(rest);
  const std::size_t nameEnd = std::min(rest.find_first_of(" \t"), rest.size());
  const std::string_view name = rest.substr(0, nameEnd);
  rest = skipBlanks(rest.substr(nameEnd));
  if (name.empty()) return;
  std::string value;
  if (rest.starts_with('"')) {
    for (std::size_t at = 1; at < rest.size(); ++at) {
      if (rest[at] == '"' && (at + 1 == rest.size() || rest[++at] != '"')) break;
      value += rest[at];
    }
  } else {
    value = std::string(rest.substr(0, std::min(rest.find_first_of(" \t"), rest.size())));
  }
  const auto found =
      std::find_if(variables.begin(), variables.end(), [&](const auto& pair) { return equalNoCase(pair.first, name); });
  if (found == variables.end()) {
    variables.emplace_back(std::string(name), std::move(value));
  } else {
    found->second = std::move(value);
  }
}

std::string replaced(std::string_view text, const ScriptVariables& variables) {
  std::string out(text);
  for (const auto& [name, value] : variables) {
    const std::string marked = lowerCase("$(" + name + ")");
    for (std::size_t at = 0; (at = lowerCase(out).find(marked, at)) != std::string::npos; at += value.size())
      out.replace(at, marked.size(), value);
  }
  return out;
}

bool isVariableName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 || c == '_' || c == '-' || c >= 0x80;
  });
}

// The file behind ":r", without a comment behind it.
std::string_view includedName(std::string_view line) {
  std::string_view name = skipBlanks(trimRightBlanks(skipBlanks(line)).substr(2));
  if (name.starts_with('"')) return name.substr(0, std::min(name.find('"', 1), name.size() - 1) + 1);
  return trimRightBlanks(name.substr(0, name.find(" --")));
}

}  // namespace

ScriptText::Place ScriptText::placeOf(std::size_t line) const {
  const auto behind = std::upper_bound(segments_.begin(), segments_.end(), line,
                                       [](std::size_t wanted, const Segment& each) { return wanted < each.firstLine; });
  if (behind == segments_.begin()) return {};
  const Segment& segment = *std::prev(behind);
  return {segment.place.file, segment.place.line + line - segment.firstLine};
}

bool ScriptText::exitsOnError(std::size_t line) const {
  bool exits = false;
  for (const auto& [at, on] : errorExits_)
    if (at <= line) exits = on;
  return exits;
}

class ScriptReader {
 public:
  ScriptReader(ScriptText& into, ScriptPaths& paths, ScriptVariables& variables, const std::function<bool()>& stop,
               std::vector<LoadRemark>& remarks)
      : into_(into), paths_(paths), variables_(variables), stop_(stop), remarks_(remarks) {}

  void read(const fs::path& file) {
    std::string script = readScript(file, stop_, remarks_);
    if (stop_ && stop_()) return;
    std::error_code ignored;
    open_.push_back(fs::canonical(file, ignored));
    beginSegment(file, 1);
    if (!mayUseSqlcmd(script)) {
      append(std::move(script));
    } else {
      carryOut(file, script);
    }
    open_.pop_back();
  }

 private:
  void carryOut(const fs::path& file, std::string_view script) {
    undefined_.clear();
    if (into_.text.empty()) into_.text.reserve(script.size());
    LineWalker walker(script);
    while (!walker.atEnd() && !ended_) {
      const std::size_t begin = walker.offset();
      const std::string_view line = walker.current();
      const std::string word = commandOf(line);
      if (word.empty()) {
        const std::size_t first = walker.line();
        walker.skipText();
        replace(file, first, script.substr(begin, walker.offset() - begin));
        continue;
      }
      const std::size_t number = walker.line();
      walker.skipLine();
      command(file, number, word, line, script.substr(walker.offset()));
      if (ended_) return;
      add(script.substr(begin + line.size(), walker.offset() - begin - line.size()));  // its line end
    }
  }

  void command(const fs::path& file, std::size_t number, const std::string& word, std::string_view line,
               std::string_view rest) {
    line = trimRightBlanks(skipBlanks(line));
    const std::string shown(leftCharacters(line, shownCommand));
    const std::string_view argument = skipBlanks(line.substr(std::min(word.size() + 1, line.size())));
    if (word == "setvar" && !argument.empty()) {
      runSetvar(variables_, argument);
      ++into_.carriedOut;
    } else if (word == "r" && !argument.empty()) {
      include(file, number, line, shown);
    } else if (word == "on" && lowerCase(argument).starts_with("error")) {
      into_.errorExits_.emplace_back(lines_, lowerCase(argument).find("exit") != std::string::npos);
      ++into_.carriedOut;
    } else if (word == "exit" || word == "quit") {
      end(file, number, shown, rest);
    } else {
      tell(file, number, shown, "sqlcmd command");
    }
  }

  void include(const fs::path& file, std::size_t number, std::string_view line, const std::string& shown) {
    std::string why;
    const std::string name = replaced(includedName(line), variables_);
    const fs::path found = paths_.find(file.parent_path(), name, why);
    std::error_code ignored;
    const fs::path real = fs::canonical(found, ignored);
    if (found.empty()) return tell(file, number, shown, "the file " + why);
    if (std::find(open_.begin(), open_.end(), real) != open_.end())
      return tell(file, number, shown, "the file is being read already: it leads back to itself");
    if (open_.size() >= deepestInclusion)
      return tell(file, number, shown,
                  "files are read within one another " + std::to_string(deepestInclusion) + " deep at most");
    if (++inclusions_ > mostInclusions || into_.text.size() > mostBytes)
      return tell(file, number, shown, "too much has been read in this way already");
    const auto kept = std::move(undefined_);
    try {
      read(found);
      ++into_.carriedOut;
    } catch (const RuntimeError& error) {
      tell(file, number, shown, error.description);
    }
    undefined_ = kept;
    if (ended_) return;
    // What follows is on the line of the command: its line end is put there by whoever called.
    if (!into_.text.empty() && into_.text.back() != '\n' && into_.text.back() != '\r') add("\n");
    beginSegment(file, number);
  }

  // sqlcmd ends without running the batch that it has begun to read.
  void end(const fs::path& file, std::size_t number, const std::string& shown, std::string_view rest) {
    ended_ = true;
    const std::vector<Batch> batches = splitBatches(into_.text);
    const bool open = !batches.empty() && batches.back().text.end() == into_.text.data() + into_.text.size();
    const bool more = !std::all_of(rest.begin(), rest.end(), isSpace) || open_.size() > 1;
    if (!open && !more) return void(++into_.carriedOut);
    std::string reason = "the script ends here";
    if (open) {
      const ScriptText::Place begin = into_.placeOf(batches.back().firstLine);
      reason += "; the batch in front of it, which begins in line " + std::to_string(begin.line) + ", is not run";
      into_.text.resize(static_cast<std::size_t>(batches.back().text.data() - into_.text.data()));
    }
    if (more) reason += "; what stands behind it is not run";
    tell(file, number, shown, reason);
  }

  void tell(const fs::path& file, std::size_t line, const std::string& words, const std::string& reason) {
    into_.told.push_back({lines_, {file.string(), line, words, reason}});
  }

  // Appends text with its variables replaced.
  void replace(const fs::path& file, std::size_t line, std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t open = std::min(text.find("$(", at), text.size());
      add(text.substr(at, open - at));
      if (open == text.size()) return;
      const std::size_t close = std::min(text.find(')', open), text.size());
      const std::string_view name = text.substr(open + 2, std::max(close, open + 2) - open - 2);
      const std::string* value = close == text.size() ? nullptr : valueOf(variables_, name);
      if (value) {
        addValue(*value);
        at = close + 1;
        continue;
      }
      if (close != text.size() && isVariableName(name))
        tellUndefined(file, lineOf(text, open, line), name, tsql::openPartAt(text, 0, open).mark == '\'');
      add("$(");
      at = open + 2;
    }
  }

  static std::size_t lineOf(std::string_view text, std::size_t offset, std::size_t first) {
    for (std::size_t at = tsql::nextLine(text, 0); at <= offset && at < text.size(); at = tsql::nextLine(text, at))
      ++first;
    return first;
  }

  // Once per name and file.
  void tellUndefined(const fs::path& file, std::size_t line, std::string_view name, bool quoted) {
    std::vector<ScriptText::Told>& list = quoted ? into_.quoted : into_.told;
    const auto [known, fresh] = undefined_.try_emplace({quoted, lowerCase(name)}, list.size());
    if (!fresh) return void(++list[known->second].what.times);
    list.push_back(
        {lines_,
         {file.string(), line, "$(" + std::string(name) + ")",
          "the variable has no value: :setvar or --variable " + std::string(name) + "=VALUE would give it one"}});
  }

  // The text's lines are counted as it grows.
  void add(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t next = tsql::nextLine(text, at);
      const char last = text[next - 1];
      if (last == '\n' || last == '\r') ++lines_;
      at = next;
    }
    into_.text += text;
  }
  // The lines of a value count as none: they would move those behind it.
  void addValue(const std::string& value) { add(replaceAll(replaceAll(value, "\r", " "), "\n", " ")); }
  void append(std::string&& script) {
    if (!into_.text.empty()) return add(script);
    add({});
    into_.text = std::move(script);
    for (std::size_t at = 0; at < into_.text.size();) {
      at = tsql::nextLine(into_.text, at);
      if (into_.text[at - 1] == '\n' || into_.text[at - 1] == '\r') ++lines_;
    }
  }
  void beginSegment(const fs::path& file, std::size_t line) { into_.segments_.push_back({lines_, {file, line}}); }

  ScriptText& into_;
  ScriptPaths& paths_;
  ScriptVariables& variables_;
  const std::function<bool()>& stop_;
  std::vector<LoadRemark>& remarks_;
  std::vector<fs::path> open_;                                     // the files within one another
  std::map<std::pair<bool, std::string>, std::size_t> undefined_;  // of the file that is read: places in the lists
  std::size_t lines_ = 1;                                          // the line that the text's end stands on
  std::size_t inclusions_ = 0;
  bool ended_ = false;
};

ScriptText readScriptText(const fs::path& file, ScriptPaths& paths, ScriptVariables& variables,
                          const std::function<bool()>& stop, std::vector<LoadRemark>& remarks) {
  ScriptText text;
  ScriptReader(text, paths, variables, stop, remarks).read(file);
  return text;
}

std::vector<fs::path> includedFiles(const fs::path& file, ScriptPaths& paths, const std::function<bool()>& stop) {
  std::vector<LoadRemark> ignored;
  std::vector<fs::path> files;
  const std::string script = readScript(file, stop, ignored);
  if (!mayUseSqlcmd(script)) return files;
  ScriptVariables variables;
  for (LineWalker walker(script); !walker.atEnd();) {
    const std::string_view line = walker.current();
    const std::string word = commandOf(line);
    if (word.empty()) {
      walker.skipText();
      continue;
    }
    walker.skipLine();
    if (word == "setvar") runSetvar(variables, trimRightBlanks(skipBlanks(line)).substr(word.size() + 1));
    if (word != "r") continue;
    std::string why;
    const std::string name = replaced(includedName(line), variables);
    if (fs::path found = paths.find(file.parent_path(), name, why); !found.empty()) files.push_back(std::move(found));
  }
  return files;
}

}  // namespace qrel
