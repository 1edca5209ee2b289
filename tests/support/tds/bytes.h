// The bytes of a message: numbers in little-endian order unless the name says otherwise, text as UTF-16.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qrel::tds {

// Raised for a message of the client that can't be read: the connection ends with it.
class BadMessage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string toUtf16(std::string_view utf8);
std::string fromUtf16(std::string_view bytes);

// `width` bytes of a number, the lowest first; and back.
void appendNumber(std::string& out, std::uint64_t number, std::size_t width);
std::uint64_t numberOf(std::string_view bytes);

class ByteWriter {
 public:
  ByteWriter& number(std::uint64_t value, std::size_t width) {
    appendNumber(bytes_, value, width);
    return *this;
  }
  ByteWriter& u8(std::uint64_t value) { return number(value, 1); }
  ByteWriter& u16(std::uint64_t value) { return number(value, 2); }
  ByteWriter& u32(std::uint64_t value) { return number(value, 4); }
  ByteWriter& u64(std::uint64_t value) { return number(value, 8); }
  ByteWriter& big16(std::uint64_t value) { return u8(value >> 8 & 0xFF).u8(value & 0xFF); }
  ByteWriter& raw(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }
  // Text with its number of UTF-16 units in front, in one byte or two. What is longer than that is cut.
  ByteWriter& shortText(std::string_view utf8) { return text(utf8, 1, 0xFF); }
  ByteWriter& longText(std::string_view utf8) { return text(utf8, 2, 0x7FFF); }

  const std::string& bytes() const { return bytes_; }

 private:
  ByteWriter& text(std::string_view utf8, std::size_t width, std::size_t most) {
    std::string wide = toUtf16(utf8);
    if (wide.size() > 2 * most) wide.resize(2 * most);
    return number(wide.size() / 2, width).raw(wide);
  }

  std::string bytes_;
};

// Reads forwards; past the end it raises BadMessage. The bytes must outlive it.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

  std::string_view take(std::size_t count) {
    if (count > left()) throw BadMessage("a message is shorter than it says");
    const std::string_view piece = bytes_.substr(at_, count);
    at_ += count;
    return piece;
  }
  std::uint64_t number(std::size_t width) { return numberOf(take(width)); }
  std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
  std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
  std::uint16_t big16() {
    const std::uint16_t swapped = u16();
    return static_cast<std::uint16_t>(swapped << 8 | swapped >> 8);
  }
  std::string shortText() { return fromUtf16(take(std::size_t{2} * u8())); }

  std::size_t position() const { return at_; }
  std::size_t left() const { return bytes_.size() - at_; }
  std::uint8_t peek() const { return left() > 0 ? static_cast<std::uint8_t>(bytes_[at_]) : 0; }
  std::string_view since(std::size_t position) const { return bytes_.substr(position, at_ - position); }

 private:
  std::string_view bytes_;
  std::size_t at_ = 0;
};

}  // namespace qrel::tds
