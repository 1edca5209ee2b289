// A text pane: a text, its lines, its selection and the colours of its character ranges.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/controls/control.h"

namespace qrel {

// A text comes in with any line ends: CR LF, a lone LF, a lone CR. The pane's own text has a single LF for each of
// them, and all else goes by it: offsets are 0-based and count bytes of its UTF-8, lines are 0-based and break at its
// LF. A final break leaves an empty last line. Lines don't wrap. An empty text has one empty line.
class TextPane : public Control {
 public:
  using Control::Control;

  struct Range {
    std::size_t start = 0;
    std::size_t length = 0;
    std::uint32_t colour = 0;  // 0x00BBGGRR
  };

  const std::string& text() const { return text_; }
  // The text as it was put in.
  const std::string& givenText() const { return given_ ? *given_ : text_; }
  // Selection, caret, scrolling and backgrounds are gone afterwards.
  void setText(std::string text);

  std::size_t lineCount() const;
  // Offset of the line's first character, -1 when there is no such line.
  long lineOffset(std::size_t line) const;

  std::size_t selectionStart() const { return selectionStart_; }
  std::size_t selectionLength() const { return selectionLength_; }
  // Cut to the text.
  void setSelection(std::size_t start, std::size_t length);
  std::string selectedText() const { return text_.substr(selectionStart_, selectionLength_); }

  const std::vector<Range>& backgrounds() const { return backgrounds_; }
  void setBackground(std::size_t start, std::size_t length, std::uint32_t colour);
  // These in place of all earlier ones, told to the observer once.
  void setBackgrounds(std::vector<Range> backgrounds);
  void clearBackgrounds();

  // Another order of lines for a face to show: the text's lines, with empty places between them. The text itself, all
  // offsets and what is selected stay as they are. None: the lines as they are. They are gone with the text.
  struct Row {
    long line = -1;                   // 0-based; -1: an empty place
    std::uint32_t colour = 0xFFFFFF;  // 0x00BBGGRR
    std::vector<Range> stronger =
        {};  // of that line, from its start, what stands out of it; without a colour of its own
  };
  const std::vector<Row>& rows() const { return rows_; }
  void setRows(std::vector<Row> rows);
  // The text was put in anew.
  std::function<void()> onNewText;

  // What prints on each page besides the text; see app/modTextPane.h.
  std::string header;
  bool pageNumbers = false;

  // The line, or the row where there are rows, that a face shows at the top. A person's scrolling raises the event,
  // code doesn't.
  std::size_t topLine() const { return topLine_; }
  void setTopLine(std::size_t line);  // or the row that shows it
  void setTopRow(std::size_t row);
  void personScrolls(std::size_t line);
  std::function<void()> onScroll;

  // A person double-clicks a line, or presses Enter with the caret in it; only where lines can be chosen.
  std::function<void(std::size_t line)> onLineChosen;
  // Asks the face to show the field for a text to search in the pane.
  void askSearch() {
    if (onSearchAsked) onSearchAsked();
  }
  std::function<void()> onSearchAsked;
  // The line that holds an offset of the text; the last one for any beyond.
  std::size_t lineAt(std::size_t offset) const;
  // Without its line end; empty when there is no such line.
  std::string lineText(std::size_t line) const;

  // Page measures in twips, font size in points.
  int pageWidth = 0;
  int pageHeight = 0;
  double fontSize = 8.25;
  bool readOnly = false;  // a person can select and copy, not type

 private:
  void findLines() const;
  std::string text_;
  std::optional<std::string> given_;             // where it isn't the same
  mutable std::vector<std::size_t> lineStarts_;  // filled when first asked for
  std::size_t selectionStart_ = 0;
  std::size_t selectionLength_ = 0;
  std::size_t topLine_ = 0;
  std::vector<Range> backgrounds_;
  std::vector<Row> rows_;
};

}  // namespace qrel
