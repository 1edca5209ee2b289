// ODBC's records as errors of the data access layer: the number that callers test, and a sentence that says what to do.
#pragma once

#include <string>

#include "platform/data/odbc/odbcApi.h"
#include "platform/error.h"

namespace qrel::odbc {

// What a connection was to be, as far as its failure is told by it. No password is among it.
struct Attempt {
  std::string server;
  std::string database;
  std::string login;       // empty: Windows authentication
  std::string driver;      // its name
  bool isFreeTds = false;  // otherwise one of Microsoft's
  bool encrypted = true;
  int seconds = 15;  // of the login time-out
};

// Why a connection couldn't be had: always 0x80004005, with the ways out.
DataError connectFailure(const Records& records, const Attempt& attempt);
// A server that is given up after so many seconds without a word.
DataError silentServer(const Attempt& attempt);

// Why a command or a fetch failed.
DataError commandFailure(const Records& records, const Attempt& attempt, const std::string& sql);
DataError timedOut(const std::string& sql, bool abandoned);
DataError cancelled(const std::string& sql);
DataError lostLine(const Attempt& attempt, const std::string& detail, const std::string& sql);
// A value that came shorter than it is.
DataError cutValue(const std::string& column, const std::string& sql);

// Whether the connection is of no more use after these.
bool tellLostLine(const Records& records);

}  // namespace qrel::odbc
