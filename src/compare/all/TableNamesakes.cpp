#include "compare/all/TableNamesakes.h"

#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modSchema.h"
#include "db/readFailures.h"
#include "platform/error.h"

namespace qrel {

TableNamesakes::TableNamesakes(Program& program, const std::array<std::string, 2>& arrDatabases) {
  const QuietScope quiet(program);
  // What isn't known here is asked for table by table, and a failure told then.
  const AskedScope asked(program);
  try {
    for (std::size_t side = 0; side < 2; ++side) {
      if (read(program, program.main.gtypSelServ[side], arrDatabases[side], sides_[side])) continue;
      sides_ = {};
      return;
    }
  } catch (const RuntimeError&) {
    sides_ = {};
  }
}

bool TableNamesakes::read(Program& program, const tServer& server, const std::string& strDb, Tables& tables) {
  const long lngVersion = server.VersionNum != 0 ? server.VersionNum : GetVersionNumber(server.Version);
  if (lngVersion < 9 || !Is_OBJECT_SCHEMA_NAME_Implemented(server.Version, lngVersion)) return false;
  RecordsetPtr rs;
  if (GetAdoRS(program, server, adCmdText,
               "SELECT [object_id], OBJECT_SCHEMA_NAME([object_id]) FROM sys.objects WHERE [type] = 'U'", rs,
               strDb) == -1)
    return false;
  for (; rs && !rs->Eof(); rs->MoveNext())
    if (!rs->Fields(1).IsNull()) tables.schemas.emplace(integerOf(rs->Fields(0).cell), rs->Fields(1).Text());
  constexpr int noSide = -1;
  const SqlText strSql = BuildObjSQLString(program, objTables, program.settings.IgnoreSysObjects, "", "", noSide);
  if (GetAdoRS(program, server, adCmdText, strSql, rs, strDb) == -1) return false;
  for (; rs && !rs->Eof(); rs->MoveNext()) {
    const long lngId = integerOf(rs->Fields(2).cell);
    const auto schema = tables.schemas.find(lngId);
    if (schema != tables.schemas.end()) tables.ids.emplace(key(schema->second, rs->Fields(0).Text()), lngId);
  }
  return true;
}

std::string TableNamesakes::key(const std::string& strSchema, const std::string& strName) {
  return strSchema + '\0' + strName;
}

// A name with a quote breaks the look-up by name, and that is to be seen.
long TableNamesakes::find(int side, const std::string& strName, long lngId) const {
  if (strName.find('\'') != std::string::npos) return 0;
  const Tables& here = sides_[static_cast<std::size_t>(side)];
  const Tables& there = sides_[static_cast<std::size_t>(1 - side)];
  const auto schema = here.schemas.find(lngId);
  if (schema == here.schemas.end()) return 0;
  const auto id = there.ids.find(key(schema->second, strName));
  return id == there.ids.end() ? 0 : id->second;
}

}  // namespace qrel
