// What a replayed process has the report window do by itself.
#pragma once

#include <string>

namespace qrel {

struct AutoReport {
  bool blnAuto = false;       // part of a replay: no person is there to ask
  std::string strExportPath;  // the file that the report is written to; empty: none
  bool blnPrint = false;
};

}  // namespace qrel
