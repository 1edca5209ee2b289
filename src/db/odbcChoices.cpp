#include "db/odbcChoices.h"

#include <algorithm>
#include <cstdlib>

#include "app/settings.h"

namespace qrel {

namespace {

constexpr std::int32_t longestLogin = 15;

std::string fromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

}  // namespace

OdbcChoices ReadOdbcChoices(Program& program) {
  OdbcChoices choices;
  choices.driver = fromEnvironment("QREL_ODBC_DRIVER");
  if (choices.driver.empty()) choices.driver = ReadText(program, "OdbcDriver");
  choices.token = fromEnvironment("QREL_TOKEN");
  const std::int32_t timeout = program.settings.Timeout;
  choices.loginSeconds = timeout > 0 ? std::min(timeout, longestLogin) : longestLogin;
  // Where a server or what stands in between can't bear connections that wait.
  if (fromEnvironment("QREL_ODBC_KEEP") == "0") choices.keepSeconds = 0;
  return choices;
}

}  // namespace qrel
