#include "console/tables/alignedTable.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

constexpr int narrowest = 40;
constexpr int tabStop = 4;
constexpr const char* underlined = "\033[4m";
constexpr const char* notUnderlined = "\033[24m";
constexpr const char* asBefore = "\033[0m";

struct Sign {
  char sign;
  const char* colour;
};

Sign signOf(RowKind kind) {
  switch (kind) {
    case RowKind::Same:
      return {' ', ""};
    case RowKind::LeftOut:
      return {'.', "\033[90m"};
    case RowKind::Changed:
      return {'~', "\033[32m"};
    case RowKind::OnlyInSource:
      return {'-', "\033[31m"};
    case RowKind::OnlyInTarget:
      return {'+', "\033[36m"};
  }
  return {'?', ""};
}

// One column's part of a row.
struct ColumnPart {
  std::string text;
  int width = 0;  // characters
};

// Cuts a line into what fits its column.
class Cutter {
 public:
  Cutter(std::string_view line, const std::vector<AlignedStretch>& changes, int width, bool colours)
      : changes_(changes), width_(width), colours_(colours), parts_(1) {
    for (std::size_t from = 0; from < line.size();) {
      std::size_t end = from;
      nextCodePoint(line, end);
      const std::string_view character = line.substr(from, end - from);
      if (character == "\t")
        for (int blanks = tabStop - parts_.back().width % tabStop; blanks > 0; --blanks) put(" ", from);
      else
        put(visibleText(character), from);
      from = end;
    }
    underline(false);
  }
  std::vector<ColumnPart> parts() { return std::move(parts_); }

 private:
  void put(const std::string& shown, std::size_t from) {
    const int width = static_cast<int>(characterCount(shown));
    if (parts_.back().width + width > width_ && parts_.back().width > 0) {
      underline(false);
      parts_.emplace_back();
    }
    while (change_ < changes_.size() && changes_[change_].start + changes_[change_].length <= from) ++change_;
    underline(change_ < changes_.size() && changes_[change_].start <= from);
    parts_.back().text += shown;
    parts_.back().width += width;
  }
  void underline(bool on) {
    if (!colours_ || on == underlined_) return;
    parts_.back().text += on ? underlined : notUnderlined;
    underlined_ = on;
  }

  const std::vector<AlignedStretch>& changes_;
  const int width_;
  const bool colours_;
  bool underlined_ = false;
  std::size_t change_ = 0;
  std::vector<ColumnPart> parts_;
};

class Columns {
 public:
  Columns(std::ostream& out, const AlignedForm& form)
      : out_(out), colours_(form.colours), width_((std::max(form.columns, narrowest) - 3) / 2) {}

  void print(Sign sign, const std::vector<ColumnPart>& left, const std::vector<ColumnPart>& right) {
    for (std::size_t row = 0; row < std::max(left.size(), right.size()); ++row) {
      const ColumnPart& source = row < left.size() ? left[row] : ColumnPart{};
      std::string line = source.text + std::string(static_cast<std::size_t>(std::max(0, width_ - source.width)), ' ');
      line += std::string(" ") + (row == 0 ? sign.sign : ' ') + ' ';
      if (row < right.size()) line += right[row].text;
      line = trimRightBlanks(line);
      const bool coloured = colours_ && *sign.colour;
      out_ << (coloured ? sign.colour : "") << line << (coloured ? asBefore : "") << '\n';
    }
  }
  std::vector<ColumnPart> cut(std::string_view line, const std::vector<AlignedStretch>& changes) const {
    return Cutter(line, changes, width_, colours_).parts();
  }
  int width() const { return width_; }

 private:
  std::ostream& out_;
  const bool colours_;
  const int width_;
};

}  // namespace

void printAligned(std::ostream& out, std::string_view strSource, std::string_view strTarget,
                  const AlignOptions& options, const AlignedForm& form) {
  Columns columns(out, form);
  const std::vector<std::string_view> lines[] = {LinesOf(strSource), LinesOf(strTarget)};
  columns.print({' ', ""}, columns.cut("Source", {}), columns.cut("Target", {}));
  const ColumnPart rule{std::string(static_cast<std::size_t>(columns.width()), '-'), columns.width()};
  columns.print({' ', ""}, {rule}, {rule});
  for (const AlignedRow& row : AlignTexts(strSource, strTarget, options)) {
    std::vector<ColumnPart> cells[2];
    for (const std::size_t side : {0U, 1U})
      if (row.lines[side] >= 0)
        cells[side] = columns.cut(lines[side][static_cast<std::size_t>(row.lines[side])], row.changes[side]);
    columns.print(signOf(row.kind), cells[0], cells[1]);
  }
}

}  // namespace qrel
