#include "app/trace.h"

#include <cstdio>
#include <exception>

#include "platform/files.h"

namespace qrel {

namespace {
std::string logFile(const Program& program) { return program.main.gstrAppPath + "ErrorLog.txt"; }
}  // namespace

void WriteDebugLog(Program& program, const std::string& strText) {
  if (!program.main.gblnDebugMode) return;
  const LocalTime now = program.host.now();
  char time[32];
  std::snprintf(time, sizeof time, "%02d:%02d:%02d     ", now.hour % 100, now.minute % 100, now.second % 100);
  try {
    files::appendLine(logFile(program), time + strText + "\r\n");
  } catch (const std::exception&) {
    // The trace never disturbs the work.
  }
}

void ClearDebugLog(Program& program) {
  try {
    files::removeFile(logFile(program));
  } catch (const std::exception&) {
    // As above.
  }
}

}  // namespace qrel
