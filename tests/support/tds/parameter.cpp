#include "tests/support/tds/parameter.h"

#include <optional>
#include <string_view>

#include "platform/text.h"
#include "tests/support/tds/wireType.h"
#include "tests/support/tds/wireValue.h"

namespace qrel::tds {

namespace {

constexpr std::uint16_t maximal = 0xFFFF;
constexpr std::size_t collationSize = 5;

// Types without a length, which is that of the value.
struct FixedType {
  std::uint8_t mark;
  WireKind kind;
  std::size_t width;
};
constexpr FixedType fixedTypes[] = {
    {0x30, WireKind::Integer, 1}, {0x32, WireKind::Bit, 1},      {0x34, WireKind::Integer, 2},
    {0x38, WireKind::Integer, 4}, {0x7F, WireKind::Integer, 8},  {0x3B, WireKind::Float, 4},
    {0x3E, WireKind::Float, 8},   {0x3A, WireKind::DateTime, 4}, {0x3D, WireKind::DateTime, 8},
    {0x7A, WireKind::Money, 4},   {0x3C, WireKind::Money, 8},
};

struct ReadType {
  WireKind kind{};
  std::uint16_t size = 0;
  int scale = 0;
  std::size_t fixedWidth = 0;  // 0: the value has its length in front
};

bool isText(WireKind kind) {
  return kind == WireKind::Char || kind == WireKind::VarChar || kind == WireKind::NChar || kind == WireKind::NVarChar;
}

ReadType readType(ByteReader& reader) {
  ReadType type;
  const std::uint8_t mark = reader.u8();
  for (const FixedType& fixed : fixedTypes)
    if (fixed.mark == mark) return {fixed.kind, 0, 0, fixed.width};
  type.kind = static_cast<WireKind>(mark);
  switch (type.kind) {
    case WireKind::Date:
      return type;
    case WireKind::Integer:
    case WireKind::Bit:
    case WireKind::Float:
    case WireKind::Money:
    case WireKind::DateTime:
    case WireKind::Guid:
    case WireKind::Xml:
      type.size = reader.u8();
      return type;
    case WireKind::Time:
    case WireKind::DateTime2:
    case WireKind::DateTimeOffset:
      type.scale = reader.u8();
      return type;
    case WireKind::Decimal:
    case WireKind::Numeric:
      reader.take(2);
      type.scale = reader.u8();
      return type;
    case WireKind::Binary:
    case WireKind::VarBinary:
    case WireKind::Char:
    case WireKind::VarChar:
    case WireKind::NChar:
    case WireKind::NVarChar:
      type.size = reader.u16();
      if (isText(type.kind)) reader.take(collationSize);
      return type;
    case WireKind::Text:
    case WireKind::NText:
    case WireKind::Image:
      reader.take(4);
      if (type.kind != WireKind::Image) reader.take(collationSize);
      return type;
    default:
      throw BadMessage("a parameter has the unknown type " + std::to_string(mark));
  }
}

std::optional<std::string> readChunks(ByteReader& reader) {
  if (reader.number(8) == static_cast<std::uint64_t>(-1)) return {};
  std::string bytes;
  for (std::size_t size = 0; (size = reader.u32()) > 0;) bytes += reader.take(size);
  return bytes;
}

std::optional<std::string> readBytes(ByteReader& reader, const ReadType& type) {
  if (type.fixedWidth > 0) return std::string(reader.take(type.fixedWidth));
  if (type.size == maximal || type.kind == WireKind::Xml) return readChunks(reader);
  std::size_t width = 1;
  std::uint32_t none = 0;
  if (type.kind == WireKind::Text || type.kind == WireKind::NText || type.kind == WireKind::Image) {
    width = 4;
    none = 0xFFFFFFFF;
  } else if (isText(type.kind) || type.kind == WireKind::Binary || type.kind == WireKind::VarBinary) {
    width = 2;
    none = 0xFFFF;
  }
  const std::uint64_t size = reader.number(width);
  if (size == none) return {};
  return std::string(reader.take(size));
}

Value valueOf(const ReadType& type, const std::string& bytes) {
  switch (type.kind) {
    case WireKind::NChar:
    case WireKind::NVarChar:
    case WireKind::NText:
    case WireKind::Xml:
      return Value::ofText(fromUtf16(bytes));
    case WireKind::Char:
    case WireKind::VarChar:
    case WireKind::Text:
      return Value::ofText(fromCodePage(bytes));
    case WireKind::Binary:
    case WireKind::VarBinary:
    case WireKind::Image: {
      Value value = Value::ofText(bytes);
      value.type = DataType::Binary;
      return value;
    }
    default:
      return valueOfScalar(type.kind, type.scale, bytes);
  }
}

}  // namespace

Parameter readParameter(ByteReader& reader) {
  Parameter parameter;
  parameter.name = reader.shortText();
  parameter.output = (reader.u8() & 1) != 0;
  const std::size_t begin = reader.position();
  const ReadType type = readType(reader);
  if (const auto bytes = readBytes(reader, type)) parameter.value = valueOf(type, *bytes);
  parameter.typeAndValue = reader.since(begin);
  return parameter;
}

}  // namespace qrel::tds
