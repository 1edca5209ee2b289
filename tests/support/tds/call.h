// A message that calls procedures.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/tds/parameter.h"

namespace qrel::tds {

struct Call {
  std::string procedure;  // as it was sent; of those called by a number, its name
  std::vector<Parameter> parameters;
};

// The payload without its headers. Raises BadMessage.
std::vector<Call> readCalls(std::string_view body);

// What stands in front of a batch's text, a call or a request about transactions, cut off.
std::string_view withoutHeaders(std::string_view payload);

}  // namespace qrel::tds
