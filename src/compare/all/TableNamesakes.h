// Which table of the other database has the same name and schema, for all tables at once.
#pragma once

#include <array>
#include <string>
#include <unordered_map>

#include "app/Program.h"

namespace qrel {

class TableNamesakes {
 public:
  // Reads the tables of both databases (0 Source, 1 Target) with two queries each, silently. Nothing is known below
  // version 9, and when a query fails.
  TableNamesakes(Program& program, const std::array<std::string, 2>& arrDatabases);

  // The id, in the other database, of the table with the name and the schema of this side's table lngId, both binary
  // equal. 0: not known here, which doesn't say that there is none; CompareAll_CheckForDuplicateNames finds out.
  long find(int side, const std::string& strName, long lngId) const;

 private:
  struct Tables {
    std::unordered_map<long, std::string> schemas;  // by id
    std::unordered_map<std::string, long> ids;      // by schema and name
  };
  static bool read(Program& program, const tServer& server, const std::string& strDb, Tables& tables);
  static std::string key(const std::string& strSchema, const std::string& strName);

  std::array<Tables, 2> sides_;
};

}  // namespace qrel
