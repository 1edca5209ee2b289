#include "app/Program.h"

namespace qrel {

// The build gives QREL_VERSION to this file alone, so that a new version compiles nothing else.
const char* const programVersion = QREL_VERSION;

}  // namespace qrel
