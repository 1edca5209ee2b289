// Which ODBC driver reaches a server, and what a connection is called in its words.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/data/connectionString.h"
#include "platform/data/odbc/failures.h"

namespace qrel::odbc {

enum class Family { Microsoft, FreeTds };

struct Driver {
  std::string name;  // as the driver manager has it, or the path of its library
  Family family = Family::Microsoft;
};

// The driver that was asked for (its name, a part that tells it, or a path); without one the newest of those that are
// installed, Microsoft's first. Raises DataError when there is none, with what to install.
Driver chooseDriver(const std::string& asked, const std::vector<std::string>& installed);

// How a server is to be reached, read from a connection string: "Data Source" NAME, NAME,PORT or NAME\INSTANCE,
// "Initial Catalog", "User ID" and "Password" or "Integrated Security", "Encrypt" (yes, no, strict; yes without it),
// "TrustServerCertificate" (no without it), "OdbcDriver".
struct Target {
  std::string host, instance, port;  // of the last two at most one
  std::string server;                // as it was given
  std::string database;
  bool windows = false;
  std::string login, password;
  std::string encrypt = "yes";
  bool trustCertificate = false;
  std::string driver;
  std::string token;  // of Entra; empty without one
};
// Raises DataError for what can't be understood; the server's name stands in `target` even then.
void readTarget(const ConnectionString& connectionString, Target& target);

// The text for the driver. Raises DataError for a value that it has no way to take.
std::string driverText(const Driver& driver, const Target& target);

Attempt attemptOf(const Driver& driver, const Target& target, int seconds);

}  // namespace qrel::odbc
