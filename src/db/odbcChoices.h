// What the settings and the environment choose for servers that are reached by way of ODBC.
#pragma once

#include "app/Program.h"
#include "platform/data/odbc/odbcProvider.h"

namespace qrel {

// QREL_ODBC_DRIVER wins over the setting OdbcDriver; QREL_TOKEN is an access token of Entra. A server may take 15
// seconds to let in, or the command time-out when that is less.
OdbcChoices ReadOdbcChoices(Program& program);

}  // namespace qrel
