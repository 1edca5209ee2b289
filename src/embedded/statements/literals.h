// Literals as values, without the way through a query.
#pragma once

#include <optional>
#include <string>

#include "embedded/language/lexer.h"
#include "platform/data/value.h"

namespace qrel::tsql {

// A literal with its sign in front of "," or ")"; the reader stays where it is when there is something else.
bool readLiteral(TokenReader& reader, Value& value);
// The value of a kept default that is one literal, such as ('x'), ((1)), ((-1)) or (NULL).
std::optional<Value> literalDefault(const std::string& text);

}  // namespace qrel::tsql
