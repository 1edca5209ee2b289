// What a session may do with a database, and the server's refusals of the rest.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "embedded/language/lexer.h"

namespace qrel::tsql {

// Read: queries, variables, control flow. Attach: also the procedures that attach a database file to the server. Write:
// everything.
enum class Rights : std::uint8_t { Read, Attach, Write };

// The server's number for what nobody has given the right to.
constexpr std::int32_t permissionDenied = static_cast<std::int32_t>(0x80040E09);

// Raise permissionDenied where `rights` don't reach: for the statement that begins at the reader, for a procedure (its
// name in lower case), and for an action named in words ("CREATE TABLE"). What isn't known to read is refused.
void requireStatement(Rights rights, const TokenReader& reader, const std::string& database);
void requireProcedure(Rights rights, const std::string& procedure, const std::string& database);
bool isAttachingProcedure(std::string_view procedure);  // its name in lower case
[[noreturn]] void refuseAction(const std::string& action, const std::string& database);

}  // namespace qrel::tsql
