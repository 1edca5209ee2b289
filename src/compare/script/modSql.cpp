#include "compare/script/modSql.h"

#include "app/modStrings.h"
#include "app/trap.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "platform/text.h"

namespace qrel {

namespace {

std::string withReplacement(const tCreateStatement& what, std::string strText) {
  if (what.strReplaceFrom.empty()) return strText;
  return ReplaceString(strText, what.strReplaceFrom, what.strReplaceTo, false);
}

// Whether a name stays within the brackets, the literal and the comment that the script puts it in.
bool canStandInScript(const std::string& strName) {
  return FitsInBrackets(strName) && strName.find_first_of("'\r\n") == std::string::npos &&
         strName.find("*/") == std::string::npos && strName.find("/*") == std::string::npos;
}

// Empty when the script would name, and drop, another object or none.
std::string extendedName(Program& program, tServer& server, const tCreateStatement& what) {
  if (!canStandInScript(what.strObject) || !canStandInScript(what.strDatabase)) return {};
  if (PointIsPartOfName(program, server, what.strDatabase, what.enmObjectType, what.strObject, what.lngObjectId))
    return {};
  return GetExtendedObjectName(program, server, what.strDatabase, what.strObject, what.enmObjectType, what.lngObjectId);
}

std::string bodyOf(Program& program, tServer& server, const tCreateStatement& what) {
  switch (what.enmObjectType) {
    case objProcedures:
    case objFunctions:
    case objViews:
    case objTriggers:
      return withReplacement(what,
                             GetObjectText(program, server, what.strObject, what.strDatabase, what.enmObjectType));
    case objTables: {
      tTableQuery query{what.strDatabase, what.strObject, what.lngObjectId};
      query.strLineSuffix = what.strDelimiter;
      return GetTableText(program, server, query);
    }
    case objRelationships:
      return GetRelationshipText(program, server, what.strObject, what.strDatabase);
    default:
      return {};
  }
}

// The delimiter behind the last part goes: of the extras where there are any, else of the body.
void dropLastDelimiter(const std::string& strDelimiter, std::string& strBody, std::string& strExtras) {
  if (strDelimiter.empty()) return;
  std::string& strLast = strExtras.empty() ? strBody : strExtras;
  if (strLast.ends_with(strDelimiter)) strLast.resize(strLast.size() - strDelimiter.size());
}

}  // namespace

std::string GetSqlCreateStatement(Program& program, tServer& server, const tCreateStatement& what,
                                  std::string& strDropStatement) {
  strDropStatement.clear();
  if (what.strServerName.empty() || what.strDatabase.empty() || what.strObject.empty() || what.enmObjectType == 0) {
    program.host.messageBox("Cannot build SQL CREATE statement - wrong parameters passed", Icon::Warning, "Error");
    return {};
  }
  std::string strExtended = extendedName(program, server, what);
  if (strExtended.empty()) return {};
  strExtended = withReplacement(what, std::move(strExtended));
  const std::string strHeader =
      GetScriptHeader(program, what.strDatabase, what.enmObjectType, strExtended, strDropStatement);
  std::string strOpening, strClosing;
  if (what.enmObjectType == objTables) {
    strOpening = "CREATE " + upperCase(GetObjectTypeName(objTables, true)) + " " + strExtended + " (";
    strClosing = ")";
  }
  std::string strBody = bodyOf(program, server, what);
  std::string strExtras = GetExtras(program, server, what.strObject, what.strDatabase, what.enmObjectType);
  dropLastDelimiter(what.strDelimiter, strBody, strExtras);
  const std::string strStatement = strOpening + "\r\n" + strBody + " " + strExtras + "\r\n" + strClosing;
  return what.blnNoHeader ? strStatement : strHeader + "\r\n" + strStatement;
}

namespace {

// Traps under the name given; the report says which index it was.
template <class Build>
std::string ofIndex(Program& program, const char* strProcName, const tTableColumn& ptIndex, const std::string& strTable,
                    Build&& build) {
  try {
    if (strTable.empty() || ptIndex.strDefinition.empty() || ptIndex.strName.empty()) return {};
    return build();
  } catch (const std::exception& error) {
    const ErrorInfo info = describeError(error);
    ShowErrorReport(program, info.number, info.description, "modSql", strProcName,
                    "ptIndex.strName = " + ptIndex.strName);
    return {};
  }
}

}  // namespace

std::string BuildIndexDropStatement(Program& program, const tTableColumn& ptIndex, const std::string& strTable) {
  return ofIndex(program, "BuildIndexDropStatement", ptIndex, strTable, [&] {
    return "ALTER TABLE [" + strTable + "] DROP " + GetDelimitedWord(ptIndex.strDefinition, 1, " ") + " [" +
           ptIndex.strName + "]";
  });
}

std::string BuildIndexCreateStatement(Program& program, const tTableColumn& ptIndex, const std::string& strTable) {
  return ofIndex(program, "BuildIndexCreateStatement", ptIndex, strTable,
                 [&] { return "ALTER TABLE [" + strTable + "] ADD " + ptIndex.strDefinition; });
}

}  // namespace qrel
