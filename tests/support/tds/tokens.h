// The tokens of an answer, each as the bytes that it is made of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/tds/wireType.h"

namespace qrel::tds {

// Latin1 general, no case: texts of eight bits a letter are Windows-1252.
inline constexpr std::string_view collation("\x09\x04\xD0\x00\x34", 5);

// DONE ends a batch's result, DoneInProcedure one within a call, DoneProcedure the call.
enum class DoneToken : std::uint8_t { Done = 0xFD, DoneProcedure = 0xFE, DoneInProcedure = 0xFF };
namespace done {
inline constexpr unsigned more = 0x01;       // something follows in this answer
inline constexpr unsigned error = 0x02;      // what it ends has failed
inline constexpr unsigned counted = 0x10;    // the number of rows holds
inline constexpr unsigned attention = 0x20;  // answers an attention
}  // namespace done
std::string doneToken(DoneToken token, unsigned status, std::uint64_t rows = 0, std::uint16_t command = 0xC1);

// What a server says with a number. From severity 11 on it is an error, below a message beside the results.
struct ServerMessage {
  std::int32_t number = 50000;
  std::string text{};
  std::uint8_t severity = 16;
  std::uint8_t state = 1;
  std::uint32_t line = 1;
};
std::string messageToken(const ServerMessage& message, std::string_view server);

std::string databaseChange(std::string_view now, std::string_view before);
std::string languageChange(std::string_view now);
std::string packetSizeChange(std::size_t now, std::size_t before);
std::string collationChange();
// Transactions are told by a number each, never 0.
std::string transactionBegun(std::uint64_t number);
std::string transactionEnded(std::uint64_t number, bool committed);

// `version` is the server's, "11.0.2100.60".
std::string loginAccepted(std::string_view version);

struct WireColumn {
  std::string name;
  WireType type;
};
std::string columnsToken(const std::vector<WireColumn>& columns);

std::string returnStatus(std::int32_t value);
// `typeAndValue` as they stand in a call.
std::string returnedParameter(std::uint16_t ordinal, std::string_view name, std::string_view typeAndValue);

}  // namespace qrel::tds
