// UPDATE and DELETE: the query that finds their rows.
#include <algorithm>
#include <array>

#include "embedded/sqlite/quoting.h"
#include "embedded/translate/operatorChain.h"
#include "embedded/translate/translation.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::string_view throughCommonTable = "q_common";

}  // namespace

// Target, SET, FROM and WHERE in the order of the text. As in a query, FROM is read before the expressions in front of
// it, since it tells what their columns are.
RowChange Translation::rowChange(bool update) {
  const Nesting nesting(*this);
  RowChange out;
  Scope none;
  std::string limit;
  if (reader_.peek().is("top")) {
    const ScopeGuard guard(scope_, &none);
    limit = readTop().limit;
  }
  if (!update) reader_.acceptWord("from");
  out.table = readTableName(reader_);
  if (reader_.acceptWord("with")) reader_.skipParentheses();
  if (update) reader_.expectWord("SET");
  refuseOutput();
  Scope own;
  const ScopeGuard guard(scope_, &own);
  const std::size_t list = reader_.position();
  const std::size_t from = update ? findFrom() : reader_.peek().is("from") ? list : 0;
  std::string tables;
  std::size_t behind = list;
  if (from != 0) {
    reader_.moveTo(from + 1);
    tables = fromList();
    behind = reader_.position();
    reader_.moveTo(list);
  } else if (!changesCommonTable(out.table, tables)) {
    tables = target(out.table);
  }
  out.rows = (context_.common ? context_.common->sql : "") + "select " + changedRow(out.table);
  if (update) out.rows += newValues(out);
  // What is set through a query of WITH is the column behind that query's.
  for (std::string& column : out.columns) {
    const bool through = own.sources.size() == 1 && own.sources[0].alias == throughCommonTable;
    const OutputColumn* output = through ? own.sources[0].columns.find(column) : nullptr;
    if (output && output->origin.empty()) refuse("what is set through WITH must be a column of the table");
    if (output) column = output->origin;
  }
  refuseOutput();
  if (from != 0) {
    if (reader_.position() != from) refuse("what is set isn't understood");
    reader_.moveTo(behind);
  }
  out.rows += " from " + tables;
  if (reader_.acceptWord("where")) {
    if (reader_.peek().is("current")) refuse("cursors aren't kept");
    out.rows += " where " + condition();
  }
  if (reader_.acceptWord("option")) reader_.skipParentheses();
  if (limit.empty()) return out;
  if (from != 0) refuse("TOP with FROM");  // joined rows aren't rows of the table
  out.rows += " limit " + limit;
  return out;
}

// Whether UPDATE or DELETE names a query of WITH: `name` then becomes the table whose rows it gives.
bool Translation::changesCommonTable(ObjectName& name, std::string& tables) {
  if (!name.schema.empty()) return false;
  const auto common = std::find_if(commonTables_.begin(), commonTables_.end(),
                                   [&](const CommonTable& each) { return equalNoCase(each.name, name.name); });
  if (common == commonTables_.end()) return false;
  if (!common->names.empty()) refuse("rows can't be changed through a query of WITH that names its columns");
  Source source;
  source.exposed = common->name;
  const std::size_t here = reader_.position();
  reader_.moveTo(common->body);
  {
    const ScopeGuard guard(scope_, nullptr);
    reader_.expectSymbol("(");
    changed_ = &name;
    Query body = compoundQuery(nullptr);
    tables = "(" + body.sql + ")";
    source.columns = std::move(body.columns);
  }
  reader_.moveTo(here);
  source.alias = throughCommonTable;
  tables += " as " + quoteName(source.alias);
  scope_->sources.push_back(std::move(source));
  return true;
}

void Translation::refuseOutput() const {
  if (reader_.peek().is("output")) refuse("OUTPUT isn't carried out");
}

// The table that is changed where no FROM says more. That it isn't there is told when the statement is carried out: one
// that is only moved over may stand in front of what makes its table.
std::string Translation::target(const ObjectName& name) {
  Table table;
  table.source.exposed = name.name;
  table.source.schema = name.schema;
  table.source.columns.complete = false;
  if (const auto info = context_.catalogue->table(name.schema, name.name)) table = stored(*info, name);
  return table.sql + " as " + quoteName(addSource(std::move(table.source)));
}

// The SQL of the changed row's number. `table` may name an alias of FROM, and then becomes the table behind it.
std::string Translation::changedRow(ObjectName& table) const {
  if (!scope_->sources.empty() && scope_->sources[0].alias == throughCommonTable)
    return quoteName(throughCommonTable) + ".q_row";
  std::string alias = table.name;
  for (const Source& source : scope_->sources) {
    if (!source.isCalled(table.schema, table.name)) continue;
    alias = source.alias;
    if (!source.table.name.empty()) table = source.table;
    break;
  }
  return quoteName(alias) + "._rowid_";
}

// SET's list: adds the columns' names and kinds and gives the SQL of their values, each with a comma in front.
std::string Translation::newValues(RowChange& change) {
  std::string sql;
  const auto add = [&](const Expression& value) {
    sql += ", " + value.sql;
    change.kinds.push_back(value.kind);
  };
  do {
    if (reader_.peek().kind == TokenKind::Variable) refuse("UPDATE that sets a variable");
    const std::size_t begin = reader_.position();
    change.columns.push_back(readObjectName(reader_).name);
    const std::string_view operation = assignmentOperator();
    if (reader_.peek().is("default")) refuse("UPDATE with DEFAULT");
    if (operation.empty()) {
      add(expression());
      continue;
    }
    const std::size_t value = reader_.position();
    reader_.moveTo(begin);
    Expression column = primary();
    reader_.moveTo(value);
    add(operated(std::move(column), operation));
  } while (reader_.acceptSymbol(","));
  return sql;
}

// "=", or "+=" and its like, of which the operator is given; empty for "=".
std::string_view Translation::assignmentOperator() {
  const Token& sign = reader_.next();
  constexpr std::array signs = std::to_array<std::string_view>({"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^="});
  if (sign.kind != TokenKind::Symbol || std::find(signs.begin(), signs.end(), sign.raw) == signs.end())
    refuse("'=' is expected");
  return sign.raw.substr(0, sign.raw.size() - 1);
}

// What `left` becomes by the operator and the expression at the reader, which is one operand, whatever it holds.
Expression Translation::operated(Expression left, std::string_view operation) {
  OperatorChain chain(std::move(left));
  chain.add(operation, enclosed(expression()));
  return std::move(chain).result();
}

Expression Translation::newValue(const Token& variable) {
  const std::string_view operation = assignmentOperator();
  if (reader_.peek().is("cursor")) refuse("cursors in variables aren't kept");
  return operation.empty() ? expression() : operated(this->variable(variable), operation);
}

}  // namespace qrel::tsql
