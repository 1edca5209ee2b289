// The parts of a table's and a view's script that run through EXEC.
#include "app/trap.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/mdlQueryCode.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr const char* errorCheck = "\r\nIF @@ERROR <> 0 SET @ErrorVal = @@ERROR\r\n\r\n";

std::string quotedDefault(const std::string& strDefault) {
  std::string text = replaceAll(strDefault, "'", "''''");
  if (text == "('''''''')") return "('''')";
  if (text == "(''''0'''')") return "(''0'')";
  return text;
}

}  // namespace

std::string GetTableConstraints(Program& program, const tServer& server, const std::string& strTable,
                                const std::string& strDb) {
  std::string result;
  trap(program, "mdlQueryCode", "GetTableConstraints", [&] {
    RecordsetPtr rs;
    GetAdoRS(program, server, adCmdText,
             SqlText("SELECT so.name AS [constraint], sc.text AS [default], sl.name as [column] "
                     "FROM sysobjects so INNER JOIN syscomments sc ON so.id = sc.id "
                     "INNER JOIN syscolumns sl ON so.parent_obj = sl.id AND so.id = sl.cdefault "
                     "WHERE so.parent_obj IN (SELECT id FROM sysobjects WHERE name = ")
                 << inQuotes(strTable) << ") ORDER BY info",
             rs, strDb);
    if (!hasRecords(rs)) return;
    result = "EXEC('ALTER TABLE ' + @Database + '.[dbo].[" + strTable + "] WITH NOCHECK ADD\r\n";
    for (; !rs->Eof(); rs->MoveNext())
      result += "CONSTRAINT [" + rs->Fields("constraint").Text() + "] DEFAULT " +
                quotedDefault(rs->Fields("default").Text()) + " FOR [" + rs->Fields("column").Text() + "],\r\n";
    result.resize(result.size() - 3);
    result += std::string("')") + errorCheck;
  });
  return result;
}

std::string GetExtras(Program& program, const tServer& server, const std::string& strTable, const std::string& strDb,
                      long type) {
  std::string result;
  if (type != objViews) return result;
  trap(program, "mdlQueryCode", "GetExtras", [&] {
    RecordsetPtr rs;
    GetAdoRS(program, server, adCmdText,
             SqlText("SELECT si.name AS [index], sk.indid, sc.[name] AS [column] FROM sysindexkeys sk "
                     "INNER JOIN sysindexes si ON sk.id = si.id AND sk.indid = si.indid "
                     "INNER JOIN syscolumns sc ON sk.id = sc.id AND sk.colid = sc.colid "
                     "INNER JOIN sysobjects so ON so.id = sk.id "
                     "WHERE so.[name] = ")
                 << inQuotes(strTable) << " ORDER BY sk.indid",
             rs, strDb);
    if (!hasRecords(rs)) return;
    const auto opening = [&](const char* strCreate) {
      return std::string(strCreate) + rs->Fields("index").Text() + "] ON ' + @Database + '.[dbo].[" + strTable +
             "]\r\n(";
    };
    std::string strLine = opening(integerOf(rs->Fields("indid").cell) == 1 ? "EXEC('CREATE UNIQUE CLUSTERED INDEX ["
                                                                           : "EXEC('CREATE INDEX [");
    while (!rs->Eof()) {
      const std::int32_t lngIndId = integerOf(rs->Fields("indid").cell);
      strLine += "[" + rs->Fields("column").Text() + "], ";
      rs->MoveNext();
      if (!rs->Eof() && integerOf(rs->Fields("indid").cell) <= lngIndId) continue;
      strLine.resize(strLine.size() - 2);
      result += strLine + ") ON [PRIMARY] ')" + errorCheck;
      if (!rs->Eof()) strLine = opening("EXEC('CREATE INDEX [");
    }
  });
  return result;
}

}  // namespace qrel
