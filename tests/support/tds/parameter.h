// A parameter of a call: its name, its type, its value.
#pragma once

#include <string>

#include "platform/data/value.h"
#include "tests/support/tds/bytes.h"

namespace qrel::tds {

struct Parameter {
  std::string name;  // with its "@"; empty when it is told by its place
  bool output = false;
  std::string typeAndValue;  // as they stood, to be sent back
  Value value;
};

// Reads the parameter at the reader. Raises BadMessage, for types that no client sends here too.
Parameter readParameter(ByteReader& reader);

}  // namespace qrel::tds
