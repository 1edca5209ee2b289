// The debug trace: on while the file debug.txt lies beside the program.
#pragma once

#include <string>

#include "app/Program.h"

namespace qrel {

// Appends "hh:mm:ss", five blanks and the text as a line to ErrorLog.txt in the program's folder, if debug mode is on.
// A trace that can't be written is left out silently.
void WriteDebugLog(Program& program, const std::string& strText);
// Deletes ErrorLog.txt if it is there.
void ClearDebugLog(Program& program);

}  // namespace qrel
