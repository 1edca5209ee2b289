#include "compare/script/modNonExistObjects.h"

#include <algorithm>
#include <cctype>
#include <unordered_set>

#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/script/CTokenizer.h"
#include "compare/structure/modIgnoreComments.h"
#include "db/mdlObjects.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* inModNonExistObjects = "modNonExistObjects";

// UNIQUOE stands where UNIQUE would: that word is reported.
constexpr std::string_view reservedWords =
    "ADD ALL ALTER AND ANY AS ASC AUTHORIZATION BACKUP BEGIN BETWEEN BREAK BROWSE BULK BY CASCADE CASE CHECK "
    "CHECKPOINT CLOSE CLUSTERED COALESCE COLLATE COLUMN COMMIT COMPUTE CONSTRAINT CONTAINS CONTAINSTABLE CONTINUE "
    "CONVERT CREATE CROSS CURRENT CURRENT_DATE CURRENT_TIME CURRENT_TIMESTAMP CURRENT_USER CURSOR DATABASE DBCC "
    "DEALLOCATE DECLARE DEFAULT DELETE DENY DESC DISK DISTINCT DISTRIBUTED DOUBLE DROP DUMMY DUMP ELSE END ERRLVL "
    "ESCAPE EXCEPT EXEC EXECUTE EXISTS EXIT FETCH FILE FILLFACTOR FOR FOREIGN FREETEXT FREETEXTTABLE FROM FULL "
    "FUNCTION GOTO GRANT GROUP HAVING HOLDLOCK IDENTITY IDENTITY_INSERT IDENTITYCOL IF IN INDEX INNER INSERT "
    "INTERSECT INTO IS JOIN KEY KILL LEFT LIKE LINENO LOAD NATIONAL NOCHECK NONCLUSTERED NOT NULL NULLIF OF OFF "
    "OFFSETS ON OPEN OPENDATASOURCE OPENQUERY OPENROWSET OPENXML OPTION OR ORDER OUTER OVER PERCENT PLAN PRECISION "
    "PRIMARY PRINT PROC PROCEDURE PUBLIC RAISERROR READ READTEXT RECONFIGURE REFERENCES REPLICATION RESTORE "
    "RESTRICT RETURN REVOKE RIGHT ROLLBACK ROWCOUNT ROWGUIDCOL RULE SAVE SCHEMA SELECT SESSION_USER SET SETUSER "
    "SHUTDOWN SOME STATISTICS SYSTEM_USER TABLE TEXTSIZE THEN TO TOP TRAN TRANSACTION TRIGGER TRUNCATE TSEQUAL "
    "UNION UNIQUOE UPDATE UPDATETEXT USE USER VALUES VARYING VIEW WAITFOR WHEN WHERE WHILE WITH WRITETEXT";

constexpr std::string_view mathOperands[] = {"=", "<>", ">", "<", "-", "+"};
constexpr std::string_view specialWords[] = {"dbo", "nocount", ";", "--"};
constexpr std::string_view dataTypes[] = {
    "bigint", "bit",   "decimal", "int",    "money", "float",  "date",        "datetime2",   "datetime", "char",
    "text",   "nchar", "ntext",   "binary", "image", "cursor", "hierarchyid", "sql_variant", "table"};

template <class Words>
bool isOneOf(const Words& words, std::string_view strWord) {
  return std::find(std::begin(words), std::end(words), strWord) != std::end(words);
}

// The text as a flat run of words.
std::string flattened(const std::string& strText) {
  std::string text = StripCommentsFromProc(strText);
  for (const char* separator : {"(", ")", ","}) text = ReplaceChars(text, separator, " ");
  return StripChars(StripChars(text, "["), "]");
}

bool isFiltered(const std::string& strToken) {
  return IsItNumber(strToken) || IsItMathOperand(strToken) || IsItSqlKeyword(strToken) || IsItSpecialWord(strToken) ||
         IsItSqlDataType(strToken);
}

bool isAs(std::string_view strToken) { return upperCase(strToken) == "AS"; }

}  // namespace

ObjectNames::ObjectNames(const std::vector<TwoStr>& arrObjects, long lngCount) {
  const std::size_t count = lngCount < 1 ? 0 : std::min(arrObjects.size(), static_cast<std::size_t>(lngCount));
  names_.reserve(count);
  for (std::size_t i = 0; i < count; ++i) names_.insert(arrObjects[i].strName);
}

bool ObjectNames::has(std::string_view strToken) const {
  const std::string strLower = lowerCase(trimBlanks(strToken));
  return !strLower.empty() && names_.contains(strLower);
}

bool FindRefToNonExistentObjects(Program& program, long enmObjectType, std::string strText,
                                 const std::vector<TwoStr>& arrObjects, long lngObjectCount, long& lngRefCount,
                                 std::vector<std::string>& arrRefs) {
  return FindRefToNonExistentObjects(program, enmObjectType, std::move(strText),
                                     ObjectNames(arrObjects, lngObjectCount), lngRefCount, arrRefs);
}

bool FindRefToNonExistentObjects(Program& program, long enmObjectType, std::string strText, const ObjectNames& names,
                                 long& lngRefCount, std::vector<std::string>& arrRefs) {
  arrRefs.clear();
  lngRefCount = 0;
  return trap(program, inModNonExistObjects, "FindRefToNonExistentObjects", false, [&] {
    strText = trimBlanks(strText);
    if (strText.empty()) return false;
    strText = flattened(strText);
    std::vector<std::string> arrTokens, arrVariables;
    long lngTokenCount = 0, lngVariableCount = 0;
    if (!GetTokens(program, strText, arrTokens, lngTokenCount) || lngTokenCount == 0) return false;
    GetVariables(program, strText, arrTokens, lngTokenCount, enmObjectType, arrVariables, lngVariableCount);
    bool blnAfterAs = false;
    for (const std::string& strEach : arrTokens) {
      const std::string strToken(trimBlanks(strEach));
      if (strToken.empty()) continue;
      if (isAs(strToken)) {
        blnAfterAs = true;
        continue;
      }
      if (!blnAfterAs || isFiltered(strToken)) continue;
      if (IsItVariable(strToken, arrVariables, lngVariableCount)) continue;
      if (names.has(strToken)) continue;
      arrRefs.push_back(strToken);
      ++lngRefCount;
    }
    return lngRefCount > 0;
  });
}

bool GetTokens(Program& program, const std::string& strText, std::vector<std::string>& arrTokens, long& lngCount) {
  arrTokens.clear();
  lngCount = 0;
  return trap(program, inModNonExistObjects, "GetTokens", false, [&] {
    const std::string strTrimmed(trimBlanks(strText));
    if (strTrimmed.empty()) return false;
    CTokenizer tokenizer(program.host);
    tokenizer.SetText(strTrimmed);
    tokenizer.QuoteChars = "\"";
    tokenizer.ConvertCase = 2;
    tokenizer.EOLChars = "\r\n";
    std::string strToken, strDelimiter;
    bool blnQuoted = false, blnFound = false;
    for (;;) {
      tokenizer.GetNextToken(strToken, strDelimiter, blnQuoted, blnFound);
      if (!blnFound) return true;
      arrTokens.push_back(strToken);
      ++lngCount;
    }
  });
}

void GetVariables(Program& program, const std::string& strText, const std::vector<std::string>& arrTokens,
                  long lngTokenCount, long enmObjectType, std::vector<std::string>& arrVariables,
                  long& lngVariableCount) {
  arrVariables.clear();
  lngVariableCount = 0;
  trap(program, inModNonExistObjects, "GetVariables", [&] {
    if ((enmObjectType != objProcedures && enmObjectType != objFunctions) || strText.empty() || lngTokenCount < 1)
      return;
    for (const std::string& strToken : arrTokens) {
      if (isAs(strToken)) return;
      if (!strToken.starts_with("@")) continue;
      arrVariables.push_back(strToken);
      ++lngVariableCount;
    }
  });
}

bool IsItVariable(std::string_view strToken, const std::vector<std::string>& arrVariables, long lngVariableCount) {
  if (lngVariableCount < 1) return false;
  const std::string strLower = lowerCase(strToken);
  return std::any_of(arrVariables.begin(), arrVariables.end(),
                     [&](const std::string& each) { return lowerCase(each) == strLower; }) ||
         strLower.starts_with("@");
}

bool IsItMathOperand(std::string_view strToken) { return isOneOf(mathOperands, strToken); }

bool IsItSqlKeyword(std::string_view strToken) {
  const std::string_view strTrimmed = trimBlanks(strToken);
  static const auto words = [] {
    const std::vector<std::string> list = splitAt(reservedWords, ' ');
    return std::unordered_set<std::string>(list.begin(), list.end());
  }();
  return !strTrimmed.empty() && words.contains(upperCase(strTrimmed));
}

bool IsItSpecialWord(std::string_view strToken) { return isOneOf(specialWords, lowerCase(strToken)); }

bool IsItSqlDataType(std::string_view strToken) { return isOneOf(dataTypes, lowerCase(strToken)); }

bool IsItNumber(std::string_view strToken) {
  std::size_t at = 0;
  const auto digits = [&] {
    const std::size_t first = at;
    while (at < strToken.size() && std::isdigit(static_cast<unsigned char>(strToken[at]))) ++at;
    return at - first;
  };
  const auto sign = [&] {
    if (at < strToken.size() && (strToken[at] == '+' || strToken[at] == '-')) ++at;
  };
  sign();
  std::size_t count = digits();
  if (at < strToken.size() && strToken[at] == '.') {
    ++at;
    count += digits();
  }
  if (count == 0) return false;
  if (at < strToken.size() && (strToken[at] == 'e' || strToken[at] == 'E')) {
    ++at;
    sign();
    if (digits() == 0) return false;
  }
  return at == strToken.size();
}

}  // namespace qrel
