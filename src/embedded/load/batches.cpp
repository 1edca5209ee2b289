#include "embedded/load/batches.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

#include "embedded/language/scan.h"
#include "platform/text.h"

namespace qrel {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view skipBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  return text;
}

// How often the batch before a GO line runs; -1 when the line is no GO line.
int goCount(std::string_view line) {
  line = skipBlanks(line);
  if (line.size() < 2 || !equalNoCase(line.substr(0, 2), "go")) return -1;
  line.remove_prefix(2);
  const bool parted = line.empty() || isBlank(line.front());
  line = skipBlanks(line);
  int count = 1;
  if (parted && !line.empty() && std::isdigit(static_cast<unsigned char>(line.front())) != 0) {
    const auto read = std::from_chars(line.data(), line.data() + line.size(), count);
    if (read.ec != std::errc()) return -1;
    line = skipBlanks(line.substr(static_cast<std::size_t>(read.ptr - line.data())));
  }
  if (line.starts_with(';')) line = skipBlanks(line.substr(1));
  return line.empty() || line.starts_with("--") ? count : -1;
}

bool isEmptyBatch(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c) != 0; });
}

// A line that reads as GO, wherever it stands.
struct GoLine {
  std::size_t begin = 0;
  std::size_t end = 0;  // behind its line end
  std::size_t line = 1;
  int count = 1;
};

std::vector<GoLine> goLines(std::string_view script) {
  std::vector<GoLine> lines;
  std::size_t line = 1;
  for (std::size_t at = 0; at < script.size(); ++line) {
    const std::size_t next = tsql::nextLine(script, at);
    if (const int count = goCount(tsql::lineAt(script, at)); count >= 0) lines.push_back({at, next, line, count});
    at = next;
  }
  return lines;
}

// Which GO lines part batches. Like the client tools, none does that stands in a string, a bracketed or quoted name or
// a comment. But where something is never closed, that would lose all that follows: then as few parts between GO lines
// as possible are given up, each as a batch of its own that ends at its GO line with something open.
class BatchCuts {
 public:
  BatchCuts(std::string_view script, const std::vector<GoLine>& lines) : script_(script), lines_(lines) {}

  std::vector<bool> find() {
    std::vector<bool> cuts(lines_.size());
    tsql::OpenPart open;
    for (std::size_t part = 0; part <= lines_.size(); ++part) {
      open = behind(part, open);
      if (part < lines_.size()) cuts[part] = open.mark == 0;
    }
    if (open.mark == 0) return cuts;
    countLosses();
    int state = 0;
    for (std::size_t part = 0; part < lines_.size(); ++part) {
      state = next(part, state);
      cuts[part] = state == 0 || !goesOn(part, state);
      if (cuts[part]) state = 0;
    }
    return cuts;
  }

 private:
  // Nothing open, the three quotes, a comment of depth 1, 2, 3 or more.
  static constexpr int states = 7;
  static constexpr std::string_view marks = std::string_view("\0'\"[***", states);

  tsql::OpenPart behind(std::size_t part, const tsql::OpenPart& open) const {
    // What is open goes on through the GO line itself.
    const std::size_t begin = part == 0 ? 0 : open.mark != 0 ? lines_[part - 1].begin : lines_[part - 1].end;
    return tsql::openPartAt(script_, begin, part < lines_.size() ? lines_[part].begin : script_.size(), open);
  }
  int next(std::size_t part, int state) const {
    const char mark = marks[static_cast<std::size_t>(state)];
    const tsql::OpenPart open = behind(part, {mark, mark == '*' ? state - 3 : 0, 0});
    if (open.mark == '*') return 3 + std::min(open.depth, 3);
    return static_cast<int>(marks.find(open.mark));
  }
  // losses_[part][state]: how many parts are given up from here on at best.
  void countLosses() {
    losses_.assign(lines_.size() + 1, {});
    for (std::size_t part = lines_.size() + 1; part-- > 0;) {
      for (int state = 0; state < states; ++state) {
        const int open = next(part, state);
        int& loss = losses_[part][static_cast<std::size_t>(state)];
        if (part == lines_.size()) {
          loss = open == 0 ? 0 : 1;
        } else {
          const auto& following = losses_[part + 1];
          loss = open == 0 ? following[0] : std::min(following[static_cast<std::size_t>(open)], 1 + following[0]);
        }
      }
    }
  }
  bool goesOn(std::size_t part, int state) const {
    return losses_[part + 1][static_cast<std::size_t>(state)] < 1 + losses_[part + 1][0];
  }

  std::string_view script_;
  const std::vector<GoLine>& lines_;
  std::vector<std::array<int, states>> losses_;
};

}  // namespace

std::vector<Batch> splitBatches(std::string_view script) {
  const std::vector<GoLine> lines = goLines(script);
  const std::vector<bool> cuts = BatchCuts(script, lines).find();
  std::vector<Batch> batches;
  std::size_t begin = 0;
  std::size_t firstLine = 1;
  const auto add = [&](std::size_t end, int count) {
    const std::string_view text = script.substr(begin, end - begin);
    if (!isEmptyBatch(text)) batches.push_back({text, firstLine, count});
  };
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!cuts[i]) continue;
    add(lines[i].begin, lines[i].count);
    begin = lines[i].end;
    firstLine = lines[i].line + 1;
  }
  add(script.size(), 1);
  return batches;
}

}  // namespace qrel
