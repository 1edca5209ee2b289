#include "db/modObjectText.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "app/modStrings.h"
#include "app/trace.h"
#include "app/trap.h"
#include "db/mdlObjects.h"
#include "db/mdlPermissions.h"
#include "db/mdlQueryCode.h"
#include "db/modSchema.h"
#include "platform/text.h"

namespace qrel {

namespace {

void requireRecordset(const RecordsetPtr& rs) {
  if (!rs) throw RuntimeError(errorNumber::objectNotSet, "Object variable or With block variable not set");
}

SqlText sourceQuery(const std::string& strObjName) {
  return SqlText("SELECT text FROM syscomments sc INNER JOIN sysobjects so ON sc.id = so.id WHERE so.name = ")
         << inQuotes(strObjName) << " ORDER BY sc.colid";
}

SqlText relationshipQuery(const std::string& strObjName) {
  return SqlText(
             "SELECT so.name AS foreignkey, scf.name AS foreigncolumn, "
             "sor.name AS referencedtable, scr.name AS referencedcolumn, "
             "sof.name AS tablename "
             "FROM sysreferences sr "
             "INNER JOIN sysobjects so ON sr.constid = so.id "
             "INNER JOIN sysobjects sof ON sof.id = sr.fkeyid "
             "INNER JOIN sysobjects sor ON sor.id = sr.rkeyid "
             "INNER JOIN syscolumns scf ON scf.id = sof.id AND scf.colid = sr.fkey1 "
             "INNER JOIN syscolumns scr ON scr.id = sor.id AND scr.colid = sr.rkey1 "
             "WHERE so.name = ")
         << inQuotes(strObjName) << " ORDER BY scf.name";
}

SqlText constraintQuery(const std::string& strObjName) {
  return SqlText(
             "SELECT si.name as [name], so2.refdate AS refdate, so2.id AS id, sc.name AS [column], sk.indid, "
             "so2.name as "
             "[tablename] "
             "FROM sysobjects so INNER JOIN sysindexkeys sk ON so.parent_obj = sk.id "
             "INNER JOIN sysindexes si ON sk.id = si.id AND sk.indid = si.indid "
             "INNER JOIN syscolumns sc ON sk.id = sc.id AND sk.colid = sc.colid "
             "INNER JOIN sysobjects so2 ON so.parent_obj = so2.id "
             "WHERE "
             "si.indid = 1 AND "
             " si.name = ")
         << inQuotes(strObjName)
         << " AND "
            "INDEXPROPERTY(si.id, si.name, 'IsStatistics') = 0 AND "
            "INDEXPROPERTY(si.id, si.name, 'IsHypothetical') = 0 ";
}

// The rows' texts, one behind the other.
std::string joinTexts(RecordsetPtr& rs) {
  requireRecordset(rs);
  std::string text;
  for (; !rs->Eof(); rs->MoveNext()) appendText(text, rs->Fields("text").cell);
  rs->Close();
  return TrimBlanksAndBreaks(text);
}

}  // namespace

std::string TrimBlanksAndBreaks(const std::string& strText) {
  if (strText.size() < 2) return strText;
  constexpr const char* cut = " \t\r\n";
  const std::size_t first = strText.find_first_not_of(cut);
  if (first == std::string::npos) return {};
  return strText.substr(first, strText.find_last_not_of(cut) - first + 1);
}

void UpdateProcedureTextBox(Program& program, tServer& server, TextPane& textPanel, CheckList& list, long type,
                            const std::string& strDb, std::string strObjName, long lngId, int side,
                            bool blnResetPointer) {
  int line = 100;
  trapWithLine(program, "modObjectText", "UpdateProcedureTextBox", line, [&] {
    WriteDebugLog(program, "Begin UpdateProcedureTextBox, pstrDbName = " + strDb + ", pstrSelProcName = " + strObjName);
    std::size_t llngCount = lngId < 1 ? list.selectionCount() : 1;
    WriteDebugLog(program, "llngCount = " + std::to_string(llngCount));
    line = 200;
    if (llngCount == 0 && list.count() > 0) {
      const std::string before = std::exchange(list.tag, "OFF");
      list.select(0);
      list.tag = before;
      llngCount = 1;
    }
    if (llngCount != 1) {
      program.host.setPointer(Pointer::Hourglass);
      textPanel.setText("<<Nothing to show>>");
    } else {
      const std::size_t row = static_cast<std::size_t>(std::max(list.firstSelected(), 0));
      if (lngId < 1) lngId = list.id(row);
      if (strObjName.empty()) strObjName = list.cell(row, 0);
      WriteDebugLog(program, "lstrProcedure = " + strObjName);
      line = 300;
      std::string text = GetTextOfObject(program, server, strDb, type, strObjName, lngId, side);
      line = 400;
      if (!text.empty()) {
        textPanel.setText(std::move(text));
        textPanel.setSelection(0, 0);
      }
    }
    list.tag.clear();
    if (blnResetPointer) program.host.setPointer(Pointer::Default);
    WriteDebugLog(program, "End UpdateProcedureTextBox");
  });
}

std::string GetTextOfObject(Program& program, tServer& server, const std::string& strDb, long type,
                            const std::string& strObjName, long lngId, int side) {
  switch (type) {
    case objProcedures:
    case objFunctions:
    case objViews:
    case objTriggers:
      return GetObjectText(program, server, strObjName, strDb, type);
    case objTables:
      return GetTableText(program, server, {strDb, strObjName, lngId});
    case objRelationships:
      return GetRelationshipText(program, server, strObjName, strDb);
    case objConstraints:
      return GetConstraintText(program, server, strObjName, strDb);
    case objPermissions:
      return GetPermissionText(program, side, lngId);
    default:
      program.host.messageBox("SHOULDN't HAPPEN");
      return {};
  }
}

void PrefetchText(Program& program, const tServer& server, const ConnectionPtr& connection, const std::string& strDb,
                  long type, const std::string& strObjName, std::size_t lngSteps) {
  const std::string strConnection =
      connection ? connection->ConnectionString : connectionStringForQuery(server, strDb, true);
  if (type == objRelationships)
    PrefetchAdoRS(program, strConnection, relationshipQuery(strObjName), {.lngSteps = lngSteps});
  else if (type == objConstraints)
    PrefetchAdoRS(program, strConnection, constraintQuery(strObjName), {.lngSteps = lngSteps});
  else
    PrefetchAdoRS(program, strConnection, sourceQuery(strObjName), {.lngSteps = lngSteps});
}

std::string GetObjectText(Program& program, const tServer& server, const std::string& strObjName,
                          const std::string& strDb, long) {
  RecordsetPtr rs;
  GetAdoRS(program, server, adCmdText, sourceQuery(strObjName), rs, strDb);
  return joinTexts(rs);
}

std::string GetObjectTextConn(Program& program, const ConnectionPtr& connection, const tServer& server,
                              const std::string& strObjName, const std::string&) {
  RecordsetPtr rs;
  GetAdoRS_Conn(program, connection, server, adCmdText, sourceQuery(strObjName), rs);
  return joinTexts(rs);
}

std::string GetRelationshipText(Program& program, const tServer& server, const std::string& strObjName,
                                const std::string& strDb) {
  return trap(program, "modObjectText", "GetRelationshipText", std::string(), [&]() -> std::string {
    RecordsetPtr rs;
    GetAdoRS(program, server, adCmdText, relationshipQuery(strObjName), rs, strDb);
    requireRecordset(rs);
    if (!hasRecords(rs)) return {};
    return TrimBlanksAndBreaks(
        "TABLE " + rs->Fields("tablename").Text() + "\r\nCONSTRAINT [" + rs->Fields("foreignkey").Text() +
        "]\r\nFOREIGN KEY [" + rs->Fields("foreigncolumn").Text() + "]\r\nREFERENCES [" +
        rs->Fields("referencedtable").Text() + "] [" + rs->Fields("referencedcolumn").Text() + "]");
  });
}

std::string GetConstraintText(Program& program, const tServer& server, const std::string& strObjName,
                              const std::string& strDb) {
  return trap(program, "modObjectText", "GetConstraintText", std::string(), [&]() -> std::string {
    RecordsetPtr rs;
    GetAdoRS(program, server, adCmdText, constraintQuery(strObjName), rs, strDb);
    requireRecordset(rs);
    if (!hasRecords(rs)) return {};
    return TrimBlanksAndBreaks("CONSTRAINT [" + rs->Fields("name").Text() +
                               "] \r\nPRIMARY KEY CLUSTERED \r\nON COLUMN [" + rs->Fields("column").Text() +
                               "]\r\nON TABLE [" + rs->Fields("tablename").Text() + "]");
  });
}

std::string GetExtendedObjectName(Program& program, tServer& server, const std::string& strDb,
                                  const std::string& strName, long type, long lngId) {
  const std::string name = strName.substr(strName.rfind('.') + 1);
  if (lngId >= 1 && !FitsInBrackets(name)) {
    // A listed name is no bracketed one. In the brackets that are still missing it would be another object's.
    RecordsetPtr rs;
    GetAdoRS(program, server, adCmdText, SqlText("SELECT * FROM ") << inBrackets("[" + name + "]"), rs, strDb);
    return {};
  }
  const auto qualified = [&](const std::string& prefix) {
    return AddSquareBrackets(prefix) + "." + AddSquareBrackets(name);
  };
  if (server.VersionNum == 0) server.VersionNum = GetVersionNumber(server.Version);
  if (server.VersionNum >= 9) {
    std::string strSchema;
    if (lngId < 1) {
      strSchema = GetSchemaForObject(program, server, strDb, name, type);
      if (!strSchema.empty() && strSchema != "dbo") return qualified(strSchema);
    } else {
      if (!Db_GetObjSchemaById(program, server, type, strDb, lngId, strSchema)) return {};
      if (!strSchema.empty()) return qualified(strSchema);
    }
  }
  // An owner would be asked for under a name that is still empty here, so there is never one to add.
  return AddSquareBrackets(name);
}

namespace {

struct ScriptWord {
  long type;
  const char* word;
  const char* condition;
};

constexpr ScriptWord scriptWords[] = {
    {objProcedures, "Procedure", "OBJECTPROPERTY(id, 'IsProcedure') = 1"},
    {objFunctions, "Function", "xtype in ('FN', 'IF', 'TF')"},
    {objViews, "View", "OBJECTPROPERTY(id, 'IsView') = 1"},
    {objTriggers, "Trigger", "OBJECTPROPERTY(id, 'IsTrigger') = 1"},
    {objTables, "Table", "OBJECTPROPERTY(id, 'IsTable') = 1"},
    {objRelationships, "Relationship", "OBJECTPROPERTY(id, 'IsRelationship') = 1"},
};

}  // namespace

std::string GetScriptHeader(Program& program, const std::string& strDb, long type, const std::string& strName,
                            std::string& strDrop) {
  ScriptWord chosen{type, "", ""};
  for (const ScriptWord& row : scriptWords)
    if (row.type == type) chosen = row;
  const std::string word = chosen.word;
  strDrop = "IF EXISTS (SELECT * FROM dbo.sysobjects\r\nWHERE id = object_id('" + strName + "') AND " +
            chosen.condition + ")\r\nDROP " + word + strName;
  const LocalTime now = program.host.now();
  char date[32];
  std::snprintf(date, sizeof date, "%04d-%02d-%02d %02d:%02d:%02d", now.year % 10000, now.month % 100, now.day % 100,
                now.hour % 100, now.minute % 100, now.second % 100);
  return "USE [" + strDb + "]\r\nGO\r\n/****** Object: " + word + " " + strName + "      ---- Script Date: " + date +
         " ******/\r\nSET ANSI_NULLS ON\r\nGO\r\nSET QUOTED_IDENTIFIER ON\r\nGO\r\n" + strDrop + "\r\nGO";
}

std::string WrapSqlInExec(std::string& strSql, const std::string& strDb) {
  if (strSql.empty()) return {};
  constexpr std::string_view create = "create";
  const auto sameLetter = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
  const auto found = std::search(strSql.begin(), strSql.end(), create.begin(), create.end(), sameLetter);
  if (found != strSql.end()) strSql.erase(strSql.begin(), found);
  const std::string quoted = replaceAll(strSql, "'", "''''");
  if (!strDb.empty()) return "EXEC ('USE " + strDb + " EXEC (''" + quoted + "'')')";
  return "EXEC ('USE ' + @Database + ' EXEC (''" + quoted + "'')')" +
         "\r\nIF @@ERROR <> 0 SET @ErrorVal = @@ERROR\r\n" + "\r\n";
}

namespace {

std::string numberedPrefix(long number) {
  std::string text = std::to_string(number);
  if (text.size() < 4) text.append(4 - text.size(), ' ');
  return text + "  ";
}

}  // namespace

std::string RecordsetToString(Program& program, const std::function<bool()>& cancelled, Label& label, RecordsetPtr& rs,
                              long type, tServer& server, const std::string& strDb, bool blnNumbers) {
  std::string result;
  for (long number = 1; !rs->Eof() && !cancelled(); rs->MoveNext(), ++number) {
    const std::string name = rs->Fields(0).Text();
    label.setText(name);
    program.host.doEvents();
    std::string row = name;
    if (type == objTables) {
      std::string strTable = GetExtendedObjectName(program, server, strDb, name, type, integerOf(rs->Fields(2).cell));
      const std::int32_t count = GetNumberOfRecordsInTable(program, server, strTable, strDb);
      if (count == -1) return result + "\r\n*** OPERATION ABORTED - ERROR OCCURRED.***\r\n\r\n";
      row += " (" + FormatThousands(count) + (count == 1 ? " record)" : " records)");
    }
    result += (blnNumbers ? numberedPrefix(number) : "") + row + "\r\n";
  }
  return result;
}

}  // namespace qrel
