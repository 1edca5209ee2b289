#include "compare/script/sureReferences.h"

#include <algorithm>
#include <utility>

#include "compare/script/modNonExistObjects.h"
#include "compare/script/sqlScan.h"
#include "compare/script/sqlWords.h"
#include "db/mdlData.h"
#include "platform/text.h"

namespace qrel {

namespace {

using Kind = SqlItem::Kind;
using Names = std::unordered_set<std::string>;

bool has(const Names& names, const std::string& name) { return names.count(name) > 0; }

bool isOneOf(const SqlItem& item, std::initializer_list<std::string_view> words) {
  return !item.word.empty() && std::find(words.begin(), words.end(), item.word) != words.end();
}

bool isReserved(const SqlItem& item) {
  return item.bare && (IsItSqlKeyword(item.word) || isOneOf(item, {"unique", "go", "merge", "pivot", "unpivot"}));
}

bool isKeyword(const SqlItem& item) { return isReserved(item) || (item.bare && IsStatementWord(item.word)); }

// A name that stands for something: no keyword, no type.
bool isPlainName(const SqlItem& item) {
  if (isOneOf(item, {"inserted", "deleted"})) return true;
  return item.kind == Kind::Name && !isKeyword(item) && !(item.bare && IsBuiltInType(item.word));
}

std::string lowerPart(const SqlItem& item, std::size_t part) { return lowerCase(item.parts[part]); }

bool isSystemSchema(const std::string& strLower) { return strLower == "sys" || strLower == "information_schema"; }

// The search over one text.
class Analysis {
 public:
  Analysis(std::string_view text, const KnownNames& known) : items_(ScanSql(text)), known_(known) { findParentheses(); }

  std::vector<SureReference> run() {
    for (std::size_t i = 0; i + 1 < items_.size(); ++i) {
      noteClause(items_[i]);
      collect(i);
    }
    for (std::size_t i = 0; i + 1 < items_.size(); ++i) check(i);
    return std::move(found_);
  }

 private:
  const SqlItem& at(std::size_t i) const { return items_[std::min(i, items_.size() - 1)]; }
  const SqlItem& before(std::size_t i, std::size_t by = 1) const { return i >= by ? items_[i - by] : items_.back(); }

  // For each "(" the index behind its ")"; the end for one that isn't closed.
  void findParentheses() {
    std::vector<std::size_t> open;
    behind_.assign(items_.size(), items_.size() - 1);
    for (std::size_t i = 0; i < items_.size(); ++i) {
      if (items_[i].is("(")) open.push_back(i);
      if (!items_[i].is(")") || open.empty()) continue;
      behind_[open.back()] = i + 1;
      open.pop_back();
    }
  }

  void define(const SqlItem& item) {
    if (item.kind == Kind::Name) defined_.insert(lowerCase(item.parts.back()));
    if (item.kind == Kind::Temporary) temporaries_.insert(lowerCase(item.parts.back()));
  }
  // The names between the "(" at `open` and its ")".
  void defineList(std::size_t open) {
    const std::size_t end = behind_[open];
    for (std::size_t i = open; i < end; ++i)
      if (items_[i].kind == Kind::Name) define(items_[i]);
  }

  // ------------------------------------------------------------------------------------------ what the text defines

  void noteClause(const SqlItem& item) {
    if (isOneOf(item, {"select", "insert", "update", "delete", "merge", "output", "fetch", "from", "where", "set"}))
      clause_ = item.word;
    if (isOneOf(item, {"select", "insert", "output", "fetch", "merge"})) statement_ = item.word;
  }

  void collect(std::size_t i) {
    const SqlItem& item = items_[i];
    if (isOneOf(item, {"pivot", "unpivot"}) && at(i + 1).is("(")) {
      defineList(i + 1);
      const std::size_t end = behind_[i + 1];
      for (std::size_t inside = i + 1; inside < end; ++inside) pivoted_.insert(inside);
    }
    if (item.is("into") && statement_ == "select") define(at(i + 1));
    if (item.is("create")) collectCreated(i + 1);
    if (isOneOf(item,
                {"constraint", "index", "collate", "goto", "tran", "transaction", "save", "role", "cursor", "to"}) &&
        isPlainName(at(i + 1)))
      define(at(i + 1));
    if (item.is("index") && at(i + 1).is("(")) defineList(i + 1);  // a hint
    const bool cursorName = item.is("of") && before(i).is("current");
    const bool keyName = isOneOf(item, {"key", "certificate"}) && isOneOf(before(i), {"symmetric", "asymmetric", "by"});
    const bool guardedDrop = item.is("exists") && before(i).is("if") && before(i, 3).is("drop");
    if (cursorName || keyName || guardedDrop) define(at(i + 1));
    if (item.is("dbcc") && at(i + 2).is("(")) defineList(i + 2);
    if (item.kind == Kind::Name) collectName(i);
  }

  void collectCreated(std::size_t i) {
    while (isOneOf(at(i), {"unique", "clustered", "nonclustered", "or", "alter", "primary", "columnstore"})) ++i;
    if (isOneOf(at(i), {"table", "view", "proc", "procedure", "function", "trigger", "type", "synonym", "sequence",
                        "statistics", "index", "schema"}))
      define(at(i + 1));
  }

  void collectName(std::size_t i) {
    const SqlItem& item = items_[i];
    const SqlItem& next = at(i + 1);
    if (item.parts.size() > 1) return;
    const bool alias = isAlias(i);
    const bool withTableOfNames = next.is("as") && at(i + 2).is("(");  // a common table expression, x AS (...)
    const bool columnType = isType(next) && !next.is("cursor");        // x int
    const bool cursor = isOneOf(next, {"cursor", "insensitive", "scroll"});
    const bool label = next.is(":") && !at(i + 2).is(":") && isPlainName(item);
    const bool columnAlias = next.is("=") && clause_ == "select" &&
                             (isOneOf(before(i), {"select", ",", "distinct", "all"}) || before(i, 2).is("top"));
    if (alias || withTableOfNames || columnType || cursor || label || columnAlias) define(item);
    // The columns that an alias or a common table expression gives a list of.
    if (!next.is("(")) return;
    const std::size_t behind = behind_[i + 1];
    if (alias || (at(behind).is("as") && at(behind + 1).is("("))) {
      define(item);
      defineList(i + 1);
    }
  }

  bool isType(const SqlItem& item) const {
    if (item.kind != Kind::Name) return false;
    return (item.bare && IsBuiltInType(item.word)) || has(known_.others, lowerCase(item.parts.back()));
  }

  // x in "... AS x", "table x", "(...) x", "@t x", "CASE ... END x".
  bool isAlias(std::size_t i) const {
    if (i == 0) return false;
    const SqlItem& item = items_[i];
    const SqlItem& previous = before(i);
    if (previous.is("as")) return true;
    if (isReserved(item) || isOneOf(previous, {"apply", "using"})) return false;
    if (previous.kind == Kind::Name) return !isReserved(previous) || previous.is("end");
    return previous.is(")") || previous.kind == Kind::Variable || previous.kind == Kind::Temporary ||
           previous.kind == Kind::Literal;
  }

  // ------------------------------------------------------------------------------------------- what has to be there

  // Whether what stands at i has to be something with rows, or a procedure.
  bool mustBeObject(std::size_t i) const {
    const SqlItem& previous = before(i);
    if (isOneOf(previous,
                {"from", "join", "into", "update", "apply", "merge", "using", "references", "delete", "insert"}))
      return true;
    if (previous.is("table")) return isOneOf(before(i, 2), {"truncate", "alter"});
    return isExecuted(i);
  }

  bool isExecuted(std::size_t i) const {
    const bool withResult = before(i).is("=") && before(i, 2).kind == Kind::Variable;
    return isOneOf(before(i, withResult ? 3 : 1), {"exec", "execute"});
  }

  void check(std::size_t i) {
    const SqlItem& item = items_[i];
    if (item.kind == Kind::Temporary) {
      // A temporary table of somebody else's may have any column.
      if (!has(temporaries_, lowerPart(item, item.parts.size() - 1))) columnsKnown_ = false;
      return;
    }
    if (item.kind != Kind::Name || pivoted_.count(i) > 0) return;
    // A member of what stands before it, "type::Member", "(...).Member"; what is no part of the database.
    if (before(i).is(".") || (before(i).is(":") && before(i, 2).is(":")) || before(i).is("dbcc")) return;
    // FROM SERVICE, FETCH FROM GLOBAL, ON DELETE NO ACTION
    if (isOneOf(item, {"service", "global", "no"})) return;
    const bool object = mustBeObject(i);
    if (object ? isReserved(item) : isKeyword(item)) return;
    if (item.quoted && !object) return;
    const bool call = at(i + 1).is("(");
    const bool columnsKnown = columnsKnown_;
    const bool explained = item.parts.size() == 1   ? singleIsKnown(item, object, call, i)
                           : item.parts.size() == 2 ? pairIsKnown(item, 0, call)
                                                    : longIsKnown(item, call);
    if (isExecuted(i)) columnsKnown_ = columnsKnown;  // a procedure's rows have no names here
    if (!explained) report(item, !object && !call);
  }

  bool objectIsKnown(const std::string& strLower) {
    if (IsSystemObject(strLower) || has(known_.opaque, strLower)) {
      columnsKnown_ = false;
      return true;
    }
    return has(defined_, strLower) || has(known_.objects, strLower);
  }

  bool singleIsKnown(const SqlItem& item, bool object, bool call, std::size_t i) {
    const std::string name = lowerPart(item, 0);
    if (objectIsKnown(name) || name == "inserted" || name == "deleted") return true;
    if (call && IsBuiltInFunction(name)) {
      if (object) columnsKnown_ = false;  // OPENJSON, STRING_SPLIT: rows with columns of their own
      return true;
    }
    if (object) return false;
    if (IsBuiltInType(name) || has(known_.others, name) || has(known_.schemas, name)) return true;
    // "(" behind a column is one that begins something else: an index's column list, a type's size.
    if (has(known_.columns, name)) return true;
    return IsBuiltInFunction(name) && !call ? true : before(i).is("collate");
  }

  // The two parts from `first` on: "schema.object", "table.column", "alias.column".
  bool pairIsKnown(const SqlItem& item, std::size_t first, bool call) {
    const std::string a = lowerPart(item, first), b = lowerPart(item, first + 1);
    if (isSystemSchema(a)) {
      columnsKnown_ = false;
      return true;
    }
    if (has(known_.schemas, a) && (has(known_.qualified, a + "." + b) || has(known_.others, b) || has(defined_, b))) {
      if (has(known_.opaque, b)) columnsKnown_ = false;
      return true;
    }
    if (call && has(known_.columns, a)) return true;  // column.method(...)
    if (has(defined_, a) || has(known_.objects, a) || IsSystemObject(a) || a == "inserted" || a == "deleted")
      return b.empty() || call || has(known_.columns, b) || has(defined_, b);
    return false;
  }

  bool longIsKnown(const SqlItem& item, bool call) {
    const std::string a = lowerPart(item, 0), b = lowerPart(item, 1), c = lowerPart(item, 2);
    if (item.parts.size() == 3 && a == known_.database)
      return b.empty() ? objectIsKnown(c) : pairIsKnown(item, 1, false);
    if (has(known_.schemas, a) && (has(known_.objects, b) || has(defined_, b)))
      return c.empty() || call || has(known_.columns, c) || has(defined_, c);
    if (call && (has(defined_, a) || has(known_.objects, a))) return true;  // alias.column.method(...)
    columnsKnown_ = false;                                                  // another database
    return true;
  }

  void report(const SqlItem& item, bool perhapsColumn) {
    std::string name;
    for (const std::string& part : item.parts) name += (&part == item.parts.data() ? "" : ".") + part;
    if (!told_.insert(lowerCase(name)).second) return;
    found_.push_back({std::move(name), item.line});
    perhapsColumn_.push_back(perhapsColumn);
  }

 public:
  // Columns are left out where one of the things that are read may have any.
  std::vector<SureReference> runAndDropColumns() {
    std::vector<SureReference> all = run();
    if (columnsKnown_) return all;
    std::vector<SureReference> kept;
    for (std::size_t i = 0; i < all.size(); ++i)
      if (!perhapsColumn_[i]) kept.push_back(std::move(all[i]));
    return kept;
  }

 private:
  std::vector<SqlItem> items_;
  std::vector<std::size_t> behind_;
  const KnownNames& known_;
  std::string clause_, statement_;
  Names defined_, temporaries_, told_;
  std::unordered_set<std::size_t> pivoted_;
  bool columnsKnown_ = true;
  std::vector<SureReference> found_;
  std::vector<bool> perhapsColumn_;
};

}  // namespace

std::vector<SureReference> FindSureReferences(std::string_view strText, const KnownNames& known) {
  return Analysis(strText, known).runAndDropColumns();
}

namespace {

// Calls `take` for each record. False when the query failed.
template <class Take>
bool forEachRow(Program& program, const tServer& server, const std::string& strDb, const SqlText& strSql, Take&& take) {
  RecordsetPtr rs;
  if (GetAdoRS(program, server, adCmdText, strSql, rs, strDb) == -1) return false;
  for (; !rs->Eof(); rs->MoveNext()) take(*rs);
  rs->Close();
  return true;
}

std::string lowerField(Recordset& rs, std::size_t index) {
  const Field field = rs.Fields(index);
  return field.IsNull() ? std::string() : lowerCase(field.Text());
}

// The first field of each record.
bool readInto(Program& program, const tServer& server, const std::string& strDb, const SqlText& strSql, Names& names) {
  return forEachRow(program, server, strDb, strSql, [&](Recordset& rs) { names.insert(lowerField(rs, 0)); });
}

// Schema, name, id and type of each object.
SqlText objectsQuery(bool blnSchemas) {
  if (!blnSchemas) return "SELECT USER_NAME(uid) AS [schema], [name], id, xtype AS [type] FROM sysobjects";
  return "SELECT s.name AS [schema], o.name AS [name], o.object_id AS id, o.[type] FROM sys.objects o "
         "INNER JOIN sys.schemas s ON s.schema_id = o.schema_id";
}

bool hasRowsOfItsOwn(const std::string& strType) {
  const std::string_view type = trimBlanks(strType);
  return type == "v" || type == "if" || type == "tf" || type == "ft";
}

bool readObjects(Program& program, const tServer& server, const std::string& strDb, const Names& idsWithColumns,
                 KnownNames& known) {
  const bool blnSchemas = GetVersionNumber(server.Version) >= 9;
  const bool read = forEachRow(program, server, strDb, objectsQuery(blnSchemas), [&](Recordset& rs) {
    const std::string strSchema = lowerField(rs, 0), strName = lowerField(rs, 1);
    known.schemas.insert(strSchema);
    known.objects.insert(strName);
    known.qualified.insert(strSchema + "." + strName);
    if (hasRowsOfItsOwn(lowerField(rs, 3)) && !has(idsWithColumns, lowerField(rs, 2))) known.opaque.insert(strName);
  });
  return read && (!blnSchemas || readInto(program, server, strDb, "SELECT [name] FROM sys.schemas", known.schemas));
}

bool readColumns(Program& program, const tServer& server, const std::string& strDb, Names& idsWithColumns,
                 KnownNames& known) {
  return forEachRow(program, server, strDb, "SELECT [name], id FROM syscolumns", [&](Recordset& rs) {
    const std::string strName = lowerField(rs, 0);
    if (strName.starts_with("@")) return;  // a parameter
    known.columns.insert(strName);
    idsWithColumns.insert(lowerField(rs, 1));
  });
}

}  // namespace

bool ReadKnownNames(Program& program, const tServer& server, const std::string& strDb, KnownNames& known) {
  known = {};
  known.database = lowerCase(strDb);
  known.schemas = {"dbo"};
  Names idsWithColumns;
  return readColumns(program, server, strDb, idsWithColumns, known) &&
         readObjects(program, server, strDb, idsWithColumns, known) &&
         readInto(program, server, strDb, "SELECT [name] FROM systypes", known.others) &&
         readInto(program, server, strDb, "SELECT [name] FROM sysindexes", known.others);
}

}  // namespace qrel
