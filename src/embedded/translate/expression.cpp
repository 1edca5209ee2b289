#include <algorithm>
#include <array>

#include "embedded/sqlite/quoting.h"
#include "embedded/translate/operatorChain.h"
#include "embedded/translate/translation.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Sorted, in lower case.
constexpr std::array reserved = std::to_array<std::string_view>({
    "add",        "all",
    "alter",      "and",
    "any",        "as",
    "asc",        "backup",
    "begin",      "between",
    "break",      "browse",
    "bulk",       "by",
    "case",       "check",
    "checkpoint", "close",
    "coalesce",   "collate",
    "column",     "commit",
    "compute",    "constraint",
    "contains",   "continue",
    "convert",    "create",
    "cross",      "cursor",
    "database",   "dbcc",
    "deallocate", "declare",
    "default",    "delete",
    "deny",       "desc",
    "distinct",   "drop",
    "else",       "end",
    "escape",     "except",
    "exec",       "execute",
    "exists",     "exit",
    "fetch",      "for",
    "foreign",    "freetext",
    "from",       "full",
    "function",   "go",
    "goto",       "grant",
    "group",      "having",
    "holdlock",   "identity_insert",
    "if",         "in",
    "index",      "inner",
    "insert",     "intersect",
    "into",       "is",
    "join",       "key",
    "kill",       "left",
    "like",       "merge",
    "not",        "null",
    "nullif",     "of",
    "off",        "on",
    "open",       "option",
    "or",         "order",
    "outer",      "over",
    "percent",    "pivot",
    "primary",    "print",
    "proc",       "procedure",
    "raiserror",  "references",
    "restore",    "return",
    "revert",     "revoke",
    "right",      "rollback",
    "save",       "select",
    "set",        "some",
    "table",      "tablesample",
    "then",       "throw",
    "to",         "top",
    "tran",       "transaction",
    "trigger",    "truncate",
    "union",      "unique",
    "unpivot",    "update",
    "use",        "values",
    "view",       "waitfor",
    "when",       "where",
    "while",      "with",
    "within",
});

std::string asNumber(const std::string& sql) { return "cast(" + sql + " as numeric)"; }

const char* collationFor(DataType a, DataType b) {
  const auto either = [&](DataType kind) { return a == kind || b == kind; };
  if (either(DataType::Date)) return " collate q_date";
  if (either(DataType::Guid)) return " collate q_guid";
  if (isNumericKind(a) && isNumericKind(b)) return a == b && a == DataType::Decimal ? " collate q_decimal" : "";
  if (either(DataType::Binary)) return "";
  return " collate q_text";
}

// 'true' and 'false' beside a bit column.
void readBooleanLiteral(Expression& literal) {
  if (!literal.literal) return;
  if (equalNoCase(literal.name, "true"))
    literal.sql = "1";
  else if (equalNoCase(literal.name, "false"))
    literal.sql = "0";
}

void adjustSide(Expression& side, const Expression& other) {
  if (other.kind == DataType::Boolean) readBooleanLiteral(side);
  const bool plainNumber =
      other.kind == DataType::Integer || other.kind == DataType::Double || other.kind == DataType::Boolean;
  if (!plainNumber) return;
  const bool textBesideNumber = side.kind == DataType::Text && !(side.literal && other.column);
  const bool decimalBesideNumber = side.kind == DataType::Decimal && !side.column;
  if (textBesideNumber || decimalBesideNumber) side.sql = asNumber(side.sql);
}

}  // namespace

bool isReserved(const Token& token) {
  if (token.kind != TokenKind::Word) return false;
  const std::string lower = lowerCase(token.raw);
  return std::find(reserved.begin(), reserved.end(), lower) != reserved.end();
}

bool isAlias(const Token& token) {
  return token.kind == TokenKind::Name || token.kind == TokenKind::String ||
         (token.kind == TokenKind::Word && !token.label && !isReserved(token));
}

bool isNumericKind(DataType kind) {
  return kind == DataType::Boolean || kind == DataType::Integer || kind == DataType::Double ||
         kind == DataType::Decimal;
}

DataType commonKind(DataType a, DataType b) {
  if (a == b || b == DataType::Empty) return a;
  if (a == DataType::Empty) return b;
  if (isNumericKind(a) && isNumericKind(b)) {
    if (a == DataType::Double || b == DataType::Double) return DataType::Double;
    return a == DataType::Decimal || b == DataType::Decimal ? DataType::Decimal : DataType::Integer;
  }
  return DataType::Empty;
}

std::string compared(Expression left, std::string_view symbol, Expression right) {
  adjustSide(left, right);
  adjustSide(right, left);
  std::string sql = left.sql;
  if (!left.column && !right.column) sql += collationFor(left.kind, right.kind);
  sql += ' ';
  sql += symbol;
  sql += ' ';
  return sql + right.sql;
}

std::string_view collationOf(DataType kind) {
  return kind == DataType::Text ? " collate q_text" : kind == DataType::Decimal ? " collate q_decimal" : "";
}

std::string asExact(const Expression& value, const ExpressionType& type) {
  return "q_decimal('=', " + (value.exact.empty() ? value.sql : quoteText(value.exact)) + ", 0, " +
         std::to_string(type.prec) + ", " + std::to_string(type.scale) + ")";
}

Translation::Translation(const TranslateContext& context, TokenReader& reader) : context_(context), reader_(reader) {
  if (context.common) commonTables_ = context.common->tables;
  if (!context.table) return;
  ofTable_.sources.push_back(stored(*context.table, {"", "", context.table->schema, context.table->name}).source);
  scope_ = &ofTable_;
}

void Translation::refuseNesting() { tsql::refuseNesting(); }

void Translation::refuse(const std::string& reason) const { throw NotUnderstood{reason, reader_.peek().line}; }

// Expressions ---------------------------------------------------------------------------------------------------------

Expression Translation::expression() { return additive(); }

Expression Translation::additive() {
  OperatorChain chain(multiplicative());
  for (;;) {
    const Token& token = reader_.peek();
    const bool ours =
        token.isSymbol("+") || token.isSymbol("-") || token.isSymbol("&") || token.isSymbol("|") || token.isSymbol("^");
    if (!ours) return std::move(chain).result();
    const std::string_view symbol = reader_.next().raw;
    chain.add(symbol, multiplicative());
  }
}

Expression Translation::multiplicative() {
  OperatorChain chain(unary());
  for (;;) {
    const Token& token = reader_.peek();
    if (!token.isSymbol("*") && !token.isSymbol("/") && !token.isSymbol("%")) return std::move(chain).result();
    const std::string_view symbol = reader_.next().raw;
    chain.add(symbol, unary());
  }
}

Expression Translation::unary() {
  const Nesting nesting(*this);
  if (reader_.acceptSymbol("+")) return unary();
  const bool minus = reader_.peek().isSymbol("-");
  if (!minus && !reader_.peek().isSymbol("~")) return collated(primary());
  reader_.next();
  Expression operand = unary();
  Expression out;
  out.type = operand.type;
  out.kind = operand.kind;
  if (minus && operand.kind == DataType::Decimal && operand.exact.empty()) {
    out.sql = "q_decimal('-', 0, " + operand.sql + ", 38, " + std::to_string(operand.type.scale) + ")";
    return out;
  }
  out.sql = (minus ? "(-" : "(~") + operand.sql + ")";
  if (minus && !operand.exact.empty()) out.exact = "-" + operand.exact;
  if (operand.kind == DataType::Decimal) out.kind = DataType::Double;
  return out;
}

Expression Translation::collated(Expression expression) {
  while (reader_.acceptWord("collate")) {
    const std::string name = lowerCase(reader_.expectIdentifier());
    const bool exact = name.find("_cs") != std::string::npos || name.find("_bin") != std::string::npos;
    expression.sql = "(" + expression.sql + (exact ? " collate binary)" : " collate q_text)");
    expression.column = true;  // what stands here decides
    expression.isCase = false;
    expression.enclosed = true;
  }
  return expression;
}

Expression Translation::primary() {
  const Token& token = reader_.peek();
  switch (token.kind) {
    case TokenKind::Number:
    case TokenKind::Money:
    case TokenKind::Binary:
      return number(reader_.next());
    case TokenKind::String: {
      Expression out;
      out.sql = quoteText(token.text);
      out.kind = DataType::Text;
      out.literal = true;
      out.name = token.text;
      out.width = TextWidth::ofLiteral(token.text, token.national);
      out.type = typeOf(out.width);
      out.type.nullable = false;
      reader_.next();
      return out;
    }
    case TokenKind::Variable:
      return variable(reader_.next());
    case TokenKind::Symbol:
      if (token.isSymbol("(")) return parenthesized();
      if (token.isSymbol("?")) return variable(reader_.next());
      break;
    case TokenKind::Word:
      if (token.is("null")) {
        reader_.next();
        Expression out;
        out.sql = "null";
        return out;
      }
      if (token.is("case")) return caseExpression();
      if (atBareFunction()) return bareFunction();
      if (reader_.peek(1).isSymbol("(")) return functionCall();
      if (!isReserved(token)) return columnReference();
      break;
    case TokenKind::Name:
      return columnReference();
    case TokenKind::End:
      break;
  }
  refuse("an expression is expected before '" + std::string(token.raw.substr(0, 40)) + "'");
}

Expression Translation::number(const Token& token) {
  Expression out;
  if (token.kind == TokenKind::Binary) {
    const std::string_view digits = token.raw.substr(2);
    out.sql = "x'" + std::string(digits.size() % 2 ? "0" : "") + std::string(digits) + "'";
    out.kind = DataType::Binary;
    const std::size_t bytes = (digits.size() + 1) / 2;
    out.type = expressionType("varbinary", bytes > 8000 ? -1 : std::max(static_cast<int>(bytes), 1));
    out.type.nullable = false;
    return out;
  }
  std::string text(token.raw);
  if (token.kind == TokenKind::Money) {
    text.erase(0, 1);
    text.erase(std::remove(text.begin(), text.end(), ','), text.end());
    if (text.empty()) text = "0";
  }
  const bool exponent = text.find_first_of("eE") != std::string::npos;
  if (exponent && !(text.back() >= '0' && text.back() <= '9')) text += '0';
  const bool fraction = text.find('.') != std::string::npos;
  const bool longNumber = !exponent && (fraction ? text.size() > 16 : text.size() > 18);
  out.sql = longNumber ? "'" + text + "'" : text;
  out.kind = longNumber ? DataType::Decimal : fraction || exponent ? DataType::Double : DataType::Integer;
  out.type = token.kind == TokenKind::Money ? expressionType("money") : literalType(text);
  out.type.nullable = false;
  if (fraction && !exponent) out.exact = text;
  return out;
}

namespace {

// Those that are the same for every session here. The others are known to the session, or to nobody.
struct ServerVariable {
  std::string_view name, sql;
  DataType kind;
};
constexpr ServerVariable serverVariables[] = {
    {"@@version", "q_version()", DataType::Text},      {"@@servername", "q_servername()", DataType::Text},
    {"@@language", "'us_english'", DataType::Text},    {"@@langid", "0", DataType::Integer},
    {"@@datefirst", "7", DataType::Integer},           {"@@lock_timeout", "-1", DataType::Integer},
    {"@@max_precision", "38", DataType::Integer},      {"@@textsize", "2147483647", DataType::Integer},
    {"@@max_connections", "32767", DataType::Integer},
};

}  // namespace

Expression Translation::variable(const Token& token) {
  Expression out;
  if (token.isSymbol("?")) {
    const std::size_t here = reader_.position();
    int place = 0;
    reader_.moveTo(0);
    while (reader_.position() < here) place += reader_.next().isSymbol("?") ? 1 : 0;
    out.sql = "@p" + std::to_string(place);
    return out;
  }
  const std::string name = lowerCase(token.raw);
  for (const auto& [global, sql, kind] : serverVariables) {
    if (name != global) continue;
    out.sql = sql;
    out.kind = kind;
    out.type = kind == DataType::Text ? expressionType("nvarchar", 300) : expressionType("int");
    return out;
  }
  out.sql = parameterOfVariable(name);
  if (context_.variables) {
    const auto found = context_.variables->find(name);
    if (found != context_.variables->end()) {
      out.kind = found->second.dataType;
      out.width = TextWidth::ofType(found->second);
      out.type = expressionType(found->second);
    }
  }
  return out;
}

Expression Translation::columnReference() {
  const Token& first = reader_.peek();
  std::vector<std::string> parts{reader_.expectIdentifier()};
  while (reader_.acceptSymbol(".")) {
    if (reader_.peek().isSymbol("."))
      parts.emplace_back();
    else
      parts.push_back(reader_.expectIdentifier());
  }
  const bool ofType = reader_.peek().isSymbol("::") || (reader_.peek().isSymbol(":") && reader_.peek(1).isSymbol(":"));
  if (ofType || reader_.peek().isSymbol("(")) refuse("a user function or a method can't be called");
  Expression out;
  out.name = parts.back();
  out.column = true;
  const std::string table = parts.size() > 1 ? parts[parts.size() - 2] : "";
  const std::string schema = parts.size() > 2 ? parts[parts.size() - 3] : "";
  const auto written = [&](const std::string& of, const std::string& column) {
    return (of.empty() ? "" : quoteName(of) + ".") + quoteColumn(column);
  };
  out.sql = written(table, out.name);
  bool complete = scope_ != nullptr;
  for (const Scope* scope = scope_; scope; scope = scope->outer) {
    for (const Source& source : scope->sources) {
      if (!source.isCalled(schema, table)) continue;
      const std::string of = table.empty() ? "" : source.alias;
      if (!table.empty()) out.sql = written(of, out.name);
      complete = complete && source.columns.complete;
      if (const OutputColumn* column = source.columns.find(out.name)) {
        out.sql = written(of, column->name);
        out.kind = column->kind;
        out.column = column->column;
        out.width = column->width;
        out.type = column->type;
        out.origin = column->origin;
        if (grouping_ && grouping_->scope == scope) grouping_->used.push_back({source.exposed, column->name});
        return out;
      }
      if (!table.empty()) return out;
    }
  }
  // With quoted identifiers off, "text" is a literal; it shows where no table has such a column.
  if (!context_.readOnly && complete && parts.size() == 1 && first.raw.front() == '"') {
    out.sql = quoteText(out.name);
    out.kind = DataType::Text;
    out.literal = true;
    out.column = false;
  }
  return out;
}

Expression Translation::caseExpression() {
  reader_.expectWord("case");
  constexpr std::string_view opening = "case";
  Expression out;
  out.sql = opening;
  out.isCase = true;
  const bool simple = !reader_.peek().is("when");
  const Expression base = simple ? expression() : Expression{};
  bool first = true;
  const auto mayBe = [&](const Expression& result) {
    out.kind = commonKind(out.kind, result.kind);
    out.type = first ? result.type : commonType(out.type, result.type);
    if (result.kind == DataType::Empty) out.type.nullable = true;
    out.width = std::exchange(first, false) ? result.width : either(out.width, result.width);
  };
  while (reader_.acceptWord("when")) {
    out.sql += " when " + (simple ? compared(base, "=", expression()) : condition());
    reader_.expectWord("then");
    const Expression result = expression();
    mayBe(result);
    out.sql += " then " + result.sql;
  }
  bool ended = false;
  if (reader_.acceptWord("else")) {
    const Expression result = expression();
    mayBe(result);
    // A CASE behind ELSE goes on with this one: a long chain of them isn't nested then.
    ended = result.isCase;
    out.sql += ended ? result.sql.substr(opening.size()) : " else " + result.sql;
  } else {
    out.type.nullable = true;
  }
  if (out.type.isExact()) out.kind = DataType::Decimal;
  reader_.expectWord("end");
  if (!ended) out.sql += " end";
  return out;
}

Expression Translation::parenthesized() {
  if (parenthesesHoldQuery()) {
    Query inner = parenthesizedQuery();
    Expression out;
    // As a value a query may give one row alone: q_single refuses the second.
    out.sql = inner.single ? "(" + inner.sql + ")"
                           : "(with q_values(v) as (" + inner.sql + ") select q_single(v) from q_values)";
    if (!inner.columns.list.empty()) {
      out.kind = inner.columns.list.front().kind;
      out.width = inner.columns.list.front().width;
      out.type = inner.columns.list.front().type;
      out.type.nullable = true;
      out.type.identity = false;
    }
    return out;
  }
  reader_.expectSymbol("(");
  Expression out = expression();
  reader_.expectSymbol(")");
  return enclosed(std::move(out));
}

// In brackets, unless it is already; a column needs none.
Expression Translation::enclosed(Expression expression) {
  expression.isCase = false;
  if (!expression.column && !std::exchange(expression.enclosed, true)) expression.sql = "(" + expression.sql + ")";
  return expression;
}

// Conditions ----------------------------------------------------------------------------------------------------------

std::string Translation::condition() { return orCondition(); }

std::string Translation::orCondition() {
  std::vector<std::string> parts{andCondition()};
  while (reader_.acceptWord("or")) parts.push_back(andCondition());
  enclosed_ = enclosed_ && parts.size() == 1;
  return joinedBy(" or ", parts);
}

std::string Translation::andCondition() {
  std::vector<std::string> parts{notCondition()};
  while (reader_.acceptWord("and")) parts.push_back(notCondition());
  enclosed_ = enclosed_ && parts.size() == 1;
  return joinedBy(" and ", parts);
}

std::string Translation::notCondition() {
  const Nesting nesting(*this);
  if (reader_.acceptWord("not")) {
    std::string inner = notCondition();
    if (!std::exchange(enclosed_, false)) inner = "(" + inner + ")";
    return "not " + inner;
  }
  if (reader_.peek().isSymbol("(") && parenthesesHoldCondition()) {
    reader_.next();
    std::string inner = condition();
    reader_.expectSymbol(")");
    return std::exchange(enclosed_, true) ? inner : "(" + inner + ")";
  }
  std::string plain = predicate();
  enclosed_ = false;
  return plain;
}

// Whether the brackets at the reader hold a condition: a comparison or a connective stands in them, outside brackets
// within and outside CASE. Brackets around nothing but brackets hold what those hold.
bool Translation::parenthesesHoldCondition() const {
  std::size_t opening = 0;
  while (reader_.peek(opening + 1).isSymbol("(")) ++opening;
  int cases = 0;
  std::size_t depth = 0;
  std::size_t subquery = 0;  // depth of a query within the brackets, 0 outside
  for (std::size_t i = 0;; ++i) {
    const Token& token = reader_.peek(i);
    if (token.kind == TokenKind::End) return false;
    if (token.isSymbol("(")) ++depth;
    if (token.isSymbol(")") && --depth == 0) return false;
    if (depth < subquery) subquery = 0;
    if (token.is("select") && subquery == 0) subquery = depth;
    if (token.is("case")) ++cases;
    if (token.is("end")) --cases;
    if (cases > 0 || subquery > 0 || depth > opening + 1) continue;
    const bool connective = token.is("and") || token.is("or") || token.is("not") || token.is("exists") ||
                            token.is("is") || token.is("in") || token.is("like") || token.is("between");
    const bool comparison = token.kind == TokenKind::Symbol && token.raw.find_first_of("=<>!") != std::string::npos;
    if (connective || comparison) return true;
  }
}

// Whether the brackets at the reader hold a query: SELECT follows, or a query in brackets and UNION.
bool Translation::parenthesesHoldQuery() const {
  const Token& first = reader_.peek(1);
  if (first.is("select") || first.is("with")) return true;
  if (!first.isSymbol("(") || !atSelect()) return false;
  int depth = 0;
  for (std::size_t i = 1; reader_.peek(i).kind != TokenKind::End; ++i) {
    if (reader_.peek(i).isSymbol("(")) ++depth;
    if (!reader_.peek(i).isSymbol(")") || --depth > 0) continue;
    const Token& behind = reader_.peek(i + 1);
    return behind.is("union") || behind.is("except") || behind.is("intersect");
  }
  return false;
}

std::string Translation::predicate() {
  if (reader_.peek().is("exists")) {
    reader_.next();
    return "exists (" + parenthesizedQuery().sql + ")";
  }
  for (const std::string_view word : {"contains", "freetext", "update"})
    if (reader_.peek().is(word) && reader_.peek(1).isSymbol("(")) refuse(std::string(word) + " can't be asked");
  const Expression left = expression();
  return comparisonTail(left);
}

std::string Translation::comparisonTail(const Expression& left) {
  const Token& token = reader_.peek();
  if (reader_.acceptWord("is")) {
    const bool negated = reader_.acceptWord("not");
    reader_.expectWord("null");
    return left.sql + (negated ? " is not null" : " is null");
  }
  const bool negated = reader_.acceptWord("not");
  const std::string prefix = negated ? "not (" : "(";
  if (reader_.acceptWord("in")) return prefix + inList(left) + ")";
  if (reader_.acceptWord("like")) return prefix + like(left) + ")";
  if (reader_.acceptWord("between")) {
    const Expression low = expression();
    reader_.expectWord("and");
    return prefix + compared(left, ">=", low) + " and " + compared(left, "<=", expression()) + ")";
  }
  if (negated || token.kind != TokenKind::Symbol) refuse("a comparison is expected");
  std::string symbol(reader_.next().raw);
  if (symbol == "!<")
    symbol = ">=";
  else if (symbol == "!>")
    symbol = "<=";
  else if (symbol == "!=")
    symbol = "<>";
  constexpr std::array<std::string_view, 6> known = {"=", "<>", "<", ">", "<=", ">="};
  if (std::find(known.begin(), known.end(), symbol) == known.end()) refuse("a comparison is expected");
  const Token& next = reader_.peek();
  if (next.is("any") || next.is("some") || next.is("all")) return quantified(left, symbol);
  return compared(left, symbol, expression());
}

std::string Translation::quantified(const Expression& left, std::string_view symbol) {
  const bool all = reader_.next().is("all");
  if ((symbol == "=" && !all) || (symbol == "<>" && all)) return (all ? "not (" : "(") + inList(left) + ")";
  refuse("ANY and ALL go with = and <> only");
}

std::string Translation::inList(const Expression& left) {
  std::string sql = left.sql;
  if (!left.column && !isNumericKind(left.kind)) sql += collationFor(left.kind, left.kind);
  if (parenthesesHoldQuery()) return sql + " in (" + parenthesizedQuery().sql + ")";
  reader_.expectSymbol("(");
  sql += " in (";
  for (bool first = true; first || reader_.acceptSymbol(","); first = false) {
    Expression value = expression();
    adjustSide(value, left);
    sql += (first ? "" : ", ") + value.sql;
  }
  reader_.expectSymbol(")");
  return sql + ")";
}

std::string Translation::like(const Expression& left) {
  std::string sql = "q_like(" + expression().sql + ", " + left.sql;
  if (reader_.acceptWord("escape")) sql += ", " + expression().sql;
  return sql + ")";
}

}  // namespace qrel::tsql
