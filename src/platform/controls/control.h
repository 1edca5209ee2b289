// Control models: what a window shows and takes in, without a window system.
//
// A model holds the state; a face (or a test) shows it. `changed` tells the one observer that the state moved; the
// events (onClick, onChange) are raised by `personDid...` calls, that is when a person acted. A control whose tag is
// "OFF" is muted: its events stay silent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrel {

class Control;

class ControlObserver {
 public:
  virtual ~ControlObserver() = default;
  virtual void controlChanged(Control& control) = 0;
};

class Control {
 public:
  explicit Control(std::string controlName) : name(std::move(controlName)) {}
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control() = default;

  const std::string name;  // "cmdOK"; a member of a control array is "cmbServer(0)"
  std::string tag;
  bool muted() const { return tag == "OFF"; }
  bool shown = true;  // false: kept by the model alone, a face has nothing for it

  bool visible() const { return visible_; }
  void setVisible(bool visible);
  bool enabled() const { return enabled_; }
  void setEnabled(bool enabled);
  const std::string& toolTip() const { return toolTip_; }
  void setToolTip(std::string toolTip);

  ControlObserver* observer = nullptr;  // not owned
  std::function<void()> onFocus;        // the face moves the keyboard focus here when setFocus is called
  // Asks for the keyboard focus; `selectAll` with the text selected.
  void setFocus(bool selectAll = false);
  std::size_t focusRequests() const { return focusRequests_; }
  // The face tells that the mouse pointer or the keyboard focus came here (true) or went (false).
  std::function<void(bool here)> onPointedAt;
  // The face tells that a mouse button went up over the control: 1 left, 2 right. The menu key and Shift+F10 count as
  // the right one.
  std::function<void(int button)> onMouseUp;
  // Files and folders that a person drags over the control can be dropped where this is set; it gets their paths.
  std::function<void(const std::vector<std::string>& paths)> onFilesDropped;
  bool selectAllOnFocus() const { return selectAll_; }

 protected:
  void changed();

 private:
  bool visible_ = true;
  bool enabled_ = true;
  bool selectAll_ = false;
  std::size_t focusRequests_ = 0;
  std::string toolTip_;
};

// A control with one text: label, button, text box.
class TextControl : public Control {
 public:
  using Control::Control;
  const std::string& text() const { return text_; }
  void setText(std::string text);

 private:
  std::string text_;
};

class Label : public TextControl {
 public:
  using TextControl::TextControl;
  std::optional<std::uint32_t> backColour;  // 0x00BBGGRR; none: the window's
};

class Button : public TextControl {
 public:
  using TextControl::TextControl;
  bool isDefault = false;  // Enter presses it
  bool isCancel = false;   // Esc presses it
  std::function<void()> onClick;
  // A person (or Enter, Esc) pressed it; a disabled, invisible or muted button does nothing.
  void personClicks();
};

// A button with a picture, by its number in the image list of its window; 0: none.
class ImageButton : public Button {
 public:
  using Button::Button;
  int image() const { return image_; }
  void setImage(int image);

 private:
  int image_ = 0;
};

class TextBox : public TextControl {
 public:
  using TextControl::TextControl;
  bool password = false;
  bool readOnly = false;
  bool numeric = false;                  // a person can type digits only
  std::vector<std::string> suggestions;  // texts that a face offers to whoever types; set before the window is made
  std::string placeholder;               // shown while the box is empty
  std::function<void()> onChange;
  void personTypes(std::string text);
};

// A text that acts like a link.
class LinkLabel : public TextControl {
 public:
  using TextControl::TextControl;
  std::function<void()> onClick;
  void personClicks();
};

// A check box, or one of a group of option buttons.
class CheckBox : public TextControl {
 public:
  using TextControl::TextControl;
  bool checked() const { return checked_; }
  void setChecked(bool checked);
  std::function<void()> onClick;
  void personSets(bool checked);

 private:
  bool checked_ = false;
};

// Option buttons exclude one another within their group; choosing one clears the rest and raises its event, also when
// code chooses it.
class OptionButton : public TextControl {
 public:
  using TextControl::TextControl;
  bool chosen() const { return chosen_; }
  void choose();
  std::function<void()> onClick;
  // Ties buttons into one group.
  static void group(const std::vector<OptionButton*>& buttons);

 private:
  bool chosen_ = false;
  std::vector<OptionButton*> others_;
};

// A drop-down list, also a plain list with one selection. Rows are 0-based; -1 is no selection.
class ComboBox : public Control {
 public:
  using Control::Control;
  std::size_t count() const { return rows_.size(); }
  const std::string& row(std::size_t index) const { return rows_.at(index).text; }
  long itemData(std::size_t index) const { return rows_.at(index).data; }
  void add(std::string text, long data = 0);
  void remove(std::size_t index);
  void clear();
  int selected() const { return selected_; }
  std::string text() const { return selected_ < 0 ? std::string() : rows_[static_cast<std::size_t>(selected_)].text; }
  // Selecting by code raises the event too, as the control does; a muted one stays silent.
  void select(int index);
  std::function<void()> onClick;

 private:
  struct Row {
    std::string text;
    long data = 0;
  };
  std::vector<Row> rows_;
  int selected_ = -1;
};

// Rows of cells with ticks and single or multiple selection. Cell 0 is the row's text.
class CheckList : public Control {
 public:
  using Control::Control;
  bool multipleSelection = false;

  std::size_t count() const { return rows_.size(); }
  // Adds a row and returns its index.
  std::size_t add(std::string text);
  void clear();
  void remove(std::size_t index);
  // Cells beyond those set are empty.
  std::string cell(std::size_t row, std::size_t column) const;
  void setCell(std::size_t row, std::size_t column, std::string text);
  // What the row stands for, as a number beside its cells; 0 unless it is set.
  std::int32_t id(std::size_t row) const { return rows_.at(row).id; }
  void setId(std::size_t row, std::int32_t id) { rows_.at(row).id = id; }
  bool ticked(std::size_t row) const { return rows_.at(row).ticked; }
  void setTicked(std::size_t row, bool ticked);
  // A person ticks or unticks a row; setTicked stays silent.
  void personTicks(std::size_t row, bool ticked);
  std::function<void(std::size_t row)> onTick;

  bool isSelected(std::size_t row) const { return rows_.at(row).selected; }
  std::size_t selectionCount() const;
  int firstSelected() const;  // -1: none
  // By code: makes the row the one selection and raises the event unless muted.
  void select(std::size_t row);
  void clearSelection();
  // A person's choice of rows. Where one row can be selected it stays when a person takes it out (Ctrl and a click).
  void personSelects(const std::vector<std::size_t>& rows);
  // The row whose text equals `text` without case, from `from` on; -1 when there is none.
  int find(std::string_view text, std::size_t from = 0) const;

  // What is known of a row beside its cells, in a word or two that a face shows behind them; empty unless it is set.
  const std::string& note(std::size_t row) const { return rows_.at(row).note; }
  void setNote(std::size_t row, std::string note);
  // A face shows the rows that have this in their text, case not counting; empty: all. Whatever else is done with the
  // rows, all of them take part.
  const std::string& filter() const { return filter_; }
  void setFilter(std::string_view filter);
  bool passes(std::size_t row) const;

  // While redraw is off the observer isn't told; switching it on tells it once.
  void setRedraw(bool on);
  // Told together with the observer: the window that the list stands in shows something of it elsewhere, too.
  std::function<void()> onRows;
  std::vector<int> columnWidths;
  std::function<void()> onClick;
  // The face tells that a person clicked a row twice; it is selected.
  std::function<void()> onDoubleClick;
  // The face tells that a mouse button or a key went up over the rows while modifier keys were held: the sum of 1
  // Shift, 2 Ctrl and 4 Alt.
  std::function<void(int shift)> onRowEvent;

 private:
  struct Row {
    std::vector<std::string> cells;
    std::string note;
    std::int32_t id = 0;
    bool ticked = false;
    bool selected = false;
  };
  void rowsChanged();
  void tellRows();
  std::vector<Row> rows_;
  std::string filter_;
  bool redraw_ = true;
};

// How far a work has come.
class ProgressBar : public Control {
 public:
  using Control::Control;
  double value() const { return value_; }  // percent; a face shows what lies between 0 and 100
  void setValue(double percent);

 private:
  double value_ = 0;
};

// A timer that ticks while it is enabled and the program yields to events. Made disabled.
class Timer : public Control {
 public:
  Timer(std::string controlName, int milliseconds) : Control(std::move(controlName)), interval(milliseconds) {
    setEnabled(false);
  }
  int interval;  // milliseconds
  std::function<void()> onTick;
  // The host's clock (or a test) says that the interval has passed.
  void tick() {
    if (enabled() && onTick) onTick();
  }
};

}  // namespace qrel
