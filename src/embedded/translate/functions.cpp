#include <algorithm>
#include <array>

#include "embedded/catalogue/typeNames.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/translate/translation.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr DataType unknown = DataType::Empty;

// Those that SQLite has, and q_sum and q_avg.
constexpr std::array<std::string_view, 10> aggregates = {"count", "count_big", "sum",  "avg",        "min",
                                                         "max",   "stdev",     "rank", "string_agg", "row_number"};
constexpr std::array<std::string_view, 7> windowOnly = {"dense_rank",  "ntile",      "lag",         "lead",
                                                        "first_value", "last_value", "percent_rank"};

template <typename List>
bool contains(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

// The width of what a function makes of its arguments.
TextWidth widthOf(MadeWidth made, const std::vector<Expression>& given) {
  // What is no text becomes a short one.
  const auto asText = [](const Expression& each) {
    return each.kind == DataType::Text || each.kind == DataType::Empty ? each.width
                                                                       : TextWidth{TextWidth::Kind::Plain, 40};
  };
  switch (made) {
    case MadeWidth::AsFirst:
      return given.front().width;
    case MadeWidth::AsFirstOrLast:
      return either(asText(given.front()), asText(given.back()));
    case MadeWidth::AsAll: {
      TextWidth width = asText(given.front());
      for (std::size_t i = 1; i < given.size(); ++i) width = joined(width, asText(given[i]));
      return width;
    }
    case MadeWidth::AnyPlain:
      return {TextWidth::Kind::Plain, 0};
    case MadeWidth::Unknown:
      break;
  }
  return {};
}

}  // namespace

bool isBuiltInFunction(std::string_view lowerName) {
  static constexpr std::array<std::string_view, 10> special = {
      "cast", "convert", "try_cast", "try_convert", "isnull", "coalesce", "nullif", "iif", "checksum", "hashbytes"};
  return findFunction(lowerName) || contains(aggregates, lowerName) || contains(windowOnly, lowerName) ||
         contains(special, lowerName);
}

bool Translation::atBareFunction() const {
  const Token& token = reader_.peek();
  if (reader_.peek(1).isSymbol("(") || reader_.peek(1).isSymbol(".")) return false;
  return token.is("current_timestamp") || token.is("current_user") || token.is("session_user") || token.is("user") ||
         token.is("system_user");
}

Expression Translation::bareFunction() {
  const Token& token = reader_.next();
  Expression out;
  const bool time = token.is("current_timestamp");
  out.sql = time ? "q_getdate()" : token.is("system_user") ? "q_login()" : "q_schema_name()";
  out.kind = time ? DataType::Date : DataType::Text;
  return out;
}

std::vector<Expression> Translation::arguments() {
  std::vector<Expression> out;
  reader_.expectSymbol("(");
  if (!reader_.peek().isSymbol(")")) {
    do out.push_back(expression());
    while (reader_.acceptSymbol(","));
  }
  reader_.expectSymbol(")");
  return out;
}

Expression Translation::functionCall() {
  const std::size_t line = reader_.peek().line;
  const std::string name = lowerCase(reader_.next().raw);
  if (contains(aggregates, name) || contains(windowOnly, name)) return aggregate(name);
  bool found = false;
  Expression special = specialFunction(name, found);
  if (found) return special;
  const Function* function = findFunction(name);
  if (!function) throw NotUnderstood{"unknown function " + name, line};
  if (context_.catalogue && context_.catalogue->serverMajor() < function->since)
    throw DataError(errorNumber::badSql, "'" + upperCase(name) + "' is not a recognized built-in function name.",
                    "42000");
  return function->is(Function::PartFirst) ? callWithPart(*function) : call(*function);
}

Expression Translation::call(const Function& function) {
  const std::string name(function.name);
  const std::vector<Expression> given = arguments();
  const int count = static_cast<int>(given.size());
  if (count < function.least || count > function.most)
    throw DataError(errorNumber::badSql,
                    "The " + name + " function requires " + std::to_string(function.least) + " argument(s).", "42000");
  Expression out;
  out.sql = "q_" + name + "(";
  out.width = widthOf(function.width, given);
  if (function.is(Function::Limited)) {
    out.sql += std::to_string(out.width.limit()) + ", ";
    out.width = out.width.full();
  }
  for (std::size_t i = 0; i < given.size(); ++i) out.sql += (i ? ", " : "") + given[i].sql;
  out.sql += ")";
  out.kind = function.kind;
  if (out.kind == unknown && !given.empty() && isNumericKind(given[0].kind)) out.kind = given[0].kind;
  return out;
}

Expression Translation::callWithPart(const Function& function) {
  reader_.expectSymbol("(");
  Expression out;
  out.sql = "q_" + std::string(function.name) + "(" + quoteText(reader_.next().name());
  while (reader_.acceptSymbol(",")) out.sql += ", " + expression().sql;
  reader_.expectSymbol(")");
  out.sql += ")";
  out.kind = function.kind;
  return out;
}

// Functions whose arguments need more than a comma list. `found` tells whether it was one.
Expression Translation::specialFunction(const std::string& name, bool& found) {
  found = true;
  if (name == "cast" || name == "try_cast") return cast(true, name[0] == 't');
  if (name == "convert" || name == "try_convert") return cast(false, name[0] == 't');
  Expression out;
  if (name == "scope_identity") {  // no trigger is run, so that there is one scope alone
    reader_.expectSymbol("(");
    reader_.expectSymbol(")");
    out.sql = parameterOfVariable("@@identity");
    return out;
  }
  if (name == "iif") {
    reader_.expectSymbol("(");
    out.sql = "case when " + condition();
    reader_.expectSymbol(",");
    const Expression yes = expression();
    reader_.expectSymbol(",");
    const Expression no = expression();
    reader_.expectSymbol(")");
    out.sql += " then " + yes.sql + " else " + no.sql + " end";
    out.kind = commonKind(yes.kind, no.kind);
    out.width = either(yes.width, no.width);
    return out;
  }
  if (name == "isnull" || name == "coalesce" || name == "nullif") {
    const std::vector<Expression> given = arguments();
    if (given.size() < 2) refuse(name + " needs two arguments");
    out.kind = given[0].kind;
    out.width = given[0].width;
    if (name == "nullif") {
      out.sql = "case when " + compared(given[0], "=", given[1]) + " then null else " + given[0].sql + " end";
      return out;
    }
    out.sql = "coalesce(";
    for (std::size_t i = 0; i < given.size(); ++i) {
      out.sql += (i ? ", " : "") + given[i].sql;
      out.width = either(out.width, given[i].width);
    }
    out.sql += ")";
    if (name == "coalesce" || out.kind == unknown)
      for (const Expression& each : given) out.kind = commonKind(out.kind, each.kind);
    return out;
  }
  found = false;
  return out;
}

Expression Translation::aggregate(const std::string& name) {
  reader_.expectSymbol("(");
  Expression out;
  std::string inner;
  DataType kind = DataType::Integer;
  std::string distinct;
  bool separated = false;
  if (reader_.acceptSymbol("*")) {
    inner = "*";
  } else if (!reader_.peek().isSymbol(")")) {
    if (reader_.acceptWord("distinct"))
      distinct = "distinct ";
    else
      reader_.acceptWord("all");
    const Expression first = expression();
    kind = first.kind;
    out.width = first.width;
    inner = distinct + first.sql;
    if (!first.column && first.kind == DataType::Text && (name == "min" || name == "max" || !distinct.empty()))
      inner += " collate q_text";
    for (; reader_.acceptSymbol(","); separated = true) inner += ", " + expression().sql;
  }
  reader_.expectSymbol(")");
  if (name == "string_agg" && !separated)
    throw DataError(errorNumber::badSql, "The string_agg function requires 2 argument(s).", "42000");
  if (reader_.peek().is("within")) refuse("WITHIN GROUP can't be translated");
  const std::string window = over();
  std::string function = name;
  if (name == "count_big")
    function = "count";
  else if (name == "string_agg")
    function = "group_concat";
  else if ((name == "sum" || name == "avg") && window.empty())
    function = "q_" + name;
  else if (name == "stdev")
    refuse("STDEV can't be translated");
  if (contains(windowOnly, name) && window.empty()) refuse(name + " needs OVER");
  out.sql = function + "(" + inner + ")" + window;
  if (name == "string_agg" && out.width.limit() > 0) {
    out.width = out.width.full();
    out.sql = "q_within(" + out.sql + ", " + std::to_string(out.width.limit()) + ")";
  }
  const bool sameKind = name == "min" || name == "max" || name == "sum" || name == "avg" || name == "lag" ||
                        name == "lead" || name == "first_value" || name == "last_value";
  out.kind = name == "string_agg" ? DataType::Text : sameKind ? kind : DataType::Integer;
  if ((name == "sum" || name == "avg") && kind == DataType::Text) out.kind = DataType::Double;
  return out;
}

// OVER (PARTITION BY ... ORDER BY ... ROWS ...), with a blank in front; empty when there is none.
std::string Translation::over() {
  if (!reader_.acceptWord("over")) return {};
  reader_.expectSymbol("(");
  std::string sql = " over (";
  if (reader_.acceptWord("partition")) {
    reader_.expectWord("by");
    sql += "partition by ";
    for (bool first = true; first || reader_.acceptSymbol(","); first = false)
      sql += (first ? "" : ", ") + expression().sql;
  }
  if (reader_.peek().is("order")) sql += orderBy({}, false);
  while (reader_.peek().kind == TokenKind::Word || reader_.peek().kind == TokenKind::Number)
    sql += " " + std::string(reader_.next().raw);
  reader_.expectSymbol(")");
  return sql + ")";
}

TypeRef Translation::castType(bool& sized) {
  const std::size_t first = reader_.position();
  TypeRef type = readType(reader_, context_.catalogue);
  const std::size_t last = reader_.position();
  reader_.moveTo(last - 1);
  sized = reader_.peek().isSymbol(")") && last - first > 1;
  reader_.moveTo(last);
  return type;
}

// CAST(value AS type) and CONVERT(type, value, style); `attempt` gives Null where the conversion fails.
Expression Translation::cast(bool cast, bool attempt) {
  reader_.expectSymbol("(");
  bool sized = false;
  TypeRef type;
  Expression value;
  std::string style;
  if (cast) {
    value = expression();
    reader_.expectWord("as");
    type = castType(sized);
  } else {
    type = castType(sized);
    reader_.expectSymbol(",");
    value = expression();
    if (reader_.acceptSymbol(",")) style = expression().sql;
  }
  reader_.expectSymbol(")");
  return conversion(std::move(value), type, sized, style.empty() ? nullptr : &style, attempt);
}

Expression Translation::conversion(Expression value, const TypeRef& type, bool sized, const std::string* style,
                                   bool attempt) {
  int size = type.prec;
  const bool unsizedText = !sized && (isCharacter(type.xtype) || isBinary(type.xtype));
  if (unsizedText && type.xusertype < firstAliasType && type.name != "sysname") size = 30;
  const bool dateAsText =
      type.dataType == DataType::Text && (value.kind == DataType::Date || (style && value.kind == DataType::Empty));
  if (dateAsText) value.sql = "q_datetext(" + value.sql + ", " + (style ? *style : "0") + ")";
  const bool whole = type.dataType == DataType::Integer || type.dataType == DataType::Boolean;
  if (whole && value.kind == DataType::Decimal) value.sql = "cast(" + value.sql + " as numeric)";
  Expression out;
  out.sql = std::string(attempt ? "q_try_convert(" : "q_convert(") + value.sql + ", " + quoteText(type.baseName) +
            ", " + std::to_string(size) + ", " + std::to_string(type.scale) + ", " + (style ? *style : "null") + ")";
  out.kind = type.dataType;
  TypeRef sizedType = type;
  if (size == 30) sizedType.prec = size;
  if (type.dataType == DataType::Text) out.width = TextWidth::ofType(sizedType);
  return out;
}

}  // namespace qrel::tsql
