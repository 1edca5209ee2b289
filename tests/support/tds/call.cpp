#include "tests/support/tds/call.h"

#include <array>

namespace qrel::tds {

namespace {

constexpr std::uint16_t byNumber = 0xFFFF;
constexpr std::uint8_t separator = 0x80, separatorToo = 0xFF;

// Procedures that have a number, by it.
constexpr std::array numbered = std::to_array<const char*>(
    {"", "sp_cursor", "sp_cursoropen", "sp_cursorprepare", "sp_cursorexecute", "sp_cursorprepexec",
     "sp_cursorunprepare", "sp_cursorfetch", "sp_cursoroption", "sp_cursorclose", "sp_executesql", "sp_prepare",
     "sp_execute", "sp_prepexec", "sp_prepexecrpc", "sp_unprepare"});

Call readCall(ByteReader& reader) {
  Call call;
  const std::uint16_t length = reader.u16();
  if (length == byNumber) {
    const std::uint16_t number = reader.u16();
    if (number >= numbered.size()) throw BadMessage("there is no procedure number " + std::to_string(number));
    call.procedure = numbered[number];
  } else {
    call.procedure = fromUtf16(reader.take(std::size_t{2} * length));
  }
  reader.u16();  // options
  while (reader.left() > 0 && reader.peek() != separator && reader.peek() != separatorToo)
    call.parameters.push_back(readParameter(reader));
  return call;
}

}  // namespace

std::vector<Call> readCalls(std::string_view body) {
  std::vector<Call> calls;
  ByteReader reader(body);
  while (reader.left() > 0) {
    calls.push_back(readCall(reader));
    if (reader.left() > 0) reader.u8();
  }
  return calls;
}

std::string_view withoutHeaders(std::string_view payload) {
  ByteReader reader(payload);
  const std::uint32_t size = reader.u32();
  if (size > payload.size()) throw BadMessage("the headers are longer than their message");
  return payload.substr(size);
}

}  // namespace qrel::tds
