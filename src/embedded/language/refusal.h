// How the server says that it can't do something.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/error.h"

namespace qrel::tsql {

// Raised where a statement isn't understood; the loader lists it, a query fails with bad SQL (0x80040E14).
struct NotUnderstood {
  std::string reason;
  std::size_t line = 1;
};

// Raises a DataError in the server's words.
[[noreturn]] void refuse(std::string text, std::int32_t number = errorNumber::badSql);

}  // namespace qrel::tsql
