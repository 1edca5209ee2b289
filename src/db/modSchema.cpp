#include "db/modSchema.h"

#include "app/modRegistry.h"
#include "app/modStrings.h"
#include "app/trace.h"
#include "app/trap.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "platform/text.h"

namespace qrel {

void ClearFilters(Program& program, int side) {
  auto& state = program.state<modSchemaState>();
  const auto index = static_cast<std::size_t>(side);
  state.gblnSchemaFilter.at(index) = state.gblnOwnerFilter.at(index) = false;
  state.gstrSchemaFilter.at(index).clear();
  state.gstrOwnerFilter.at(index).clear();
}

namespace {

std::string xtypeLetter(long type) {
  switch (type) {
    case objProcedures:
      return "P";
    case objFunctions:
      return "FN";
    case objViews:
      return "V";
    case objTriggers:
      return "TR";
    case objTables:
      return "U";
    case objRelationships:
      return "F";
    default:
      return {};
  }
}

constexpr const char* ownersQuery =
    "SELECT DISTINCT su.name AS Owner FROM sysobjects so INNER JOIN sysusers su ON so.uid = su.uid ";

// The non-empty first fields of a query's records; false when the query failed.
bool firstFields(Program& program, const tServer& server, const std::string& strDb, const std::string& strSql,
                 std::vector<std::string>& out) {
  RecordsetPtr rs;
  if (GetAdoRS(program, server, adCmdText, strSql, rs, strDb) == -1) return false;
  if (!hasRecords(rs)) return true;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
    std::string text = rs->Fields(0).Text();
    if (!text.empty()) out.push_back(std::move(text));
  }
  return true;
}

}  // namespace

std::string GetOwner(Program& program, const tServer& server, const std::string& strDb, const std::string& strObjName,
                     long type) {
  try {
    RecordsetPtr rs;
    GetAdoRS(
        program, server, adCmdText,
        "SELECT so.name AS ObjectName, su.name AS Owner FROM sysobjects so INNER JOIN sysusers su ON so.uid = su.uid "
        "WHERE so.name = '" +
            strObjName + "' AND so.xtype = '" + xtypeLetter(type) + "'",
        rs, strDb);
    return hasRecords(rs) ? rs->Fields(1).Text() : std::string();
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    program.host.messageBox("Error in Function GetOwner, error nr " + std::to_string(info.number) + " (" +
                            info.description + ").");
    return {};
  }
}

long GetAllOwners(Program& program, const tServer& server, const std::string& strDb, long, std::string& strList) {
  strList.clear();
  std::vector<std::string> names;
  if (!firstFields(program, server, strDb, ownersQuery, names)) return -1;
  for (const std::string& name : names) strList += name + ",";
  return static_cast<long>(names.size());
}

long GetAllOwnersIntoArray(Program& program, const tServer& server, const std::string& strDb,
                           std::vector<std::string>& arrOwners) {
  arrOwners.clear();
  if (!firstFields(program, server, strDb, std::string(ownersQuery) + "ORDER BY su.name", arrOwners)) return -1;
  return static_cast<long>(arrOwners.size());
}

void LoadOwners(Program& program, const tServer& server, const std::string& strDb, const ComboBox& comboType,
                ComboBox& comboOwners) {
  if (!program.settings.ShowOwners) return;
  WriteDebugLog(program, "Begin LoadOwners");
  const long type = comboType.selected() < 0 ? 0 : comboType.itemData(static_cast<std::size_t>(comboType.selected()));
  std::string strList;
  GetAllOwners(program, server, strDb, type, strList);
  comboOwners.tag = "OFF";
  comboOwners.clear();
  comboOwners.add("All Owners");
  for (std::size_t begin = 0, comma; (comma = strList.find(',', begin)) != std::string::npos; begin = comma + 1)
    comboOwners.add(strList.substr(begin, comma - begin));
  comboOwners.select(0);
  comboOwners.tag.clear();
  WriteDebugLog(program, "End LoadOwners");
}

long GetAllSchemas(Program& program, const tServer& server, const std::string& strDb,
                   std::vector<std::string>& arrSchemas) {
  arrSchemas.clear();
  const char* strSql =
      "SELECT SCHEMA_NAME FROM INFORMATION_SCHEMA.schemata WHERE SCHEMA_NAME NOT IN "
      "('INFORMATION_SCHEMA', 'sys', 'db_owner', 'db_accessadmin', 'db_securityadmin', "
      "'db_ddladmin', 'db_backupoperator', 'db_datareader', 'db_datawriter', "
      "'db_denydatareader', 'db_denydatawriter', 'guest') ORDER BY SCHEMA_NAME";
  if (!firstFields(program, server, strDb, strSql, arrSchemas)) return -1;
  return static_cast<long>(arrSchemas.size());
}

namespace {

// The schema in a trigger's header: what stands in the first brackets between CREATE TRIGGER and ON.
std::string schemaFromTriggerSource(const std::string& strSource) {
  constexpr std::string_view create = "CREATE TRIGGER";
  const std::size_t begin = strSource.find(create);
  if (begin == std::string::npos) return {};
  const std::size_t end = strSource.find("ON", begin + create.size());
  if (end == std::string::npos) return {};
  const std::string_view header =
      trimBlanks(std::string_view(strSource).substr(begin + create.size(), end - begin - create.size()));
  const std::size_t open = header.find('[');
  if (open == std::string_view::npos) return {};
  const std::size_t close = header.find(']', open);
  if (close == std::string_view::npos) return {};
  return std::string(header.substr(open + 1, close - open - 1));
}

std::string schemaQuery(long type) {
  switch (type) {
    case objProcedures:
    case objFunctions:
      return "SELECT ROUTINE_SCHEMA FROM INFORMATION_SCHEMA.ROUTINES WHERE ROUTINE_NAME = '";
    case objViews:
      return "SELECT TABLE_SCHEMA FROM INFORMATION_SCHEMA.VIEWS WHERE TABLE_NAME = '";
    case objTables:
      return "SELECT TABLE_SCHEMA FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_NAME = '";
    default:
      return {};
  }
}

}  // namespace

std::string GetSchemaForObject(Program& program, const tServer& server, const std::string& strDb,
                               const std::string& strObjName, long type) {
  if (type == objTriggers) return schemaFromTriggerSource(GetObjectText(program, server, strObjName, strDb, type));
  const std::string strSql = schemaQuery(type);
  if (strSql.empty()) return {};
  RecordsetPtr rs;
  GetAdoRS(program, server, adCmdText, strSql + strObjName + "'", rs, strDb);
  return hasRecords(rs) ? rs->Fields(0).Text() : std::string();
}

bool Is_OBJECT_SCHEMA_NAME_Implemented(const std::string& strVersion, long lngVersion) {
  if (strVersion.size() < 8) return false;
  const long n = lngVersion == -1 ? GetVersionNumber(strVersion) : lngVersion;
  if (n != 9) return n > 9;
  return strVersion == "9.00.3042" || strVersion == "9.00.4035" || strVersion == "9.00.5000";
}

bool Db_GetObjSchemaById(Program& program, tServer& server, long, const std::string& strDb, long lngId,
                         std::string& strSchema) {
  strSchema.clear();
  if (lngId < 1) return false;
  if (server.VersionNum == 0) server.VersionNum = GetVersionNumber(server.Version);
  const std::string strId = std::to_string(lngId);
  RecordsetPtr rs;
  std::int32_t result = -1;
  const auto byUser = [&] {
    return GetAdoRS(program, server, adCmdText, "SELECT USER_NAME(uid) FROM sysobjects WHERE [id] = " + strId, rs,
                    strDb);
  };
  const bool implemented =
      server.VersionNum >= 9 && Is_OBJECT_SCHEMA_NAME_Implemented(server.Version, server.VersionNum);
  if (server.VersionNum >= 9 && !implemented) server.VersionNum = 8;
  if (implemented)
    result =
        GetAdoRS(program, server, adCmdText,
                 "SELECT OBJECT_SCHEMA_NAME([object_id]) FROM sys.objects WHERE [object_id] = " + strId, rs, strDb);
  else
    result = byUser();
  if (result == -1 && server.VersionNum >= 9) {
    server.VersionNum = 8;
    result = byUser();
  }
  if (result == -1) return false;
  if (hasRecords(rs)) strSchema = NullToDefault(rs->Fields(0).cell, "");
  return true;
}

bool SchemaPrefixNeeded(Program& program, tServer& server, const std::string& strTable, std::string& strOut,
                        const std::string& strDb, std::int32_t lngErrNumber) {
  strOut = strTable;
  if (lngErrNumber != errorNumber::invalidObjectName) return false;
  if (server.SchemaCheckPerformed && !server.AddSchema) return false;
  if (GetVersionNumber(server.Version) < 9) return false;
  server.SchemaCheckPerformed = true;
  const std::string strSchema = GetSchemaForObject(program, server, strDb, strTable, objTables);
  if (strSchema.empty()) return false;
  strOut = AddSquareBrackets(strSchema) + "." + AddSquareBrackets(strTable);
  server.AddSchema = true;
  return true;
}

std::string WrapStringIntoQuotes(const std::string& strText) {
  std::string text(trimBlanks(strText));
  if (text.empty() || text.front() != '\'') text = replaceAll(text, ",", "','");
  if (text.empty() || text.front() != '\'') text.insert(text.begin(), '\'');
  if (text.size() < 2 || text.back() != '\'') text += '\'';
  return text;
}

std::string BuildSchemaFilteringString(Program& program) {
  const auto& state = program.state<modSchemaState>();
  std::string text;
  for (std::size_t side = 0; side < 2; ++side) {
    if (!state.gblnSchemaFilter[side]) continue;
    if (!text.empty()) text += "\r\n";
    text += side == 0 ? "Source" : "Target";
    text += " - applied filtering by Schema: " + state.gstrSchemaFilter[side];
  }
  return text;
}

bool GetSchemaFilter(Program& program, long type, int side, std::string& strJoin, std::string& strWhere) {
  strJoin.clear();
  strWhere.clear();
  if (type == objTriggers || type == objRelationships || type == objConstraints) return false;
  const auto& state = program.state<modSchemaState>();
  const auto index = static_cast<std::size_t>(side);
  if ((side != 0 && side != 1) || !state.gblnSchemaFilter[index]) return false;
  const std::string strList = WrapStringIntoQuotes(state.gstrSchemaFilter[index]);
  const auto narrow = [&](const std::string& strView, const std::string& strKind) {
    const std::string view = "INFORMATION_SCHEMA." + strView;
    strJoin = "LEFT JOIN " + view + " ON " + view + "." + strKind + "_NAME = [name]";
    strWhere = "AND " + view + "." + strKind + "_SCHEMA IN (" + strList + ")";
  };
  if (type == objProcedures || type == objFunctions) narrow("ROUTINES", "ROUTINE");
  if (type == objViews) narrow("VIEWS", "TABLE");
  if (type == objTables) narrow("TABLES", "TABLE");
  return true;
}

}  // namespace qrel
