#include "db/mdlObjects.h"

#include "app/modStrings.h"
#include "app/trace.h"
#include "app/trap.h"
#include "db/mdlPermissions.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "platform/text.h"

namespace qrel {

namespace {

struct ObjectTypeRow {
  long code;
  const char* caption;
  const char* singular;
  const char* plural;
};

// In the order of the type combo.
constexpr ObjectTypeRow objectTypes[] = {
    {objTables, "Tables", "Table", "tables"},
    {objProcedures, "Procedures", "Procedure", "procedures"},
    {objFunctions, "Functions", "Function", "functions"},
    {objViews, "Views", "View", "views"},
    {objTriggers, "Triggers", "Trigger", "triggers"},
    {objRelationships, "Relationships", "Relationship", "relationships"},
    {objConstraints, "Constraints", "Constraint", "constraints"},
    {objPermissions, "Permissions", "Permission", "permissions"},
};

// The condition of a plain type. Functions keep their "or" without brackets: what is appended binds to the last term.
SqlText plainClause(long type) {
  switch (type) {
    case objProcedures:
      return "OBJECTPROPERTY(id, N'IsProcedure') = 1";
    case objFunctions:
      return "OBJECTPROPERTY(id, N'IsInlineFunction') = 1 or OBJECTPROPERTY(id, N'IsScalarFunction') = 1  or "
             "OBJECTPROPERTY(id, N'IsTableFunction') = 1";
    case objViews:
      return "OBJECTPROPERTY(id, N'IsView') = 1";
    case objTriggers:
      return "OBJECTPROPERTY(id, N'IsTrigger') = 1";
    case objTables:
      return "OBJECTPROPERTY(id, N'IsUserTable') = 1";
    default:
      return {};
  }
}

constexpr char relationshipJoins[] =
    "INNER JOIN sysobjects so ON sr.constid = so.id "
    "INNER JOIN sysobjects sof ON sof.id = sr.fkeyid "
    "INNER JOIN sysobjects sor ON sor.id = sr.rkeyid "
    "INNER JOIN syscolumns scf ON scf.id = sof.id AND scf.colid = sr.fkey1 "
    "INNER JOIN syscolumns scr ON scr.id = sor.id AND scr.colid = sr.rkey1 ";

SqlText relationshipsQuery() {
  return SqlText("SELECT so.name AS name, so.refdate AS refdate, so.id AS id FROM sysreferences sr ")
         << relationshipJoins << "ORDER BY so.name";
}

SqlText constraintsQuery() {
  return "SELECT DISTINCT si.name as [name], so2.refdate AS refdate, so2.id AS id  "
         "FROM sysobjects so INNER JOIN sysindexkeys sk ON so.parent_obj = sk.id "
         "INNER JOIN sysindexes si ON sk.id = si.id AND sk.indid = si.indid "
         "INNER JOIN syscolumns sc ON sk.id = sc.id AND sk.colid = sc.colid "
         "INNER JOIN sysobjects so2 ON so.parent_obj = so2.id "
         "WHERE "
         "si.indid = 1 AND "
         " si.name LIKE 'pk%' AND "
         "INDEXPROPERTY(si.id, si.name, 'IsStatistics') = 0 AND "
         "INDEXPROPERTY(si.id, si.name, 'IsHypothetical') = 0 "
         "ORDER BY si.name";
}

SqlText plainQuery(Program& program, long type, bool blnIgnoreSysObjects, const std::string& strObjName,
                   const SqlText& strFilter, int side) {
  SqlText strClause = plainClause(type);
  SqlText strJoin, strWhere;
  const bool blnSchemaFilter = GetSchemaFilter(program, type, side, strJoin, strWhere);
  if (blnIgnoreSysObjects) strClause << " and xtype <> 'S' ";
  if (!strObjName.empty()) strClause << " and name = " << inQuotes(strObjName) << " ";
  if (!strFilter.empty()) strClause << " and [name] " << strFilter;
  SqlText strSql = "select name, refdate, id from sysobjects ";
  if (blnSchemaFilter) strSql << strJoin << " ";
  strSql << "where " << strClause;
  if (blnSchemaFilter) strSql << strWhere;
  return strSql << " order by name";
}

}  // namespace

std::string GetObjectTypeName(long type, bool blnSingular) {
  for (const ObjectTypeRow& row : objectTypes)
    if (row.code == type) return blnSingular ? row.singular : row.plural;
  return blnSingular ? "Object" : "objects";
}

SqlText BuildObjSQLString(Program& program, long type, bool blnIgnoreSysObjects, const std::string& strObjName,
                          const SqlText& strFilter, int side) {
  if (!plainClause(type).empty()) return plainQuery(program, type, blnIgnoreSysObjects, strObjName, strFilter, side);
  if (type == objRelationships) return relationshipsQuery();
  if (type == objConstraints) return constraintsQuery();
  if (type == objPermissions) return permissionsQuery(blnIgnoreSysObjects);
  program.host.messageBox("BuildObjSQLString, wrong object type passed");
  return {};
}

void CountObjects(Program& program, const tServer& server, const std::string& strDb, long type, RecordsetPtr& rs) {
  rs.reset();
  SqlText strSql;
  if (const SqlText strClause = plainClause(type); !strClause.empty())
    strSql << "SELECT COUNT (*) AS RecsCount FROM dbo.sysobjects where " << strClause;
  else if (type == objRelationships)
    strSql << "SELECT COUNT (*) FROM sysreferences sr " << relationshipJoins;
  if (strSql.empty()) {
    program.host.messageBox("Function CountObjects - wrong parameter passed.");
    return;
  }
  GetAdoRS(program, server, adCmdText, strSql, rs, strDb);
}

namespace {

// A failed query's missing record set counts as an empty one.
bool toEntries(Program& program, RecordsetPtr& rs, std::vector<TwoStr>& arr, long& count, std::int32_t lngType) {
  if (!rs) rs = std::make_unique<Recordset>();
  const bool done = ConvertRecordsetToTwoStrArray(program.host, *rs, arr, count, lngType);
  OrderNamesakesById(arr);  // the query orders by name alone
  return done;
}

// The rows of a list query as list entries; False when one can't be read.
bool convertList(Program& program, RecordsetPtr& rs, long type, int side, std::vector<TwoStr>& arr, long& count) {
  if (type != objPermissions) return toEntries(program, rs, arr, count, 0);
  auto& state = program.state<mdlPermissionsState>();
  auto& permissions = state.arrPermissions.at(static_cast<std::size_t>(side));
  if (!ConvertRecordsetToPermissionsArray(program, rs, permissions)) return false;
  if (!ConvertPermissionsArrayToTwoStrArray(program, permissions, arr)) return false;
  count = static_cast<long>(arr.size());
  return true;
}

}  // namespace

bool LoadObjects(Program& program, tServer& server, CheckList& list, TextPane& textPanel, long type,
                 const std::string& strDb, bool blnUpdateText, const SqlText& strFilter, int side, bool) {
  return trap(program, "mdlObjects", "LoadObjects", false, [&] {
    WriteDebugLog(program, "Begin LoadObjects, pstrDbName = " + strDb);
    RecordsetPtr rs;
    const std::int32_t result =
        GetAdoRS(program, server, adCmdText,
                 BuildObjSQLString(program, type, program.settings.IgnoreSysObjects, "", strFilter, side), rs, strDb);
    std::vector<TwoStr> arr;
    long count = 0;
    const bool blnConverted = convertList(program, rs, type, side, arr, count);
    if (blnConverted) {
      if (type != objPermissions && GetVersionNumber(server.Version) >= 9 && AreDuplicatesInArr_TwoStr(arr, count))
        AddSchemaToDuplicateNames(program, server, type, strDb, arr, count);
      LoadListView(program, list, arr, count);
      if (blnUpdateText) {
        UpdateProcedureTextBox(program, server, textPanel, list, type, strDb, "", 0, side, true);
        WriteDebugLog(program, "End LoadObjects");
      }
    } else {
      LoadListView(program, list, arr, count);
    }
    if (rs) rs->Close();
    return blnConverted && result != -1;
  });
}

bool LoadObjects_ToRecordset(Program& program, const ConnectionPtr& connection, RecordsetPtr& rs, const tServer& server,
                             long type, const std::string&, int side) {
  const SqlText strSql = BuildObjSQLString(program, type, program.settings.IgnoreSysObjects, "", "", side);
  return GetAdoRS_Conn(program, connection, server, adCmdText, strSql, rs) != -1;
}

bool GetAllObjectsOfType(Program& program, long type, const tServer& server, const std::string& strDb,
                         std::vector<TwoStr>& arr, long& count, int side) {
  count = 0;
  arr.clear();
  RecordsetPtr rs;
  const SqlText strSql = BuildObjSQLString(program, type, program.settings.IgnoreSysObjects, "", "", side);
  if (GetAdoRS(program, server, adCmdText, strSql, rs, strDb) != -1 &&
      toEntries(program, rs, arr, count, static_cast<std::int32_t>(type)))
    return true;
  program.host.messageBox("Couldn't retrieve list of all " + GetObjectTypeName(type, false) + ".", Icon::Warning);
  return false;
}

bool GetListOfAllObjects(Program& program, const tServer& server, const std::string& strDb, std::vector<TwoStr>& arr,
                         long& count, int side) {
  count = 0;
  arr.clear();
  for (const long type : {objProcedures, objFunctions, objViews, objTriggers, objTables, objRelationships,
                          objConstraints, objPermissions}) {
    std::vector<TwoStr> arrType;
    long countType = 0;
    if (!GetAllObjectsOfType(program, type, server, strDb, arrType, countType, side)) return false;
    ConcatenateArrays_TwoStr(arr, arrType, count, countType);
    count += countType;
  }
  return true;
}

bool GetListOfAllColumns(Program& program, const tServer& server, const std::string& strDb, std::vector<TwoStr>& arr,
                         long& count) {
  arr.clear();
  count = 0;
  const QuietScope quiet(program);
  RecordsetPtr rs;
  GetAdoRS(program, server, adCmdText,
           "SELECT sco.[name] AS [column] FROM sysobjects sob INNER JOIN syscolumns sco ON sob.id = sco.id "
           "INNER JOIN systypes sty ON sco.xtype = sty.xtype AND sco.xusertype = sty.xusertype ORDER BY sco.[name]",
           rs, strDb);
  return true;
}

bool IsItDbObject(const std::string& strName, const std::vector<TwoStr>& arr, long count) {
  const std::string strLower = lowerCase(trimBlanks(strName));
  return !strLower.empty() && GetElIndexInArr_TwoStr(arr, count, strLower) >= 0;
}

void AddSchemaToDuplicateNames(Program& program, tServer& server, long type, const std::string& strDb,
                               std::vector<TwoStr>& arr, long count) {
  const auto at = [&](long i) -> TwoStr& { return arr[static_cast<std::size_t>(i)]; };
  const auto prefix = [&](long i) {
    if (!at(i).strSchema.empty()) at(i).strName = at(i).strSchema + "." + at(i).strName;
  };
  const auto fetch = [&](long i) {
    std::string strSchema;
    const bool ok = Db_GetObjSchemaById(program, server, type, strDb, at(i).lngId, strSchema);
    program.host.doEvents();
    if (ok && !strSchema.empty()) at(i).strSchema = strSchema;
    return ok;
  };
  for (long i = 0; i <= count - 2; ++i) {
    if (i > 0) prefix(i - 1);
    if (at(i).strName == at(i + 1).strName && !(fetch(i) && fetch(i + 1))) return;
    if (i == count - 2) {
      prefix(i);
      prefix(i + 1);
    }
  }
}

void LoadListView(Program& program, CheckList& list, const std::vector<TwoStr>& arr, long count) {
  WriteDebugLog(program, "Begin LoadListView");
  list.tag = "OFF";
  list.setRedraw(false);
  list.clear();
  for (long i = 0; i < count; ++i) {
    const TwoStr& entry = arr[static_cast<std::size_t>(i)];
    const std::size_t row = list.add(entry.strName);
    list.setCell(row, 1, upperCase(entry.strRefDate));
    list.setCell(row, 2, std::to_string(entry.lngId));
    list.setId(row, entry.lngId);
  }
  if (list.count() > 0) list.select(0);
  list.setRedraw(true);
  list.tag.clear();
  WriteDebugLog(program, "End LoadListView");
}

void FillObjectTypes(Program& program, ComboBox& cmbType) {
  cmbType.tag = "OFF";
  cmbType.clear();
  for (const ObjectTypeRow& row : objectTypes) {
    if (row.code == objConstraints && !program.settings.AnalyzeConstraints) continue;
    if (row.code == objPermissions && !gblnPermissionsEnabled) continue;
    cmbType.add(row.caption, row.code);
  }
  cmbType.select(0);
  cmbType.tag.clear();
}

void SelectObjectType(ComboBox& combo, long type, bool& flag, bool blnKeepFlag) {
  for (std::size_t i = 0; i < combo.count(); ++i) {
    if (combo.itemData(i) != type || combo.selected() == static_cast<int>(i)) continue;
    const bool before = flag;
    if (blnKeepFlag) flag = false;
    combo.select(static_cast<int>(i));
    if (blnKeepFlag) flag = before;
    return;
  }
}

}  // namespace qrel
