// SQL Server by way of ODBC, as a provider of the data access layer. No type of ODBC is seen here.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/data/provider.h"

namespace qrel {

// What is chosen for all servers.
struct OdbcChoices {
  std::string driver;     // empty: the newest that is installed
  int loginSeconds = 15;  // how long a server may take to let in
  std::string token;      // an access token of Entra, in the place of Windows authentication
  // For how long a connection that nobody uses any longer is kept for the next one to the same server, database and
  // login; 0: not at all.
  int keepSeconds = 60;
};

// Serves every name. `choices` is asked whenever a connection is opened; `stopAsked` (may be null) is asked every few
// milliseconds by the thread that waits for the server. Empty when the program is built without ODBC.
//
// Connections are encrypted, and certificates checked, unless the connection string says otherwise ("Encrypt",
// "TrustServerCertificate"); "OdbcDriver" in it wins over the choices.
std::unique_ptr<Provider> makeOdbcProvider(std::function<OdbcChoices()> choices,
                                           const std::function<bool()>* stopAsked = nullptr);

}  // namespace qrel
