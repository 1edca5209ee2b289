#include "platform/textBlocks.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "platform/error.h"

namespace qrel {

namespace {

constexpr std::size_t firstBlockSize = std::size_t{4} << 10;
constexpr std::size_t largestBlockSize = std::size_t{32} << 20;

// In front of each text stands its length: one byte, or for the longer ones this byte and the length as a Length.
constexpr unsigned char longText = 255;
using Length = std::uint32_t;

}  // namespace

const char* TextBlocks::keep(std::string_view bytes) {
  if (bytes.size() > std::numeric_limits<Length>::max()) {
    throw RuntimeError(errorNumber::outOfMemory, "Out of memory: a value is longer than 4 GB.");
  }
  const bool isLong = bytes.size() >= longText;
  Block& block = blockWith(1 + (isLong ? sizeof(Length) : 0) + bytes.size());
  const char* place = block.data() + block.size();
  if (isLong) {
    const auto length = static_cast<Length>(bytes.size());
    const auto* lengthBytes = reinterpret_cast<const char*>(&length);
    block.push_back(static_cast<char>(longText));
    block.insert(block.end(), lengthBytes, lengthBytes + sizeof length);
  } else {
    block.push_back(static_cast<char>(bytes.size()));
  }
  block.insert(block.end(), bytes.begin(), bytes.end());
  return place;
}

// The current block, or the next one that has the room; a block's bytes never move.
TextBlocks::Block& TextBlocks::blockWith(std::size_t room) {
  while (current_ < blocks_.size()) {
    Block& block = blocks_[current_];
    if (block.capacity() - block.size() >= room) return block;
    ++current_;
  }
  const std::size_t twice = blocks_.empty() ? 0 : 2 * blocks_.back().capacity();
  const std::size_t next = std::clamp(twice, firstBlockSize, largestBlockSize);
  blocks_.emplace_back().reserve(std::max(next, room));
  return blocks_.back();
}

std::string_view TextBlocks::textAt(const char* kept) {
  const auto first = static_cast<unsigned char>(*kept);
  if (first < longText) return {kept + 1, first};
  Length length = 0;
  std::memcpy(&length, kept + 1, sizeof length);
  return {kept + 1 + sizeof length, length};
}

void TextBlocks::clear() {
  for (Block& block : blocks_) block.clear();
  current_ = 0;
}

std::size_t TextBlocks::memoryUsed() const {
  std::size_t bytes = 0;
  for (const Block& block : blocks_) bytes += block.capacity();
  return bytes;
}

}  // namespace qrel
