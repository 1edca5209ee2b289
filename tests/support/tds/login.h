// The two messages that a connection begins with: what may be used, and who it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qrel::tds {

enum class Encryption : std::uint8_t { Off = 0, On = 1, NotSupported = 2, Required = 3 };

// The answer to a prelogin.
std::string preloginAnswer(Encryption encryption, std::string_view serverVersion);

struct Login {
  std::string host, user, password, application, server, library, language;
  std::string database;  // empty: the user's own
  std::size_t packetSize = 4096;
};
// Raises BadMessage.
Login readLogin(std::string_view payload);

}  // namespace qrel::tds
