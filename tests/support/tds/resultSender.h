// Sends the rows of a result as they are read.
#pragma once

#include <cstdint>

#include "platform/data/provider.h"
#include "tests/support/tds/packetStream.h"
#include "tests/support/tds/switches.h"

namespace qrel::tds {

// The client asks for an end in the middle of an answer.
struct Interrupted {};

// Sends the columns and all rows and returns how many; holds a few hundred of them, or a few where they may be long.
// Raises Interrupted between two rows, LineGone, and RuntimeError for what can't be read or sent: the rows before it
// have gone out then.
std::uint64_t sendRows(PacketStream& stream, RowSource& rows, const Switches& switches);
// The columns alone.
void sendColumns(PacketStream& stream, RowSource& rows);

}  // namespace qrel::tds
