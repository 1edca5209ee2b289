// What has gone wrong, with the number that a server gives it.
#pragma once

#include "platform/error.h"
#include "tests/support/tds/tokens.h"

namespace qrel::tds {

// The embedded server tells errors by their words; here they get the numbers that a server has for them. An error that
// isn't known has the number 50000.
ServerMessage messageOf(const RuntimeError& error);

}  // namespace qrel::tds
