// One SQL Server of the list: how to reach it and what is known of it.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace qrel {

struct tServer {
  std::string Name;      // as typed; the key of the list
  bool SQLAuth = false;  // SQL Server authentication with LoginName and Password; otherwise Windows authentication
  std::string LoginName;
  std::string Password;
  std::string MRUDb;            // the database last chosen
  std::int32_t RegIndex = 0;    // 1-based place in the list, 0: none
  std::string Version;          // "11.0.2100.60", empty until first read
  std::int32_t VersionNum = 0;  // major version, 0 until computed
  bool SchemaCheckPerformed = false;
  bool AddSchema = false;
  bool LocalDb = false;  // reached with the other provider
  // How a server is reached by way of ODBC.
  std::string Encrypt;                  // "no" or "strict"; empty: encrypted
  bool TrustServerCertificate = false;  // its certificate isn't checked
  std::string OdbcDriver;               // empty: the one that is chosen for all
};

}  // namespace qrel
