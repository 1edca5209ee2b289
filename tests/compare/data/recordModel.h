// The comparison of two tables' records the slow way, over plain lists: what the real one must come to. Values are
// texts, no value is Null.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qrel {

using ModelRow = std::vector<std::optional<std::string>>;

struct ModelCase {
  std::vector<std::string> names[2];  // columns as selected
  std::vector<bool> isText;           // by column
  std::vector<ModelRow> rows[2];
  bool byKey = false;
  std::vector<std::size_t> keys;    // up to three columns, of both tables
  bool keyCannotBeWritten = false;  // the first key's name has a blank
  int offsets[2] = {0, 0};
  int limit = 500;
  bool caseSensitive = false;
  bool fill = true;  // a window shows the differences
};

struct ModelCell {
  std::string text;
  std::uint32_t textColour = 0;
  std::uint32_t backColour = 0xFFFFFFFF;
  bool operator==(const ModelCell&) const = default;
};

class RecordModel {
 public:
  explicit RecordModel(const ModelCase& input) : in_(input) {}

  bool identical = false;
  int diffs = 0;
  std::vector<std::string> boxes;            // how they begin
  std::vector<std::vector<ModelCell>> grid;  // empty: never touched

  void run() {
    const int count1 = static_cast<int>(in_.rows[0].size()), count2 = static_cast<int>(in_.rows[1].size());
    if (count1 == 0 && count2 == 0) {
      identical = true;
      return;
    }
    least_ = std::min(count1, count2);
    present_.assign(in_.rows[1].size(), true);
    columns_ = in_.names[0].size() + 1;
    resize(1);
    grid[0][0].text = "Row";
    for (std::size_t i = 1; i < columns_; ++i) grid[0][i].text = in_.names[0][i - 1];
    try {
      if (walk()) identical = count(count1, count2);
    } catch (const NoRecord&) {
      boxes.push_back("Error occured while comparing records.");
    }
    if (offsetUsed_)
      while (grid.size() >= 2 && std::atoi(grid.back()[0].text.c_str()) == 0) resize(grid.size() - 1);
  }

 private:
  struct NoRecord {};
  static constexpr std::uint32_t sourceOnly = 0xC0FFC0, targetOnly = 0xC0E0FF, diffSource = 0xFFFF00,
                                 diffTarget = 0x80FFFF;

  static std::string shown(const std::optional<std::string>& value) { return value.value_or("Null"); }
  static std::string trimmed(std::string text) {
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
  }
  static std::string upper(std::string text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] >= 'a' && text[i] <= 'z') text[i] = static_cast<char>(text[i] - 32);
      if (text.compare(i, 2, "ä") == 0) text.replace(i, 2, "Ä");
    }
    return text;
  }
  // As the server's collation has it: without case and without blanks at the end.
  static bool sameKey(std::string a, std::string b) {
    a.erase(a.find_last_not_of(' ') + 1);
    b.erase(b.find_last_not_of(' ') + 1);
    return upper(a) == upper(b);
  }

  std::size_t end(int side) const { return in_.rows[side].size(); }
  const ModelRow& record(int side) const {
    if (at_[side] >= end(side)) throw NoRecord{};
    return in_.rows[side][at_[side]];
  }
  bool eof(int side) const { return at_[side] >= end(side); }
  void first(int side) {
    at_[side] = 0;
    while (side == 1 && !eof(1) && !present_[at_[1]]) ++at_[1];
  }
  void next(int side) {
    if (eof(side)) throw NoRecord{};
    do ++at_[side];
    while (side == 1 && !eof(1) && !present_[at_[1]]);
  }

  // False: by an error.
  bool findPartner() {
    const bool several = in_.keys.size() > 1;
    // A filter that can't be set leaves the first record.
    if (in_.keyCannotBeWritten) return several;
    for (const std::size_t key : in_.keys)
      if (several && shown(record(0)[key]).find("'Null'") != std::string::npos) return true;
    for (first(1); !eof(1); next(1)) {
      bool all = true;
      for (const std::size_t key : in_.keys) {
        const std::string wanted = shown(record(0)[key]);
        const auto& value = record(1)[key];
        // One key looks for the text 'Null', which no number can be; several read it as Null.
        const bool wantsNull = several && wanted == "Null";
        if (!several && !in_.isText[key] && wanted == "Null") return false;
        all = all && (wantsNull ? !value : value && sameKey(*value, trimmed(wanted).empty() ? "" : wanted));
      }
      if (all) return true;
    }
    return true;
  }

  // False: nothing is counted.
  bool walk() {
    for (int rec = 1; rec <= least_; ++rec) {
      if (in_.byKey) {
        for (;; ++rec) {
          if (eof(0) || (rec > 1 && eof(1))) return true;
          first(1);
          if (rec == 1)
            first(0);
          else
            next(0);
          if (eof(0) || eof(1)) return true;
          if (!findPartner()) return true;
          if (!eof(1)) break;
          ++diffs;
          addRecord();
          first(1);
        }
        ++matched_;
      } else if (rec == 1) {
        first(0);
        first(1);
        for (int side : {0, 1})
          for (int i = 2; i <= in_.offsets[side] && !eof(side); ++i) next(side);
        offsetUsed_ = in_.offsets[0] > 1 || in_.offsets[1] > 1;
      } else {
        next(0);
        next(1);
        if ((in_.offsets[0] > 1 && eof(0)) || (in_.offsets[1] > 1 && eof(1))) return true;
      }
      if (differs()) {
        ++diffs;
        if (diffs < in_.limit) addPair();
      }
      if (in_.byKey) present_[at_[1]] = false;
    }
    return true;
  }

  bool differs() const {
    for (std::size_t i = 0; i < in_.names[0].size(); ++i) {
      std::string a = trimmed(shown(record(0)[i])), b;
      if (i < in_.names[1].size()) b = trimmed(shown(record(1)[i]));
      if (!in_.caseSensitive) a = upper(a), b = upper(b);
      if (a != b) return true;
    }
    return false;
  }

  bool count(int count1, int count2) {
    int left1 = count1, left2 = count2;
    if (in_.offsets[0] > 1) left1 = count1 - in_.offsets[0] + 1;
    if (in_.offsets[1] > 1) left2 = count2 - in_.offsets[1] + 1;
    diffs += std::abs(left1 - left2);
    if (in_.byKey && count2 > matched_) {
      list(1, targetOnly, 1, count2 - matched_);
      return false;
    }
    if (count1 != count2 && !in_.fill) return false;
    if (count1 < count2)
      list(1, targetOnly, least_ + 1, count2);
    else if (count1 > count2)
      list(0, sourceOnly, least_ + 1, count1);
    return diffs < 1;
  }

  void resize(std::size_t count) { grid.resize(count, std::vector<ModelCell>(columns_)); }
  void paint(std::size_t row, std::size_t last, std::uint32_t colour) {
    for (std::size_t i = 0; i <= last && i < columns_; ++i) grid[row][i].backColour = colour;
  }
  void addRecord() {
    const auto row = static_cast<std::size_t>(diffs);
    resize(row + 1);
    grid[row][0].text = std::to_string(diffs);
    for (std::size_t i = 0; i < in_.names[0].size(); ++i) grid[row][i + 1].text = shown(record(0)[i]);
    paint(row, in_.names[0].size(), sourceOnly);
  }
  void addPair() {
    const std::size_t row = grid.size();
    resize(row + 2);
    grid[row][0].text = grid[row + 1][0].text = std::to_string(diffs);
    for (std::size_t i = 0; i < in_.names[0].size(); ++i) {
      const std::string a = shown(record(0)[i]);
      const std::string b = i < in_.names[1].size() ? shown(record(1)[i]) : "";
      const std::uint32_t colour = a == b ? 0 : 255;
      grid[row][i + 1].text = a;
      grid[row + 1][i + 1].text = b;
      grid[row][i + 1].textColour = grid[row + 1][i + 1].textColour = colour;
    }
    paint(row, in_.names[0].size(), diffSource);
    paint(row + 1, in_.names[0].size(), diffTarget);
  }
  void list(int side, std::uint32_t colour, int from, int to) {
    const std::size_t before = grid.size();
    std::size_t wanted = static_cast<std::size_t>(to - from + 1) + before;
    if (wanted > static_cast<std::size_t>(in_.limit)) wanted = static_cast<std::size_t>(in_.limit) + 1;
    resize(wanted);
    std::size_t row = before - 1, last = 0, columns = 0;
    try {
      for (int rec = from; rec <= to; ++rec) {
        if (rec == 1)
          first(side);
        else
          next(side);
        if (eof(side) || ++row >= wanted) break;
        last = row;
        grid[row][0].text = std::to_string(rec);
        columns = std::min(in_.names[side].size(), columns_ - 1);
        for (std::size_t i = 1; i <= columns; ++i) grid[row][i].text = shown(record(side)[i - 1]);
      }
    } catch (const NoRecord&) {
      boxes.push_back("Error in Sub AddMultipleRecordsToGrid, error nr 3021");
      return;
    }
    for (row = before; row <= last && before <= grid.size(); ++row) paint(row, columns, colour);
  }

  const ModelCase& in_;
  int least_ = 0;
  int matched_ = 0;
  bool offsetUsed_ = false;
  std::size_t at_[2] = {0, 0};
  std::size_t columns_ = 0;
  std::vector<bool> present_;
};

}  // namespace qrel
