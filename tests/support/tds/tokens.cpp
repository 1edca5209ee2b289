#include "tests/support/tds/tokens.h"

#include <charconv>

#include "tests/support/tds/bytes.h"

namespace qrel::tds {

namespace {

constexpr std::uint8_t errorMark = 0xAA, infoMark = 0xAB, changeMark = 0xE3, loginMark = 0xAD, columnsMark = 0x81,
                       statusMark = 0x79, valueMark = 0xAC;
constexpr std::uint8_t lowestError = 11;

std::string withLength(std::uint8_t mark, const ByteWriter& body) {
  return ByteWriter().u8(mark).u16(body.bytes().size()).raw(body.bytes()).bytes();
}

std::string change(std::uint8_t kind, const ByteWriter& nowAndBefore) {
  return withLength(changeMark, ByteWriter().u8(kind).raw(nowAndBefore.bytes()));
}

}  // namespace

std::string doneToken(DoneToken token, unsigned status, std::uint64_t rows, std::uint16_t command) {
  return ByteWriter().u8(static_cast<std::uint8_t>(token)).u16(status).u16(command).u64(rows).bytes();
}

std::string messageToken(const ServerMessage& message, std::string_view server) {
  ByteWriter body;
  body.u32(static_cast<std::uint32_t>(message.number)).u8(message.state).u8(message.severity).longText(message.text);
  body.shortText(server).shortText("").u32(message.line);
  return withLength(message.severity >= lowestError ? errorMark : infoMark, body);
}

std::string databaseChange(std::string_view now, std::string_view before) {
  return change(1, ByteWriter().shortText(now).shortText(before));
}

std::string languageChange(std::string_view now) { return change(2, ByteWriter().shortText(now).shortText("")); }

std::string packetSizeChange(std::size_t now, std::size_t before) {
  return change(4, ByteWriter().shortText(std::to_string(now)).shortText(std::to_string(before)));
}

std::string collationChange() { return change(7, ByteWriter().u8(collation.size()).raw(collation).u8(0)); }

std::string transactionBegun(std::uint64_t number) { return change(8, ByteWriter().u8(8).u64(number).u8(0)); }

std::string transactionEnded(std::uint64_t number, bool committed) {
  return change(committed ? 9 : 10, ByteWriter().u8(0).u8(8).u64(number));
}

std::string loginAccepted(std::string_view version) {
  unsigned parts[3] = {};
  const char* at = version.data();
  const char* const end = at + version.size();
  for (unsigned& part : parts) {
    at = std::from_chars(at, end, part).ptr;
    if (at != end) ++at;
  }
  ByteWriter body;
  // The protocol's version, in the one order of bytes that clients take.
  body.u8(1).raw(std::string_view("\x74\x00\x00\x04", 4)).shortText("Microsoft SQL Server");
  body.u8(parts[0]).u8(parts[1]).big16(parts[2]);
  return withLength(loginMark, body);
}

std::string columnsToken(const std::vector<WireColumn>& columns) {
  constexpr std::uint16_t nullableAndUpdatable = 0x0009;
  ByteWriter out;
  out.u8(columnsMark).u16(columns.size());
  for (const WireColumn& column : columns) {
    out.u32(column.type.userType()).u16(nullableAndUpdatable).raw(column.type.info());
    if (column.type.namesTable()) out.u8(1).longText("t");
    out.shortText(column.name);
  }
  return out.bytes();
}

std::string returnStatus(std::int32_t value) {
  return ByteWriter().u8(statusMark).u32(static_cast<std::uint32_t>(value)).bytes();
}

std::string returnedParameter(std::uint16_t ordinal, std::string_view name, std::string_view typeAndValue) {
  return ByteWriter().u8(valueMark).u16(ordinal).shortText(name).u8(1).u32(0).u16(0).raw(typeAndValue).bytes();
}

}  // namespace qrel::tds
