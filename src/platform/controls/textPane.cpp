#include "platform/controls/textPane.h"

#include <algorithm>
#include <utility>

namespace qrel {

namespace {

std::string withSingleBreaks(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    out += text[i] == '\r' ? '\n' : text[i];
  }
  return out;
}

}  // namespace

void TextPane::setText(std::string text) {
  given_.reset();
  if (text.find('\r') == std::string::npos) {
    text_ = std::move(text);
  } else {
    text_ = withSingleBreaks(text);
    given_ = std::move(text);
  }
  lineStarts_.clear();
  backgrounds_.clear();
  rows_.clear();
  selectionStart_ = selectionLength_ = topLine_ = 0;
  changed();
  if (onNewText) onNewText();
}

void TextPane::setRows(std::vector<Row> rows) {
  if (rows.empty() && rows_.empty()) return;
  rows_ = std::move(rows);
  topLine_ = 0;
  changed();
}

void TextPane::setTopLine(std::size_t line) {
  const auto row = std::find_if(rows_.begin(), rows_.end(),
                                [line](const Row& each) { return each.line == static_cast<long>(line); });
  setTopRow(row == rows_.end() ? line : static_cast<std::size_t>(row - rows_.begin()));
}

void TextPane::setTopRow(std::size_t row) {
  topLine_ = row;
  changed();
}

void TextPane::personScrolls(std::size_t line) {
  topLine_ = line;
  if (!muted() && onScroll) onScroll();
}

void TextPane::findLines() const {
  if (!lineStarts_.empty()) return;
  lineStarts_.push_back(0);
  for (std::size_t i = 0; i < text_.size(); ++i) {
    if (text_[i] == '\n') lineStarts_.push_back(i + 1);
  }
}

std::size_t TextPane::lineCount() const {
  findLines();
  return lineStarts_.size();
}

long TextPane::lineOffset(std::size_t line) const {
  findLines();
  return line < lineStarts_.size() ? static_cast<long>(lineStarts_[line]) : -1;
}

void TextPane::setSelection(std::size_t start, std::size_t length) {
  selectionStart_ = std::min(start, text_.size());
  selectionLength_ = std::min(length, text_.size() - selectionStart_);
  changed();
}

void TextPane::setBackground(std::size_t start, std::size_t length, std::uint32_t colour) {
  backgrounds_.push_back({start, length, colour});
  changed();
}

void TextPane::setBackgrounds(std::vector<Range> backgrounds) {
  backgrounds_ = std::move(backgrounds);
  changed();
}

void TextPane::clearBackgrounds() {
  backgrounds_.clear();
  changed();
}

std::size_t TextPane::lineAt(std::size_t offset) const {
  findLines();
  const auto behind = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset);
  return static_cast<std::size_t>(behind - lineStarts_.begin()) - 1;
}

std::string TextPane::lineText(std::size_t line) const {
  const long start = lineOffset(line);
  if (start < 0) return {};
  const std::size_t from = static_cast<std::size_t>(start);
  return text_.substr(from, text_.find('\n', from) - from);
}

}  // namespace qrel
