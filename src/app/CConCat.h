// A text that grows by appending, in steps of 50,000.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qrel {

class CConCat {
 public:
  // The used part of the buffer.
  std::string Text() const { return strBuffer.substr(0, lngLength); }
  // The buffer becomes the text, all of it used.
  void SetText(std::string strText);

  void Append(std::string_view strText);

  // Takes the last character away. An empty buffer raises error 5.
  void CutLastChar();

  // Bytes used, and bytes held.
  std::size_t Length() const { return lngLength; }
  std::size_t BufferLength() const { return strBuffer.size(); }

 private:
  std::string strBuffer;
  std::size_t lngLength = 0;
};

}  // namespace qrel
