#include "app/CConCat.h"

#include <algorithm>

#include "platform/error.h"

namespace qrel {

namespace {

constexpr std::size_t growth = 50000;
constexpr std::int32_t invalidCall = 5;

bool continuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

void CConCat::SetText(std::string strText) {
  strBuffer = std::move(strText);
  lngLength = strBuffer.size();
}

void CConCat::Append(std::string_view strText) {
  if (lngLength + strText.size() >= strBuffer.size()) {
    strBuffer.append(std::max(growth, strText.size()), ' ');
  }
  strBuffer.replace(lngLength, strText.size(), strText);
  lngLength += strText.size();
}

void CConCat::CutLastChar() {
  if (lngLength == 0) throw RuntimeError(invalidCall, "Invalid procedure call or argument");
  std::size_t start = lngLength - 1;
  while (start > 0 && continuesCharacter(strBuffer[start])) --start;
  std::fill(strBuffer.begin() + static_cast<std::ptrdiff_t>(start),
            strBuffer.begin() + static_cast<std::ptrdiff_t>(lngLength), ' ');
  lngLength = start;
}

}  // namespace qrel
