// What stands against the verdict of a whole-database comparison.
#pragma once

#include "console/console.h"

namespace qrel {

// Names on `err` what the last run over whole databases has no verdict on, or less of one than was asked for. False
// when there is such an object.
bool tellIncomplete(Console& console);

}  // namespace qrel
