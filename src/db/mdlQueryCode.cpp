#include "db/mdlQueryCode.h"

#include <algorithm>
#include <array>

#include "app/trap.h"
#include "db/mdlData.h"
#include "platform/text.h"

namespace qrel {

std::string GetTableText(Program& program, tServer& server, const tTableQuery& query, long* lngIgnored,
                         bool blnClusteredOnly, const std::string& strIndexSuffix) {
  tTableStructure table;
  GetTableStructure(program, server, query, table);
  if (lngIgnored) *lngIgnored = static_cast<long>(table.arrIgnored.size());
  if (!blnClusteredOnly && program.settings.IgnoreIndexes) return table.strText;
  std::vector<tTableColumn> arrIndexes;
  long lngCount = 0;
  const std::string strIdx = GetIndexes(program, server, query.strTable, query.strDb, blnClusteredOnly, strIndexSuffix,
                                        false, arrIndexes, lngCount);
  return strIdx.empty() ? table.strText : table.strText + "\r\n\r\n" + strIdx;
}

namespace {

SqlText columnsQuery(const std::string& strTable, long lngId) {
  SqlText condition;
  if (lngId >= 1)
    condition << "WHERE sco.id = " << lngId << " ";
  else
    condition << "WHERE sob.name = " << inQuotes(strTable) << " ";
  return SqlText(
             "SELECT sco.[name] AS [column], sco.autoval, sco.isnullable, "
             "sco.length, sco.prec, sco.scale, sty.[name] AS datatype, ident_seed(")
         << inQuotes(strTable) << ") AS identityseed, ident_incr(" << inQuotes(strTable)
         << ") AS identityincrement, "
            "isID=case when sco.status&128=0 then '' else 'Y' end "
            ", sco.cdefault, sob.[id] AS [table_id], sco.[colid] AS [col_id] "
            "FROM sysobjects sob INNER JOIN syscolumns sco ON sob.id = sco.id "
            "INNER JOIN systypes sty ON sco.xtype = sty.xtype AND sco.xusertype = sty.xusertype "
         << condition << "ORDER BY sco.colorder";
}

SqlText defaultValueQuery(long lngTableId, long lngColId) {
  SqlText strSql = "SELECT [ctext] FROM syscomments WHERE id IN (SELECT cdefault FROM syscolumns WHERE id = ";
  return strSql << lngTableId << " AND colid = " << lngColId << " AND cdefault > 0)";
}

SqlText defaultNameQuery(long lngTableId, long lngDefaultId) {
  SqlText strSql = "SELECT [name] FROM sys.objects WHERE parent_object_id = ";
  return strSql << lngTableId << " AND object_id = " << lngDefaultId << " AND type_desc LIKE 'DEFAULT_CONSTRAINT'";
}

long longOrZero(const Field& field) { return field.IsNull() ? 0 : integerOf(field.cell); }

bool isOneOf(const std::string& text, std::initializer_list<std::string_view> list) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

// Appends the size that the type has, if any, to the line and to the type's text.
void addSize(Recordset& rs, tTableColumn& column) {
  const std::string type = lowerCase(column.strType);
  column.strTypeText = column.strType;
  if (isOneOf(type, {"nvarchar", "varchar", "binary", "char", "nchar", "varbinary"})) {
    column.strPrec = rs.Fields("prec").Text();
    column.strLine += "(" + column.strPrec + ") ";
    column.strTypeText += " (" + column.strPrec + ")";
  } else if (isOneOf(type, {"decimal", "numeric"})) {
    column.strPrec = rs.Fields("prec").Text();
    const std::string size = "(" + column.strPrec + "," + rs.Fields("scale").Text() + ") ";
    column.strLine.pop_back();
    column.strLine += size;
    column.strTypeText += " " + size;
  }
}

void addIdentity(Recordset& rs, std::string& strLine) {
  if (rs.Fields("isID").Text() != "Y") return;
  const Field seed = rs.Fields("identityseed");
  if (seed.IsNull())
    strLine += "IDENTITY ";
  else
    strLine += "IDENTITY(" + seed.Text() + "," + rs.Fields("identityincrement").Text() + ") ";
}

struct DefaultClause {
  bool found = false;
  std::string text;
  std::string name;
};

DefaultClause readDefault(Program& program, const tServer& server, const std::string& strDb, Recordset& rs) {
  const long cdefault = longOrZero(rs.Fields("cdefault"));
  const long lngColId = longOrZero(rs.Fields("col_id"));
  if (server.VersionNum < 9 || cdefault <= 0 || lngColId <= 0) return {};
  const long lngTableId = longOrZero(rs.Fields("table_id"));
  return {true, GetDefaultValue(program, server, strDb, lngTableId, lngColId),
          GetDefaultConstraintName(program, server, strDb, lngTableId, cdefault)};
}

tTableColumn readColumn(Program& program, const tServer& server, const std::string& strDb, Recordset& rs) {
  tTableColumn column;
  column.strName = rs.Fields("column").Text();
  column.strType = rs.Fields("datatype").Text();
  column.strLine = "[" + column.strName + "] [" + column.strType + "] ";
  const DefaultClause defaults = readDefault(program, server, strDb, rs);
  addSize(rs, column);
  addIdentity(rs, column.strLine);
  column.strLine += longOrZero(rs.Fields("isnullable")) == 0 ? "NOT NULL" : "NULL";
  if (defaults.found) column.strLine += " CONSTRAINT [" + defaults.name + "] DEFAULT " + defaults.text;
  return column;
}

[[noreturn]] void raiseStructureError(const tServer& server, const tTableQuery& query, const ErrorInfo& info) {
  throw RuntimeError(info.number, "Error occured while attempting to get the structure of table\r\n\r\n'" +
                                      query.strTable + "'\r\n\r\nin SQL Server database\r\n\r\n'" + server.Name + "." +
                                      query.strDb + "'\r\n\r\nError " + std::to_string(info.number) + " (" +
                                      info.description + ").");
}

void readColumns(Program& program, const tServer& server, const tTableQuery& query, Recordset& rs,
                 tTableStructure& table) {
  for (; !rs.Eof(); rs.MoveNext()) {
    const std::string strColumn = rs.Fields("column").Text();
    const auto isColumn = [strLower = lowerCase(strColumn)](const std::string& strIgnored) {
      return lowerCase(strIgnored) == strLower;
    };
    if (std::any_of(table.arrIgnored.begin(), table.arrIgnored.end(), isColumn)) continue;
    table.arrColumns.push_back(readColumn(program, server, query.strDb, rs));
    table.strText += table.arrColumns.back().strLine + query.strLineSuffix + "\r\n";
  }
}

}  // namespace

void ReadTableStructure(Program& program, tServer& server, const tTableQuery& query, tTableStructure& table) {
  table = {};
  if (server.VersionNum == 0) server.VersionNum = GetVersionNumber(server.Version);
  const auto& source = program.state<IgnoredColumnsSource>();
  if (query.enmIgnored && source.lookUp)
    table.arrIgnored = source.lookUp(*query.enmIgnored, server, query.strDb,
                                     query.strListed.empty() ? query.strTable : query.strListed);
  RecordsetPtr rs;
  AdoExtras extras;
  std::int32_t result = -1;
  {
    const QuietScope quiet(program);
    result = GetAdoRS(program, server, adCmdText, columnsQuery(query.strTable, query.lngId), rs, query.strDb, &extras);
  }
  if (result == -1) raiseStructureError(server, query, {extras.errNumber, extras.errDescription});
  try {
    readColumns(program, server, query, *rs, table);
  } catch (const std::exception& error) {
    raiseStructureError(server, query, describeError(error));
  }
  rs->Close();
  std::string& strText = table.strText;
  if (!strText.empty()) strText = trimBlanks(std::string_view(strText).substr(0, strText.size() - 2));
}

bool GetTableStructure(Program& program, tServer& server, const tTableQuery& query, tTableStructure& table) {
  return trap(program, "mdlQueryCode", "GetTableStructure", false, [&] {
    ReadTableStructure(program, server, query, table);
    return true;
  });
}

namespace {

SqlText indexesQuery(const std::string& strTable, bool blnClusteredOnly) {
  return SqlText(
             "SELECT DISTINCT sc.name AS [column], si.name as [index], sk.indid, sk.keyno "
             "FROM sysobjects so INNER JOIN sysindexkeys sk ON so.parent_obj = sk.id "
             "INNER JOIN sysindexes si ON sk.id = si.id AND sk.indid = si.indid "
             "INNER JOIN syscolumns sc ON sk.id = sc.id AND sk.colid = sc.colid "
             "INNER JOIN sysobjects so2 ON so.parent_obj = so2.id "
             "WHERE so2.name = ")
         << inQuotes(strTable) << " AND "
         << (blnClusteredOnly ? SqlText("si.indid = 1 AND ") : SqlText("si.indid BETWEEN 1 AND 254 AND "))
         << "INDEXPROPERTY(si.id, si.name, 'IsStatistics') = 0 AND "
            "INDEXPROPERTY(si.id, si.name, 'IsHypothetical') = 0 "
            "ORDER BY sk.indid, sk.keyno";
}

// The opening of a table's first index; those behind it open with "INDEX" alone.
std::string firstOpening(long lngIndId, const std::string& strIndex, const std::string& strIndexSuffix) {
  if (lngIndId != 1) return "INDEX [" + strIndex + "] (";
  if (lowerCase(strIndex).starts_with("pk"))
    return "CONSTRAINT [" + strIndex + strIndexSuffix + "] PRIMARY KEY CLUSTERED (";
  return "CLUSTERED INDEX [" + strIndex + strIndexSuffix + "] (";
}

// "..., " less its last two characters, closed.
std::string closed(std::string strLine) {
  strLine.resize(strLine.size() - 2);
  return strLine + ")";
}

// Walks the index rows in order of index and key: one line, and one entry, an index.
struct IndexWalk {
  std::string result;
  std::vector<tTableColumn> entries;
  long count = 0;

  void run(Recordset& rs, const std::string& strIndexSuffix, bool blnFillArray) {
    std::string strLine = firstOpening(integerOf(rs.Fields("indid").cell), rs.Fields("index").Text(), strIndexSuffix);
    while (!rs.Eof()) {
      const long lngIndId = integerOf(rs.Fields("indid").cell);
      const std::string strIndex = rs.Fields("index").Text();
      const std::string strColumn = rs.Fields("column").Text();
      strLine += "[" + strColumn + "], ";
      rs.MoveNext();
      if (!rs.Eof() && integerOf(rs.Fields("indid").cell) <= lngIndId) continue;
      strLine = closed(std::move(strLine));
      if (blnFillArray) addEntry(strIndex, strColumn, strLine);
      result += strLine;
      if (!rs.Eof()) strLine = "\r\nINDEX [" + rs.Fields("index").Text() + "] (";
    }
  }

 private:
  void addEntry(const std::string& strIndex, const std::string& strLastColumn, const std::string& strLine) {
    tTableColumn& entry = entries.emplace_back();
    entry.strName = strIndex;
    entry.strLine = strLastColumn;
    entry.strDefinition = strLine.starts_with("\r\n") ? strLine.substr(2) : strLine;
    ++count;
  }
};

}  // namespace

std::string GetIndexes(Program& program, const tServer& server, const std::string& strTable, const std::string& strDb,
                       bool blnClusteredOnly, const std::string& strIndexSuffix, bool blnFillArray,
                       std::vector<tTableColumn>& arrIndexes, long& lngCount) {
  IndexWalk walk;
  trap(program, "mdlQueryCode", "GetIndexes", [&] {
    RecordsetPtr rs;
    GetAdoRS(program, server, adCmdText, indexesQuery(strTable, blnClusteredOnly), rs, strDb);
    if (!rs) throw RuntimeError(errorNumber::objectNotSet, "Object variable or With block variable not set");
    if (!hasRecords(rs)) return;
    walk.run(*rs, strIndexSuffix, blnFillArray);
    walk.result += "\r\n";
    rs->Close();
  });
  arrIndexes = std::move(walk.entries);
  lngCount = walk.count;
  return walk.result;
}

namespace {

// What a table's columns will have asked for their defaults. Runs on a thread that reads ahead.
std::vector<PrefetchHint> defaultsOf(const ReadAhead& columns, const std::string& strConnection,
                                     std::int32_t lngTimeout) {
  const auto index = [&](std::string_view name) {
    for (std::size_t i = 0; i < columns.columns.size(); ++i)
      if (columns.columns[i].name == name) return i;
    throw RuntimeError(errorNumber::itemNotFound, "A column of the table's columns is missing.");
  };
  const std::array<std::size_t, 3> fields{index("cdefault"), index("col_id"), index("table_id")};
  std::vector<PrefetchHint> hints;
  for (std::size_t row = 0; row < columns.cells.rowCount(); ++row) {
    std::array<long, 3> values{};
    for (std::size_t i = 0; i < fields.size(); ++i)
      if (const Cell cell = columns.cells.cell(fields[i], row); !cell.null) values[i] = integerOf(cell);
    const auto [cdefault, lngColId, lngTableId] = values;
    if (cdefault <= 0 || lngColId <= 0) continue;
    hints.push_back(HintOf(strConnection, defaultValueQuery(lngTableId, lngColId), lngTimeout));
    hints.push_back(HintOf(strConnection, defaultNameQuery(lngTableId, cdefault), lngTimeout));
  }
  return hints;
}

}  // namespace

void PrefetchTableText(Program& program, const tServer& server, const tTableQuery& query, std::size_t lngSteps) {
  if (!program.data.readsAhead()) return;
  const std::string strConnection = connectionStringForQuery(server, query.strDb, true);
  const std::int32_t lngVersion = server.VersionNum != 0 ? server.VersionNum : GetVersionNumber(server.Version);
  std::function<std::vector<PrefetchHint>(const ReadAhead&)> next;
  if (lngVersion >= 9)
    next = [strConnection, lngTimeout = program.settings.Timeout](const ReadAhead& columns) {
      return defaultsOf(columns, strConnection, lngTimeout);
    };
  PrefetchAdoRS(program, strConnection, columnsQuery(query.strTable, query.lngId),
                {.lngSteps = lngSteps, .next = std::move(next)});
  if (!program.settings.IgnoreIndexes)
    PrefetchAdoRS(program, strConnection, indexesQuery(query.strTable, false), {.lngSteps = lngSteps});
}

long GetColumnsCount(Program& program, tServer& server, const tTableQuery& query) {
  tTableStructure table;
  GetTableStructure(program, server, query, table);
  return static_cast<long>(table.arrColumns.size());
}

std::string GetDefaultValue(Program& program, const tServer& server, const std::string& strDb, long lngTableId,
                            long lngColId) {
  RecordsetPtr rs;
  GetAdoRS(program, server, adCmdText, defaultValueQuery(lngTableId, lngColId), rs, strDb);
  return hasRecords(rs) ? rs->Fields("ctext").Text() : std::string();
}

std::string GetDefaultConstraintName(Program& program, const tServer& server, const std::string& strDb, long lngTableId,
                                     long lngDefaultId) {
  const QuietScope quiet(program);
  RecordsetPtr rs;
  GetAdoRS(program, server, adCmdText, defaultNameQuery(lngTableId, lngDefaultId), rs, strDb);
  return hasRecords(rs) ? rs->Fields("name").Text() : std::string();
}

}  // namespace qrel
