// The rows of a text pane in a document: what stands between the lines that it shows side by side with another pane.
#pragma once

#include <QBrush>
#include <QPalette>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/controls/textPane.h"

namespace qrel {

// Of one block of the document: where a coloured range begins and ends in it; -1 as the end: it is filled to the right
// edge.
struct PaneStretch {
  enum class Look : std::uint8_t { Plain, Stronger, EmptyPlace };

  int block = 0;
  int from = 0, to = 0;  // UTF-16 positions in the block
  std::uint32_t colour = 0;
  Look look = Look::Plain;
};

// How a stretch is filled under this palette.
QBrush brushOf(const PaneStretch& stretch, const QPalette& palette);

// Which block of a document shows which line. Without rows block n shows line n.
class PaneRows {
 public:
  // Whether these are the pane's rows as they were taken last.
  bool areOf(const TextPane& pane) const;
  // Takes over the pane's rows and returns the document's text.
  std::string take(const TextPane& pane);

  bool any() const { return !lines_.empty(); }
  int blockOf(std::size_t line) const;
  // -1: none.
  long lineOf(int block) const;
  // The line of the block or of the next one that has one; -1 behind the last.
  long lineFrom(int block) const;
  std::vector<PaneStretch> stretches(const TextPane& pane) const;

 private:
  std::vector<long> lines_;  // by block
  std::vector<int> blocks_;  // by line
};

}  // namespace qrel
