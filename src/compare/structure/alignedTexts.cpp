#include "compare/structure/alignedTexts.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "app/Program.h"
#include "compare/structure/longestCommon.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::size_t mostLookedAt = 10'000;  // pairs of lines that are tried at one place
// How much two lines must have in common to be taken for one that was changed: half goes by the share of their words,
// half by the first one, which names a column or says what a statement does. A single line in place of a single other
// one is taken for it sooner.
constexpr double alike = 0.45;
constexpr double alikeWhenSingle = 0.4;

// The comments of one line.
using CommentStretches = std::vector<AlignedStretch>;

// Walks over a text and keeps where its comments are, line by line. What is in quotes or brackets is no comment.
class CommentFinder {
 public:
  explicit CommentFinder(const std::vector<std::string_view>& lines) {
    found_.reserve(lines.size());
    for (const std::string_view line : lines) {
      found_.emplace_back();
      walk(line);
    }
  }
  std::vector<CommentStretches> found() { return std::move(found_); }

 private:
  void walk(std::string_view line) {
    for (std::size_t i = 0; i < line.size();)
      i = inBlock_ ? block(line, i) : closing_ ? quoted(line, i) : code(line, i);
  }
  std::size_t block(std::string_view line, std::size_t from) {
    const std::size_t end = line.find("*/", from);
    inBlock_ = end == std::string_view::npos;
    const std::size_t behind = inBlock_ ? line.size() : end + 2;
    found_.back().push_back({from, behind - from});
    return behind;
  }
  std::size_t quoted(std::string_view line, std::size_t from) {
    const std::size_t end = line.find(closing_, from);
    if (end == std::string_view::npos) return line.size();
    closing_ = 0;
    return end + 1;
  }
  std::size_t code(std::string_view line, std::size_t from) {
    const std::string_view two = line.substr(from, 2);
    if (two == "--") {
      found_.back().push_back({from, line.size() - from});
      return line.size();
    }
    if (two == "/*") {
      const std::size_t end = line.find("*/", from + 2);
      inBlock_ = end == std::string_view::npos;
      const std::size_t behind = inBlock_ ? line.size() : end + 2;
      found_.back().push_back({from, behind - from});
      return behind;
    }
    if (line[from] == '\'' || line[from] == '"') closing_ = line[from];
    if (line[from] == '[') closing_ = ']';
    return from + 1;
  }

  std::vector<CommentStretches> found_;
  bool inBlock_ = false;
  char closing_ = 0;  // what ends the string or name that the walk is in
};

// A word, a sign or a run of blanks of a line.
struct Token {
  AlignedStretch place;
  std::string key;  // what it is compared by
};

bool isBlank(char each) { return each == ' ' || each == '\t' || each == '\r' || each == '\v' || each == '\f'; }

bool isOfWord(char each) {
  return (each >= '0' && each <= '9') || (each >= 'A' && each <= 'Z') || (each >= 'a' && each <= 'z') || each == '_' ||
         each == '@' || each == '#' || each == '$' || (static_cast<unsigned char>(each) & 0x80) != 0;
}

std::size_t endOfToken(std::string_view line, std::size_t from) {
  const auto run = [&](auto belongs) {
    std::size_t end = from;
    while (end < line.size() && belongs(line[end])) ++end;
    return end;
  };
  if (isBlank(line[from])) return run(isBlank);
  return isOfWord(line[from]) ? run(isOfWord) : from + 1;
}

// What counts of a line.
std::vector<Token> tokensOf(std::string_view line, const CommentStretches& comments, const AlignOptions& options) {
  std::vector<Token> tokens;
  auto comment = comments.begin();
  for (std::size_t from = 0; from < line.size();) {
    if (!options.comments && comment != comments.end() && comment->start == from) {
      from += comment->length;
      ++comment;
      continue;
    }
    std::size_t end = endOfToken(line, from);
    if (!options.comments && comment != comments.end()) end = std::min(end, comment->start);
    const std::string_view word = line.substr(from, end - from);
    const bool blank = isBlank(word.front());
    const bool counts = options.blanks || !blank || (!tokens.empty() && tokens.back().key != " ");
    if (counts)
      tokens.push_back({{from, end - from},
                        blank && !options.blanks ? std::string(" ")
                        : options.letterCase     ? std::string(word)
                                                 : upperCase(word)});
    from = end;
  }
  if (!options.blanks && !tokens.empty() && tokens.back().key == " ") tokens.pop_back();
  return tokens;
}

// One text made ready.
struct SideOfTexts {
  SideOfTexts(std::string_view text, const AlignOptions& options)
      : lines(LinesOf(text)),
        comments(options.comments ? std::vector<CommentStretches>(lines.size()) : CommentFinder(lines).found()) {}

  std::vector<Token> tokens(std::size_t line, const AlignOptions& options) const {
    return tokensOf(lines[line], comments[line], options);
  }

  std::vector<std::string_view> lines;
  std::vector<CommentStretches> comments;
  std::vector<int> numbers;       // of each line; lines that count as the same have the same
  std::vector<bool> nothingLeft;  // nothing of the line counts
};

class Aligner {
 public:
  Aligner(std::string_view source, std::string_view target, const AlignOptions& options)
      : options_(options), sides_{SideOfTexts(source, options), SideOfTexts(target, options)} {
    for (SideOfTexts& side : sides_) numberLines(side);
  }

  std::vector<AlignedRow> run() {
    std::size_t source = 0, target = 0;
    for (const CommonElement& common : LongestCommon(sides_[0].numbers, sides_[1].numbers)) {
      fillGap(source, common.source, target, common.target);
      const bool same = sides_[0].lines[common.source] == sides_[1].lines[common.target];
      add(same ? RowKind::Same : RowKind::LeftOut, static_cast<long>(common.source), static_cast<long>(common.target));
      source = common.source + 1;
      target = common.target + 1;
    }
    fillGap(source, sides_[0].lines.size(), target, sides_[1].lines.size());
    return std::move(rows_);
  }

 private:
  // The words of a line, by their numbers.
  struct Words {
    int first = -1;
    std::vector<int> sorted;
  };

  void numberLines(SideOfTexts& side) {
    const bool allCounts = options_.letterCase && options_.blanks && options_.comments;
    for (std::size_t line = 0; line < side.lines.size(); ++line) {
      if (allCounts) {
        side.numbers.push_back(numberOf(std::string(side.lines[line])));
        side.nothingLeft.push_back(false);
        continue;
      }
      std::string key;
      bool onlyBlanks = true;
      for (const Token& token : side.tokens(line, options_)) {
        key += token.key;
        onlyBlanks = onlyBlanks && isBlank(token.key.front());
      }
      side.numbers.push_back(numberOf(std::move(key)));
      side.nothingLeft.push_back(onlyBlanks && (!options_.blanks || !side.comments[line].empty()));
    }
  }

  int numberOf(std::string key) {
    return numbers_.emplace(std::move(key), static_cast<int>(numbers_.size())).first->second;
  }

  void add(RowKind kind, long source, long target) { rows_.push_back({kind, {source, target}, {}}); }

  void addAlone(std::size_t side, std::size_t from, std::size_t to) {
    for (std::size_t line = from; line < to; ++line) {
      const RowKind kind = sides_[side].nothingLeft[line] ? RowKind::LeftOut
                           : side == 0                    ? RowKind::OnlyInSource
                                                          : RowKind::OnlyInTarget;
      const long place = static_cast<long>(line);
      add(kind, side == 0 ? place : -1, side == 0 ? -1 : place);
    }
  }

  // The lines between two common ones: those that are alike share a row.
  void fillGap(std::size_t source, std::size_t sourceEnd, std::size_t target, std::size_t targetEnd) {
    for (const CommonElement& pair : alikeLines(source, sourceEnd, target, targetEnd)) {
      addAlone(0, source, pair.source);
      addAlone(1, target, pair.target);
      addChanged(pair.source, pair.target);
      source = pair.source + 1;
      target = pair.target + 1;
    }
    addAlone(0, source, sourceEnd);
    addAlone(1, target, targetEnd);
  }

  Words wordsOf(std::size_t side, std::size_t line) {
    Words words;
    for (const Token& token : sides_[side].tokens(line, options_))
      if (isOfWord(token.key.front())) words.sorted.push_back(numberOf(token.key));
    if (!words.sorted.empty()) words.first = words.sorted.front();
    std::sort(words.sorted.begin(), words.sorted.end());
    return words;
  }

  std::vector<Words> wordsOf(std::size_t side, std::size_t from, std::size_t to) {
    std::vector<Words> words;
    for (std::size_t line = from; line < to; ++line) words.push_back(wordsOf(side, line));
    return words;
  }

  // 0 for what isn't alike, else up to 1.
  static double likeness(const Words& left, const Words& right, bool single) {
    std::size_t common = 0;
    for (std::size_t i = 0, j = 0; i < left.sorted.size() && j < right.sorted.size();) {
      const int difference = left.sorted[i] - right.sorted[j];
      common += difference == 0;
      i += difference <= 0;
      j += difference >= 0;
    }
    if (common == 0) return 0;
    const double share =
        2.0 * static_cast<double>(common) / static_cast<double>(left.sorted.size() + right.sorted.size());
    if (single) return share < alikeWhenSingle ? 0 : share;
    const double both = (share + (left.first == right.first ? 1 : 0)) / 2;
    return both < alike ? 0 : both;
  }

  // Pairs in the order of both, of the greatest likeness in all.
  std::vector<CommonElement> alikeLines(std::size_t source, std::size_t sourceEnd, std::size_t target,
                                        std::size_t targetEnd) {
    const std::size_t height = sourceEnd - source, width = targetEnd - target;
    if (height == 0 || width == 0) return {};
    if (height > mostLookedAt / width) return alikeInOrder(source, sourceEnd, target, targetEnd);
    const std::vector<Words> left = wordsOf(0, source, sourceEnd), right = wordsOf(1, target, targetEnd);
    // best[i][j]: of the lines from i and from j on.
    std::vector<std::vector<double>> best(height + 1, std::vector<double>(width + 1, 0));
    std::vector<std::vector<double>> share(height, std::vector<double>(width, 0));
    for (std::size_t i = height; i-- > 0;)
      for (std::size_t j = width; j-- > 0;) {
        share[i][j] = likeness(left[i], right[j], height == 1 && width == 1);
        best[i][j] = std::max({best[i + 1][j], best[i][j + 1], share[i][j] + best[i + 1][j + 1]});
      }
    std::vector<CommonElement> pairs;
    for (std::size_t i = 0, j = 0; i < height && j < width;) {
      if (share[i][j] > 0 && best[i][j] <= share[i][j] + best[i + 1][j + 1])
        pairs.push_back({source + i++, target + j++});
      else
        best[i][j] <= best[i + 1][j] ? ++i : ++j;
    }
    return pairs;
  }

  // For places with too many lines to try all pairs: line by line.
  std::vector<CommonElement> alikeInOrder(std::size_t source, std::size_t sourceEnd, std::size_t target,
                                          std::size_t targetEnd) {
    std::vector<CommonElement> pairs;
    for (; source < sourceEnd && target < targetEnd; ++source, ++target)
      if (likeness(wordsOf(0, source), wordsOf(1, target), false) > 0) pairs.push_back({source, target});
    return pairs;
  }

  void addChanged(std::size_t source, std::size_t target) {
    add(RowKind::Changed, static_cast<long>(source), static_cast<long>(target));
    const std::vector<Token> tokens[] = {sides_[0].tokens(source, options_), sides_[1].tokens(target, options_)};
    std::vector<int> keys[2];
    for (const std::size_t side : {0U, 1U})
      for (const Token& token : tokens[side]) keys[side].push_back(numberOf(token.key));
    std::vector<bool> common[] = {std::vector<bool>(tokens[0].size()), std::vector<bool>(tokens[1].size())};
    for (const CommonElement& each : LongestCommon(keys[0], keys[1]))
      common[0][each.source] = common[1][each.target] = true;
    for (const std::size_t side : {0U, 1U}) rows_.back().changes[side] = leftOver(tokens[side], common[side]);
  }

  // Neighbours are one stretch.
  static std::vector<AlignedStretch> leftOver(const std::vector<Token>& tokens, const std::vector<bool>& common) {
    std::vector<AlignedStretch> stretches;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
      if (common[i]) continue;
      const AlignedStretch& place = tokens[i].place;
      if (i > 0 && !common[i - 1])
        stretches.back().length = place.start + place.length - stretches.back().start;
      else
        stretches.push_back(place);
    }
    return stretches;
  }

  const AlignOptions options_;
  std::array<SideOfTexts, 2> sides_;
  std::unordered_map<std::string, int> numbers_;  // of lines and words
  std::vector<AlignedRow> rows_;
};

}  // namespace

AlignOptions AlignOptionsOf(const Program& program) {
  const SettingsState& settings = program.settings;
  return {settings.CaseSensitive, !settings.IgnoreWhitespace, !settings.IgnoreComments};
}

std::vector<std::string_view> LinesOf(std::string_view strText) {
  std::vector<std::string_view> lines;
  for (std::size_t from = 0;;) {
    const std::size_t end = strText.find('\n', from);
    lines.push_back(strText.substr(from, end - from));
    if (end == std::string_view::npos) return lines;
    from = end + 1;
  }
}

std::vector<AlignedRow> AlignTexts(std::string_view strSource, std::string_view strTarget,
                                   const AlignOptions& options) {
  return Aligner(strSource, strTarget, options).run();
}

}  // namespace qrel
