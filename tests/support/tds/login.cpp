#include "tests/support/tds/login.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "tests/support/tds/bytes.h"

namespace qrel::tds {

namespace {

// Every half of a byte has changed places, behind a mask.
std::string uncovered(std::string_view covered) {
  std::string plain;
  for (const char c : covered) {
    const unsigned byte = static_cast<unsigned char>(c) ^ 0xA5;
    plain += static_cast<char>((byte << 4 | byte >> 4) & 0xFF);
  }
  return plain;
}

}  // namespace

std::string preloginAnswer(Encryption encryption, std::string_view serverVersion) {
  unsigned major = 0;
  std::from_chars(serverVersion.data(), serverVersion.data() + serverVersion.size(), major);
  const std::array<std::string, 5> options = {
      ByteWriter().u8(major).u8(0).big16(0).u16(0).bytes(),
      ByteWriter().u8(static_cast<std::uint8_t>(encryption)).bytes(),
      std::string(1, '\0'),  // the instance is the one asked for
      "",                    // the process stays untold
      std::string(1, '\0'),  // one answer at a time
  };
  constexpr std::size_t entry = 5;
  ByteWriter table;
  ByteWriter data;
  for (std::size_t i = 0; i < options.size(); ++i) {
    table.u8(i).big16(entry * options.size() + 1 + data.bytes().size()).big16(options[i].size());
    data.raw(options[i]);
  }
  return table.u8(0xFF).raw(data.bytes()).bytes();
}

Login readLogin(std::string_view payload) {
  ByteReader reader(payload);
  reader.take(8);  // length and version
  Login login;
  login.packetSize = std::clamp<std::size_t>(reader.u32(), 512, 32767);
  reader.take(24);
  const auto next = [&](std::size_t width) {
    const std::size_t at = reader.u16();
    const std::size_t size = width * reader.u16();
    ByteReader text(payload);
    text.take(at);
    return text.take(size);
  };
  login.host = fromUtf16(next(2));
  login.user = fromUtf16(next(2));
  login.password = fromUtf16(uncovered(next(2)));
  login.application = fromUtf16(next(2));
  login.server = fromUtf16(next(2));
  next(1);
  login.library = fromUtf16(next(2));
  login.language = fromUtf16(next(2));
  login.database = fromUtf16(next(2));
  return login;
}

}  // namespace qrel::tds
