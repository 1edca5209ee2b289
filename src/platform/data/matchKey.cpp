#include "platform/data/matchKey.h"

#include <cstring>
#include <optional>

#include "platform/data/dateText.h"
#include "platform/data/numberText.h"
#include "platform/text.h"

namespace qrel {
namespace {

template <typename Number>
void appendBytes(std::string& out, char mark, Number number) {
  char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  out.append(1, mark).append(bytes, sizeof bytes);
}

void appendFolded(std::string& out, std::string_view text) {
  text = trimRightBlanks(text);
  const std::size_t start = out.size();
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) {
      out.resize(start);
      out += collationKey(text);
      return;
    }
    out += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  }
}

// Text of any length with its length behind it, so that keys of several columns don't run into each other.
template <typename Append>
void appendMeasured(std::string& out, char mark, Append append) {
  out += mark;
  const std::size_t start = out.size();
  append();
  appendBytes(out, '#', out.size() - start);
}

template <typename T>
int order(const T& a, const T& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

int compareDates(std::string_view a, std::string_view b) {
  const std::optional<std::int64_t> left = dateTicks(a);
  const std::optional<std::int64_t> right = dateTicks(b);
  return left && right ? order(*left, *right) : a.compare(b);
}

bool isNumber(DataType type) {
  return type == DataType::Integer || type == DataType::Double || type == DataType::Decimal;
}

}  // namespace

void appendMatchKey(std::string& out, const Cell& cell) {
  if (cell.null) {
    out += 'N';
    return;
  }
  switch (cell.type) {
    case DataType::Boolean:
    case DataType::Integer:
      appendBytes(out, 'i', cell.integer);
      break;
    case DataType::Double:
      appendBytes(out, 'r', cell.real == 0 ? 0.0 : cell.real);
      break;
    case DataType::Decimal:
      appendMeasured(out, 'd', [&] { appendCanonicalDecimal(out, cell.text); });
      break;
    case DataType::Date:
      if (const std::optional<std::int64_t> ticks = dateTicks(cell.text)) {
        appendBytes(out, 't', *ticks);
      } else {
        appendMeasured(out, 'x', [&] { out += cell.text; });
      }
      break;
    case DataType::Text:
      appendMeasured(out, 'c', [&] { appendFolded(out, cell.text); });
      break;
    case DataType::Guid:
    case DataType::Binary:
    case DataType::Empty:
      appendMeasured(out, 'b', [&] { out += cell.text; });
      break;
  }
}

bool sameMatchKey(const Cell& a, const Cell& b) {
  if (a.null || b.null) return a.null && b.null;
  const auto isWhole = [](const Cell& cell) {
    return cell.type == DataType::Integer || cell.type == DataType::Boolean;
  };
  if (isWhole(a) && isWhole(b)) return a.integer == b.integer;
  if (a.type == b.type && a.type != DataType::Double && a.text == b.text) return true;
  std::string left, right;
  appendMatchKey(left, a);
  appendMatchKey(right, b);
  return left == right;
}

bool sameNumber(const Cell& a, const Cell& b) {
  if (a.null || b.null) return false;
  if (!isNumber(a.type) || !isNumber(b.type)) return false;
  if (a.type == b.type && a.type == DataType::Integer) return a.integer == b.integer;
  if (a.type == b.type && a.type == DataType::Decimal) return compareDecimals(a.text, b.text) == 0;
  const std::optional<std::string> left = plainDecimal(textOf(a));
  return left && left == plainDecimal(textOf(b));
}

int compareCells(const Cell& a, const Cell& b) {
  if (a.null || b.null) return order(!a.null, !b.null);
  if (a.type != b.type && isNumber(a.type) && isNumber(b.type)) {
    return compareDecimals(plainDecimal(textOf(a)).value_or("0"), plainDecimal(textOf(b)).value_or("0"));
  }
  switch (a.type) {
    case DataType::Boolean:
    case DataType::Integer:
      return order(a.integer, b.integer);
    case DataType::Double:
      return order(a.real, b.real);
    case DataType::Decimal:
      return compareDecimals(a.text, b.text);
    case DataType::Date:
      return compareDates(a.text, b.text);
    case DataType::Text:
      return compareCollated(a.text, b.text);
    case DataType::Guid:
    case DataType::Binary:
    case DataType::Empty:
      break;
  }
  return a.text.compare(b.text);
}

}  // namespace qrel
