#include "platform/controls/control.h"

#include "platform/text.h"

namespace qrel {

void Control::changed() {
  if (observer) observer->controlChanged(*this);
}

void Control::setVisible(bool visible) {
  visible_ = visible;
  changed();
}

void Control::setEnabled(bool enabled) {
  enabled_ = enabled;
  changed();
}

void Control::setToolTip(std::string toolTip) {
  toolTip_ = std::move(toolTip);
  changed();
}

void Control::setFocus(bool selectAll) {
  ++focusRequests_;
  selectAll_ = selectAll;
  if (onFocus) onFocus();
}

void TextControl::setText(std::string text) {
  text_ = std::move(text);
  changed();
}

void Button::personClicks() {
  if (enabled() && visible() && !muted() && onClick) onClick();
}

void LinkLabel::personClicks() {
  if (enabled() && visible() && !muted() && onClick) onClick();
}

void ProgressBar::setValue(double percent) {
  value_ = percent;
  changed();
}

void TextBox::personTypes(std::string text) {
  if (readOnly || !enabled()) return;
  if (numeric) std::erase_if(text, [](char c) { return c < '0' || c > '9'; });
  setText(std::move(text));
  if (!muted() && onChange) onChange();
}

void CheckBox::setChecked(bool checked) {
  checked_ = checked;
  changed();
}

void CheckBox::personSets(bool checked) {
  if (!enabled()) return;
  setChecked(checked);
  if (!muted() && onClick) onClick();
}

void OptionButton::choose() {
  const bool was = chosen_;
  chosen_ = true;
  for (OptionButton* other : others_) {
    other->chosen_ = false;
    other->changed();
  }
  changed();
  if (!was && !muted() && onClick) onClick();
}

void OptionButton::group(const std::vector<OptionButton*>& buttons) {
  for (OptionButton* button : buttons) {
    button->others_.clear();
    for (OptionButton* other : buttons)
      if (other != button) button->others_.push_back(other);
  }
}

void ImageButton::setImage(int image) {
  image_ = image;
  changed();
}

void ComboBox::add(std::string text, long data) {
  rows_.push_back({std::move(text), data});
  changed();
}

void ComboBox::remove(std::size_t index) {
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(index));
  if (selected_ >= static_cast<int>(rows_.size())) selected_ = -1;
  changed();
}

void ComboBox::clear() {
  rows_.clear();
  selected_ = -1;
  changed();
}

void ComboBox::select(int index) {
  if (index >= static_cast<int>(rows_.size())) return;
  selected_ = index;
  changed();
  if (!muted() && onClick) onClick();
}

void CheckList::rowsChanged() {
  if (redraw_) tellRows();
}

void CheckList::tellRows() {
  changed();
  if (onRows) onRows();
}

std::size_t CheckList::add(std::string text) {
  rows_.emplace_back();
  rows_.back().cells.push_back(std::move(text));
  rowsChanged();
  return rows_.size() - 1;
}

void CheckList::clear() {
  rows_.clear();
  rowsChanged();
}

void CheckList::remove(std::size_t index) {
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(index));
  rowsChanged();
}

std::string CheckList::cell(std::size_t row, std::size_t column) const {
  const auto& cells = rows_.at(row).cells;
  return column < cells.size() ? cells[column] : std::string();
}

void CheckList::setCell(std::size_t row, std::size_t column, std::string text) {
  auto& cells = rows_.at(row).cells;
  if (column >= cells.size()) cells.resize(column + 1);
  cells[column] = std::move(text);
  rowsChanged();
}

void CheckList::setTicked(std::size_t row, bool ticked) {
  rows_.at(row).ticked = ticked;
  rowsChanged();
}

void CheckList::personTicks(std::size_t row, bool ticked) {
  if (!enabled()) return;
  setTicked(row, ticked);
  if (!muted() && onTick) onTick(row);
}

std::size_t CheckList::selectionCount() const {
  std::size_t count = 0;
  for (const Row& row : rows_) count += row.selected ? 1 : 0;
  return count;
}

int CheckList::firstSelected() const {
  for (std::size_t i = 0; i < rows_.size(); ++i)
    if (rows_[i].selected) return static_cast<int>(i);
  return -1;
}

void CheckList::select(std::size_t row) {
  if (row >= rows_.size()) return;
  for (Row& each : rows_) each.selected = false;
  rows_[row].selected = true;
  rowsChanged();
  if (!muted() && onClick) onClick();
}

void CheckList::clearSelection() {
  for (Row& row : rows_) row.selected = false;
  rowsChanged();
}

void CheckList::personSelects(const std::vector<std::size_t>& rows) {
  if (!enabled()) return;
  if (rows.empty() && !multipleSelection) return rowsChanged();
  for (Row& each : rows_) each.selected = false;
  for (std::size_t row : rows) {
    rows_.at(row).selected = true;
    if (!multipleSelection) break;
  }
  rowsChanged();
  if (!muted() && onClick) onClick();
}

int CheckList::find(std::string_view text, std::size_t from) const {
  const std::string wanted = lowerCase(text);
  for (std::size_t i = from; i < rows_.size(); ++i)
    if (lowerCase(rows_[i].cells.front()) == wanted) return static_cast<int>(i);
  return -1;
}

void CheckList::setRedraw(bool on) {
  const bool was = redraw_;
  redraw_ = on;
  if (on && !was) tellRows();
}

void CheckList::setNote(std::size_t row, std::string note) {
  rows_.at(row).note = std::move(note);
  rowsChanged();
}

void CheckList::setFilter(std::string_view filter) {
  filter_ = lowerCase(filter);
  rowsChanged();
}

bool CheckList::passes(std::size_t row) const {
  return filter_.empty() || lowerCase(rows_.at(row).cells.front()).find(filter_) != std::string::npos;
}

}  // namespace qrel
