// The one way in which procedures trap run-time errors.
#pragma once

#include <string>
#include <utility>

#include "app/Program.h"
#include "platform/error.h"

namespace qrel {

// How many errors were reported since the program's start.
struct ErrorReportsState {
  std::size_t lngShown = 0;
};

// Opens the error report window and waits for it (frmErrorReport.h).
void ShowErrorReport(Program& program, std::int32_t lngErrNum, const std::string& strErrDesc,
                     const std::string& strModuleName, const std::string& strProcName,
                     const std::string& strExtraDesc = {});

// Runs the body; an exception goes to the error report under these names, and the default result is returned. A body
// that has results in reference arguments leaves them as they are.
template <class Body, class Result>
Result trap(Program& program, const char* strModuleName, const char* strProcName, Result defaultResult, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    ShowErrorReport(program, info.number, info.description, strModuleName, strProcName);
    return defaultResult;
  }
}

template <class Body>
void trap(Program& program, const char* strModuleName, const char* strProcName, Body&& body) {
  trap(program, strModuleName, strProcName, 0, [&] {
    std::forward<Body>(body)();
    return 0;
  });
}

// A command of a window: does nothing while another one of it runs (`busy`), else holds it meanwhile.
template <class Command>
void trapAlone(Program& program, bool& busy, const char* strModuleName, const char* strProcName, Command&& command) {
  if (busy) return;
  busy = true;
  trap(program, strModuleName, strProcName, std::forward<Command>(command));
  busy = false;
}

// The same for a procedure whose report tells how far it had come: the body keeps `number` up on its way, and the
// report has it behind `label` as its extra text.
template <class Body>
void trapWithNumber(Program& program, const char* strModuleName, const char* strProcName, const char* label,
                    const int& number, Body&& body) {
  try {
    std::forward<Body>(body)();
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    ShowErrorReport(program, info.number, info.description, strModuleName, strProcName, label + std::to_string(number));
  }
}

template <class Body>
void trapWithLine(Program& program, const char* strModuleName, const char* strProcName, const int& line, Body&& body) {
  trapWithNumber(program, strModuleName, strProcName, "Line num = ", line, std::forward<Body>(body));
}

// The small helpers' trap: a box "Error: ", number, ". ", description, titled with the procedure's name.
template <class Body, class Result>
Result trapWithBox(Host& host, const char* strProcName, Result defaultResult, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    host.messageBox("Error: " + std::to_string(info.number) + ". " + info.description, Icon::None, strProcName);
    return defaultResult;
  }
}

}  // namespace qrel
