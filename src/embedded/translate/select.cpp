#include <algorithm>
#include <utility>

#include "embedded/catalogue/temporaryTables.h"
#include "embedded/language/statementRights.h"
#include "embedded/language/words.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/translate/translation.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::size_t queriesAtOnce = 300;

bool endsSelectList(const Token& token) {
  for (const std::string_view word :
       {"where", "group", "having", "order", "union", "except", "intersect", "for", "option"})
    if (token.is(word)) return true;
  return token.isSymbol(";") || token.kind == TokenKind::End || startsStatement(token);
}

std::string columnList(const std::vector<std::string>& names) {
  std::string sql = "(";
  for (std::size_t i = 0; i < names.size(); ++i) sql += (i ? ", " : "") + quoteColumn(names[i]);
  return sql + ")";
}

// Puts another query's grouping in force and brings the one before back.
class GroupingGuard {
 public:
  GroupingGuard(Grouping*& current, Grouping* next) : current_(current), before_(std::exchange(current, next)) {}
  ~GroupingGuard() { current_ = before_; }
  GroupingGuard(const GroupingGuard&) = delete;
  GroupingGuard& operator=(const GroupingGuard&) = delete;

 private:
  Grouping*& current_;
  Grouping* before_;
};

// A TOP of one of several queries goes for that one alone.
void closeLimit(Query& query, std::string& limit) {
  if (!limit.empty()) query.sql = "select * from (" + query.sql + " limit " + limit + ")";
  limit.clear();
}

}  // namespace

bool Source::isCalled(std::string_view bySchema, std::string_view name) const {
  if (!name.empty() && compareCollated(exposed, name) != 0) return false;
  return bySchema.empty() || schema.empty() || compareCollated(schema, bySchema) == 0;
}

const OutputColumn* Columns::find(std::string_view name) const {
  for (const OutputColumn& column : list)
    if (compareCollated(column.name, name) == 0) return &column;
  return nullptr;
}

bool Translation::atSelect() const {
  std::size_t i = 0;
  while (reader_.peek(i).isSymbol("(")) ++i;
  if (reader_.peek(i).is("select")) return true;
  return reader_.peek(i).is("with") && reader_.peek(i + 1).isIdentifier() &&
         (reader_.peek(i + 2).is("as") || reader_.peek(i + 2).isSymbol("("));
}

// Queries -------------------------------------------------------------------------------------------------------------

Query Translation::query(std::vector<std::string>* assigned, IntoTable* into) {
  const Nesting nesting(*this);
  std::string with = depth_ == 1 && context_.common ? context_.common->sql : "";
  const std::size_t known = commonTables_.size();
  if (reader_.peek().is("with")) commonTables(with);
  into_ = into;
  Query out = compoundQuery(assigned);
  out.sql = with + out.sql;
  commonTables_.resize(known);
  return out;
}

std::shared_ptr<const CommonTables> Translation::prefix() {
  auto out = std::make_shared<CommonTables>();
  commonTables(out->sql);
  out->tables = std::move(commonTables_);
  return out;
}

// WITH a (x, y) AS (query), b AS (query)
void Translation::commonTables(std::string& sql) {
  reader_.expectWord("with");
  sql = "with recursive ";
  for (bool first = true; first || reader_.acceptSymbol(","); first = false) {
    const std::string name = reader_.expectIdentifier();
    const std::vector<std::string> names = columnNames();
    reader_.expectWord("as");
    Columns columns;
    columns.complete = false;
    commonTables_.push_back(
        {name, columns, names, reader_.position()});  // known to its own query, which may be recursive
    const std::size_t place = commonTables_.size() - 1;
    Query body = parenthesizedQuery();
    for (std::size_t i = 0; i < names.size() && i < body.columns.list.size(); ++i) body.columns.list[i].name = names[i];
    commonTables_[place].columns = body.columns;
    sql += (first ? "" : ", ") + quoteName(name) + (names.empty() ? "" : columnList(names)) + " as (" + body.sql + ")";
  }
  sql += " ";
}

Query Translation::parenthesizedQuery() {
  reader_.expectSymbol("(");
  Query out = query();
  reader_.expectSymbol(")");
  return out;
}

Query Translation::compoundQuery(std::vector<std::string>* assigned) {
  std::string limit;
  bool compound = false;
  Query out = intersection(assigned, limit, compound);
  std::size_t joinedQueries = 0;
  while (reader_.peek().is("union") || reader_.peek().is("except")) {
    closeLimit(out, limit);
    std::string operation = lowerCase(reader_.next().raw);
    if (reader_.acceptWord("all")) operation += " all";
    Query next = intersection(nullptr, limit, compound);
    closeLimit(next, limit);
    // SQLite joins only so many queries at once.
    if (++joinedQueries % queriesAtOnce == 0) out.sql = "select * from (" + out.sql + ")";
    append(out, operation, next);
    compound = true;
  }
  if (reader_.peek().is("order")) out.sql += orderBy(out.columns, compound);
  readLimit(limit);
  if (!limit.empty()) out.sql += " limit " + limit;
  out.single = out.single || limit == "1";
  refuseForClause();
  return out;
}

// INTERSECT goes before UNION and EXCEPT; SQLite takes all three from left to right.
Query Translation::intersection(std::vector<std::string>* assigned, std::string& limit, bool& compound) {
  Query out = simpleQuery(assigned, limit);
  std::size_t joinedQueries = 0;
  while (reader_.peek().is("intersect")) {
    closeLimit(out, limit);
    reader_.next();
    Query next = simpleQuery(nullptr, limit);
    closeLimit(next, limit);
    if (++joinedQueries % queriesAtOnce == 0) out.sql = "select * from (" + out.sql + ")";
    append(out, "intersect", next);
    compound = true;
  }
  if (joinedQueries > 0) out.sql = "select * from (" + out.sql + ")";
  return out;
}

void Translation::append(Query& out, std::string_view operation, const Query& next) {
  out.sql.append(" ").append(operation).append(" ").append(next.sql);
  for (std::size_t i = 0; i < out.columns.list.size() && i < next.columns.list.size(); ++i) {
    OutputColumn& column = out.columns.list[i];
    column.kind = commonKind(column.kind, next.columns.list[i].kind);
    column.width = either(column.width, next.columns.list[i].width);
    column.type = commonType(column.type, next.columns.list[i].type);
  }
  out.single = false;
}

// OFFSET n ROWS FETCH NEXT m ROWS ONLY; a TOP that was read before stays in `limit`.
void Translation::readLimit(std::string& limit) {
  const Token& next = reader_.peek(1);
  if (!reader_.peek().is("offset") || next.kind == TokenKind::End || next.isSymbol(";")) return;
  reader_.next();
  const std::string offset = expression().sql;
  if (!reader_.acceptWord("rows")) reader_.expectWord("row");
  std::string count = "-1";
  if (reader_.acceptWord("fetch")) {
    if (!reader_.acceptWord("next")) reader_.expectWord("first");
    count = expression().sql;
    if (!reader_.acceptWord("rows")) reader_.expectWord("row");
    reader_.expectWord("only");
  }
  limit = count + " offset " + offset;
}

void Translation::refuseForClause() {
  if (reader_.peek().is("for")) {
    if (reader_.peek(1).is("read") || reader_.peek(1).is("update")) return;  // of the cursor that reads the query
    if (!reader_.peek(1).is("browse")) refuse("FOR " + std::string(reader_.peek(1).raw) + " can't be translated");
    reader_.next();
    reader_.next();
  }
  if (reader_.peek().is("option") && reader_.peek(1).isSymbol("(")) {
    reader_.next();
    reader_.skipParentheses();
  }
}

Translation::Top Translation::readTop() {
  Top top;
  if (reader_.acceptWord("distinct"))
    top.distinct = true;
  else
    reader_.acceptWord("all");
  if (!reader_.acceptWord("top")) return top;
  if (reader_.acceptSymbol("(")) {
    top.limit = expression().sql;
    reader_.expectSymbol(")");
  } else {
    top.limit = primary().sql;
  }
  if (reader_.acceptWord("percent")) {
    if (top.limit != "100") refuse("TOP PERCENT can't be translated");
    top.limit.clear();
  }
  if (reader_.peek().is("with") && reader_.peek(1).is("ties")) refuse("WITH TIES can't be translated");
  return top;
}

Query Translation::simpleQuery(std::vector<std::string>* assigned, std::string& limit) {
  IntoTable* const into = std::exchange(into_, nullptr);
  ObjectName* const changed = std::exchange(changed_, nullptr);
  if (reader_.peek().isSymbol("(")) {
    Query inner = parenthesizedQuery();
    inner.sql = "select * from (" + inner.sql + ")";
    return inner;
  }
  reader_.expectWord("select");
  Scope own;
  own.outer = scope_;
  const ScopeGuard guard(scope_, &own);
  const Top top = readTop();
  limit = top.limit;
  // The columns' types must be known before the list is read: FROM goes first.
  const std::size_t listStart = reader_.position();
  const std::size_t from = findFrom();
  std::string fromSql;
  std::size_t afterFrom = 0;
  if (from != 0) {
    reader_.moveTo(from + 1);
    fromSql = " from " + fromList();
    afterFrom = reader_.position();
    reader_.moveTo(listStart);
  }
  Query out;
  Grouping grouping;
  grouping.scope = &own;
  {
    const GroupingGuard reading(grouping_, &grouping);
    out.sql = top.distinct ? "select distinct " : "select ";
    out.sql += selectList(out.columns, assigned) + fromSql;
  }
  if (reader_.peek().is("into")) {
    if (context_.readOnly) refuseAction("CREATE TABLE", context_.database);
    if (!into) refuse("INTO can't stand here");
    reader_.next();
    into->table = readObjectName(reader_);
    if (own.sources.size() == 1) into->from = own.sources[0].table;
    if (reader_.acceptWord("on")) reader_.expectIdentifier();  // a filegroup
  }
  if (from != 0) {
    if (reader_.position() != from) refuse("the select list isn't understood");
    reader_.moveTo(afterFrom);
  }
  if (reader_.acceptWord("where")) {
    const GroupingGuard reading(grouping_, nullptr);
    out.sql += " where " + condition();
  }
  const bool grouped = reader_.peek().is("group");
  Grouping groups;
  groups.scope = &own;
  if (grouped) {
    const GroupingGuard reading(grouping_, &groups);
    out.sql += groupBy();
  }
  if (reader_.acceptWord("having")) {
    Grouping having;
    having.scope = &own;
    {
      const GroupingGuard reading(grouping_, &having);
      out.sql += " having " + condition();
    }
    grouping.aggregates = true;
    refuseUngrouped(having.used, groups.used, "HAVING clause");
  }
  if (grouped || grouping.aggregates) refuseUngrouped(grouping.used, groups.used, "select list");
  if (changed) {
    const bool plain = own.sources.size() == 1 && !own.sources[0].table.name.empty() && !top.distinct;
    if (!plain || grouped || grouping.aggregates || !out.columns.complete)
      refuse("rows can't be changed through this query of WITH");
    *changed = own.sources[0].table;
    out.sql.insert(std::string_view("select ").size(), quoteName(own.sources[0].alias) + "._rowid_ as q_row, ");
  }
  const bool oneRow = (grouping.aggregates && !grouped) || from == 0;
  out.single = oneRow;
  if (grouped || grouping.aggregates || own.sources.size() > 1)
    for (OutputColumn& column : out.columns.list) column.type.identity = false;
  return out;
}

// A column that no group has a value of. One that stands within an expression of GROUP BY is let through: whether it is
// used in that very expression isn't looked at.
void Translation::refuseUngrouped(const std::vector<ColumnUse>& used, const std::vector<ColumnUse>& grouped,
                                  std::string_view place) const {
  for (const ColumnUse& use : used) {
    const bool found = std::any_of(grouped.begin(), grouped.end(), [&](const ColumnUse& each) {
      return compareCollated(each.table, use.table) == 0 && compareCollated(each.column, use.column) == 0;
    });
    if (found) continue;
    throw DataError(errorNumber::badSql,
                    "Column '" + use.table + "." + use.column + "' is invalid in the " + std::string(place) +
                        " because it is not contained in either an aggregate function or the GROUP BY clause.",
                    "42000");
  }
}

// The position of the FROM that belongs to the select list at the reader; 0 when there is none.
std::size_t Translation::findFrom() const {
  int depth = 0;
  int cases = 0;
  for (std::size_t i = 0;; ++i) {
    const Token& token = reader_.peek(i);
    if (token.isSymbol("(")) ++depth;
    if (token.isSymbol(")") && --depth < 0) return 0;
    if (token.kind == TokenKind::End) return 0;
    if (depth > 0) continue;
    if (token.is("case")) ++cases;
    if (token.is("end")) {
      if (--cases < 0) return 0;
      continue;  // the word ends a statement too
    }
    if (token.is("from")) return reader_.position() + i;
    if (cases == 0 && i > 0 && endsSelectList(token)) return 0;
  }
}

std::string Translation::selectList(Columns& columns, std::vector<std::string>* assigned) {
  std::string sql;
  for (bool first = true; first || reader_.acceptSymbol(","); first = false) {
    SelectItem item = selectItem();
    if (!item.assigned.empty()) {
      if (!assigned) refuse("a variable can't be assigned here");
      assigned->push_back(item.assigned);
    }
    sql += (first ? "" : ", ") + item.sql;
    columns.complete = columns.complete && item.complete;
    for (OutputColumn& column : item.columns) columns.list.push_back(std::move(column));
  }
  return sql;
}

Translation::SelectItem Translation::selectItem() {
  const Token& token = reader_.peek();
  if (reader_.acceptSymbol("*")) return starItem(nullptr);
  std::size_t dots = 0;
  while (reader_.peek(dots).isIdentifier() && reader_.peek(dots + 1).isSymbol(".")) dots += 2;
  if (dots > 0 && reader_.peek(dots).isSymbol("*")) {
    const std::string table(reader_.peek(dots - 2).name());
    for (std::size_t i = 0; i <= dots; ++i) reader_.next();
    for (const Source& source : scope_->sources)
      if (compareCollated(source.exposed, table) == 0) return starItem(&source);
    throw DataError(errorNumber::badSql,
                    "The column prefix '" + table +
                        "' does not match with a table name or alias name "
                        "used in the query.",
                    "42000");
  }
  SelectItem item;
  std::string alias;
  bool named = false;
  if (reader_.peek(1).isSymbol("=")) {
    if (token.kind == TokenKind::Variable) {
      item.assigned = lowerCase(token.raw);
    } else if (token.isIdentifier() || token.kind == TokenKind::String) {
      alias = token.name();
      named = true;
    }
    if (named || !item.assigned.empty()) {
      reader_.next();
      reader_.next();
    }
  }
  // "@a += 5": over several rows the values would gather, which whoever carries it out refuses.
  const bool compound =
      token.kind == TokenKind::Variable && reader_.peek(1).raw.size() == 2 && reader_.peek(1).raw[1] == '=';
  if (compound) item.assigned = lowerCase(reader_.next().raw);
  const Expression value = compound ? newValue(token) : expression();
  if (!named && item.assigned.empty() && (reader_.acceptWord("as") || isAlias(reader_.peek()))) {
    alias = columnAlias();
    named = true;
  }
  const bool plain = !value.name.empty() && !value.literal;
  if (!named && plain) alias = value.name;
  item.sql = value.sql;
  // What DISTINCT and UNION take for the same; a column has its collation, and a COLLATE that was written stays.
  if (!value.column && item.assigned.empty() && !item.sql.ends_with(" collate binary)"))
    item.sql += collationOf(value.kind);
  if (named || !plain || !value.column) item.sql += " as " + quoteColumn(alias);
  item.columns.push_back({alias, value.kind, value.column, value.width, value.type});
  item.columns.back().type.identity = value.type.identity && plain;
  if (plain) item.columns.back().origin = value.origin;
  if (value.sql == "null") item.columns.back().type = expressionType("int");  // what a Null alone is to the server
  return item;
}

// A column's name behind AS or in its place: an identifier or a text.
std::string Translation::columnAlias() {
  if (reader_.peek().kind == TokenKind::String) return reader_.next().text;
  return reader_.expectIdentifier();
}

// All columns of one table or of all.
Translation::SelectItem Translation::starItem(const Source* only) {
  SelectItem item;
  item.sql = only ? quoteName(only->alias) + ".*" : "*";
  for (const Source& source : scope_->sources) {
    if (only && only != &source) continue;
    item.complete = item.complete && source.columns.complete;
    item.columns.insert(item.columns.end(), source.columns.list.begin(), source.columns.list.end());
    if (grouping_)
      for (const OutputColumn& column : source.columns.list) grouping_->used.push_back({source.exposed, column.name});
  }
  return item;
}

std::string Translation::groupBy() {
  reader_.expectWord("group");
  reader_.expectWord("by");
  for (const std::string_view word : {"rollup", "cube", "grouping", "all"})
    if (reader_.peek().is(word)) refuse("GROUP BY " + std::string(word) + " can't be translated");
  std::string sql = " group by ";
  for (bool first = true; first || reader_.acceptSymbol(","); first = false) {
    const Expression value = expression();
    sql += (first ? "" : ", ") + value.sql;
    if (!value.column) sql += collationOf(value.kind);
  }
  if (reader_.peek().is("with") && (reader_.peek(1).is("rollup") || reader_.peek(1).is("cube")))
    refuse("WITH ROLLUP can't be translated");
  return sql;
}

std::string Translation::orderBy(const Columns& columns, bool compound) {
  reader_.expectWord("order");
  reader_.expectWord("by");
  std::string sql = " order by ";
  for (bool first = true; first || reader_.acceptSymbol(","); first = false)
    sql += (first ? "" : ", ") + orderItem(columns, compound);
  return sql;
}

// A name that the select list gives is that column; elsewhere it is one of the tables'.
std::string Translation::orderItem(const Columns& columns, bool compound) {
  const Token& token = reader_.peek();
  const bool single = !reader_.peek(1).isSymbol(".") && !reader_.peek(1).isSymbol("(");
  const OutputColumn* output = token.isIdentifier() && single ? columns.find(token.name()) : nullptr;
  const Expression value = expression();
  std::string sql = value.sql;
  const bool isOutput = output && value.column;
  if (isOutput) sql = quoteColumn(output->name);
  const bool made = isOutput ? !output->column : !value.column;
  if (made && !compound) sql += collationOf(isOutput ? output->kind : value.kind);
  if (reader_.acceptWord("desc")) return sql + " desc";
  reader_.acceptWord("asc");
  return sql;
}

// FROM ----------------------------------------------------------------------------------------------------------------

// The list of tables with joins, without the word FROM; they become sources of the scope.
std::string Translation::fromList() {
  std::string sql = joined();
  while (reader_.acceptSymbol(",")) sql += ", " + joined();
  return sql;
}

std::string Translation::joined() { return joinTail(tablePrimary()); }

// The SQLite words of a join that begins at the reader, empty when none does.
std::string Translation::joinKind() {
  const std::size_t start = reader_.position();
  std::string kind;
  if (reader_.acceptWord("cross")) {
    if (reader_.peek().is("apply")) refuse("CROSS APPLY can't be translated");
    kind = "cross";
  } else if (reader_.peek().is("outer") && reader_.peek(1).is("apply")) {
    refuse("OUTER APPLY can't be translated");
  } else if (reader_.acceptWord("inner")) {
    kind = "inner";
  } else {
    for (const std::string_view word : {"left", "right", "full"})
      if (kind.empty() && reader_.acceptWord(word)) kind = word;
    if (!kind.empty()) reader_.acceptWord("outer");
  }
  for (const std::string_view hint : {"loop", "hash", "merge", "remote"})
    if (!kind.empty()) reader_.acceptWord(hint);
  if (reader_.acceptWord("join")) return (kind.empty() ? "inner" : kind) + " join";
  if (!kind.empty()) reader_.moveTo(start);
  return {};
}

std::string Translation::joinTail(std::string left) {
  for (std::string kind = joinKind(); !kind.empty(); kind = joinKind()) {
    const std::size_t before = scope_->sources.size();
    std::string right = tablePrimary();
    if (kind == "cross join") {
      left += " cross join " + right;
      continue;
    }
    // A row that finds no partner has Null in the other's columns.
    for (std::size_t i = 0; kind != "inner join" && i < scope_->sources.size(); ++i)
      if (kind == "full join" || (i >= before) == (kind == "left join"))
        for (OutputColumn& column : scope_->sources[i].columns.list) column.type.nullable = true;
    // "a JOIN b JOIN c ON ... ON ...": the inner join closes first.
    if (!reader_.peek().is("on")) right = "(" + joinTail(std::move(right)) + ")";
    reader_.expectWord("on");
    left.append(" ").append(kind).append(" ").append(right).append(" on ").append(condition());
    if (reader_.peek().is("on")) break;
  }
  return left;
}

std::string Translation::tablePrimary() {
  const Nesting nesting(*this);
  if (!reader_.peek().isSymbol("(")) {
    const Table table = namedTable();
    return table.sql + " as " + quoteName(addSource(table.source));
  }
  if (parenthesesHoldQuery() || reader_.peek(1).is("values")) return derivedTable();
  reader_.next();
  std::string inner = "(" + joined() + ")";
  reader_.expectSymbol(")");
  return inner;
}

std::string Translation::addSource(Source source) {
  std::string alias = source.exposed;
  for (const Source& other : scope_->sources)
    if (equalNoCase(other.alias, alias)) alias = source.schema + "." + source.exposed;
  source.alias = alias;
  scope_->sources.push_back(std::move(source));
  return alias;
}

std::string Translation::readAlias() {
  const bool as = reader_.acceptWord("as");
  if (!as && !isAlias(reader_.peek())) return {};
  if (!as && (reader_.peek().kind == TokenKind::String || reader_.peek().is("offset"))) return {};
  return reader_.expectIdentifier();
}

void Translation::skipHints() {
  if (reader_.peek().is("with") && reader_.peek(1).isSymbol("(")) {
    reader_.next();
    reader_.skipParentheses();
  } else if (reader_.peek().isSymbol("(") && reader_.peek(1).kind == TokenKind::Word) {
    for (const std::string_view hint : {"nolock", "holdlock", "readpast", "rowlock", "tablock", "tablockx", "updlock",
                                        "paglock", "readcommitted", "readuncommitted", "serializable", "index"})
      if (reader_.peek(1).is(hint)) return reader_.skipParentheses();
  }
}

Translation::Table Translation::namedTable() {
  const Token& token = reader_.peek();
  const ObjectName name = readTableName(reader_);
  if (reader_.peek().isSymbol("(")) {
    skipHints();
    if (reader_.peek().isSymbol("(")) refuse("a function in FROM can't be translated");
  }
  Table table = resolve(name, token);
  table.source.table = name;
  skipHints();
  const std::string alias = readAlias();
  if (!alias.empty()) {
    table.source.exposed = alias;
    table.source.schema.clear();
  }
  skipHints();
  for (const std::string_view word : {"pivot", "unpivot", "tablesample"})
    if (reader_.peek().is(word)) refuse(std::string(word) + " can't be translated");
  return table;
}

Translation::Table Translation::resolve(const ObjectName& name, const Token& token) {
  if (!name.server.empty()) refuse("another server can't be asked");
  Table table;
  table.source.exposed = name.name;
  table.source.schema = name.schema;
  table.source.columns.complete = false;
  if (name.schema.empty() && name.database.empty()) {
    for (auto each = commonTables_.rbegin(); each != commonTables_.rend(); ++each) {
      if (!equalNoCase(each->name, name.name)) continue;
      table.sql = quoteName(each->name);
      table.source.columns = each->columns;
      return table;
    }
  }
  const Catalogue& catalogue = *context_.catalogue;
  if (isTemporaryName(name.name)) {
    if (const auto info = catalogue.table("", name.name)) return stored(*info, name);
    if (name.name.starts_with(variableMark))
      throw NotUnderstood{"the table variable " + name.name.substr(1) + " isn't there", token.line};
    throw DataError(errorNumber::invalidObjectName, "Invalid object name '" + name.name + "'.", "42S02");
  }
  const bool here = name.database.empty() || equalNoCase(name.database, context_.database);
  const std::string view = catalogueViewName(name.schema, name.name, catalogue.serverMajor());
  if (!view.empty() && (here || equalNoCase(name.database, "master"))) {
    table.sql = quoteName(view);
    if (table.source.schema.empty()) table.source.schema = "dbo";
    return table;
  }
  if (!here) {
    if (!view.empty()) refuse("the catalogue of another database can't be asked");
    if (!context_.attach) refuse("another database can't be asked");
    table.sql = quoteName(context_.attach(name.database)) + "." +
                quoteName(storageName(name.schema.empty() ? "dbo" : name.schema, name.name));
    return table;
  }
  if (const auto info = catalogue.table(name.schema, name.name)) return stored(*info, name);
  if (catalogue.find(name.schema, name.name))
    throw NotUnderstood{"'" + name.name + "' is no table: it can't be queried", token.line};
  std::string written = name.database.empty() ? "" : name.database + ".";
  if (!name.schema.empty() || !name.database.empty()) written += name.schema + ".";
  throw DataError(errorNumber::invalidObjectName, "Invalid object name '" + written + name.name + "'.", "42S02");
}

Translation::Table Translation::stored(const TableInfo& info, const ObjectName& name) {
  Table table;
  table.sql = quoteName(info.storage);
  table.source.exposed = name.name;
  table.source.schema = info.schema;
  for (const auto& column : info.columns) {
    table.source.columns.list.push_back(
        {column.name, column.type.dataType, true, TextWidth::ofType(column.type), expressionType(column.type)});
    table.source.columns.list.back().type.nullable = column.nullable;
    table.source.columns.list.back().type.identity = column.identity;
    table.source.columns.list.back().origin = column.name;
  }
  return table;
}

std::vector<std::string> Translation::columnNames() {
  std::vector<std::string> names;
  if (!reader_.acceptSymbol("(")) return names;
  do names.push_back(reader_.expectIdentifier());
  while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
  return names;
}

// VALUES (1, 'a'), (2, 'b') with the word VALUES at the reader.
std::string Translation::valuesRows(Columns& columns) {
  reader_.expectWord("values");
  std::string sql = "values ";
  for (bool first = true; first || reader_.acceptSymbol(","); first = false) {
    const std::vector<Expression> row = arguments();
    sql += first ? "(" : ", (";
    for (std::size_t i = 0; i < row.size(); ++i) {
      sql += (i ? ", " : "") + row[i].sql;
      if (first)
        columns.list.push_back({"column" + std::to_string(i + 1), row[i].kind, false, row[i].width, row[i].type});
      else if (i < columns.list.size()) {
        columns.list[i].kind = commonKind(columns.list[i].kind, row[i].kind);
        columns.list[i].width = either(columns.list[i].width, row[i].width);
        columns.list[i].type = commonType(columns.list[i].type, row[i].type);
      }
    }
    sql += ")";
  }
  return sql;
}

// "(query) AS name" and "(VALUES ...) AS name (columns)". What the brackets hold doesn't see its neighbours.
std::string Translation::derivedTable() {
  Query body;
  {
    const ScopeGuard guard(scope_, scope_->outer);
    if (reader_.peek(1).is("values")) {
      reader_.next();
      body.sql = valuesRows(body.columns);
      reader_.expectSymbol(")");
    } else {
      body = parenthesizedQuery();
    }
  }
  Source source;
  source.exposed = readAlias();
  if (source.exposed.empty()) refuse("a table in brackets needs a name");
  const std::vector<std::string> names = columnNames();
  std::string sql = "(" + body.sql + ")";
  if (!names.empty()) {
    for (std::size_t i = 0; i < names.size() && i < body.columns.list.size(); ++i) body.columns.list[i].name = names[i];
    sql = "(with q_named" + columnList(names) + " as " + sql + " select * from q_named)";
  }
  source.columns = std::move(body.columns);
  return sql + " as " + quoteName(addSource(std::move(source)));
}

}  // namespace qrel::tsql
