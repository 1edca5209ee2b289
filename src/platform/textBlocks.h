// Texts one behind the other in large blocks: nothing is allocated for each, and none ever moves.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "platform/data/largePages.h"

namespace qrel {

class TextBlocks {
 public:
  // Copies the bytes, with their length in front of them. Raises RuntimeError 7 for more than 4 GB.
  const char* keep(std::string_view bytes);
  // What keep gave; it stays until clear or the end of the blocks.
  static std::string_view textAt(const char* kept);
  // Drops all texts and keeps the memory for the next ones.
  void clear();
  // Bytes held.
  std::size_t memoryUsed() const;

 private:
  using Block = std::vector<char, LargePages<char>>;
  Block& blockWith(std::size_t room);

  std::vector<Block> blocks_;
  std::size_t current_ = 0;  // blocks before it are full
};

}  // namespace qrel
