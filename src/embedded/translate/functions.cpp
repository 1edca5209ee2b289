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
constexpr std::size_t mostArgumentsInside = 120;

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

// The type of what a function gives whose row in the table tells its kind alone.
ExpressionType typeOfCall(const Function& function, const std::vector<Expression>& given, const TextWidth& width) {
  const ExpressionType first = given.empty() ? ExpressionType() : given.front().type;
  const std::string_view name = function.name;
  ExpressionType type;
  if (function.kind == DataType::Text) {
    type = typeOf(width);
  } else if (name == "abs" || name == "round" || name == "sign" || name == "power") {
    type = first;
  } else if (name == "ceiling" || name == "floor") {
    type = first.isDecimal() ? expressionType(typeRef(first).name, first.prec, 0) : first;
  } else if (name == "len" || name == "datalength") {
    type = expressionType(first.length < 0 ? "bigint" : "int");
  } else if (name.starts_with("sys") && function.kind == DataType::Date) {
    type = expressionType(name == "sysdatetimeoffset" ? "datetimeoffset" : "datetime2");
  } else if (name == "eomonth" || name == "datefromparts") {
    type = expressionType("date");
  } else if (name == "dateadd") {
    type = !given.empty() && given.back().kind == DataType::Date ? given.back().type : expressionType("datetime");
  } else if (function.kind == DataType::Date) {
    type = expressionType("datetime");
  } else if (function.kind == DataType::Integer) {
    type = expressionType("int");
  } else if (function.kind == DataType::Double) {
    type = expressionType("float");
  } else if (function.kind == DataType::Guid) {
    type = expressionType("uniqueidentifier");
  }
  if ((name == "abs" || name == "sign" || name == "power") && type.isWhole() && type.xtype != xtype::BigInt)
    type = expressionType("int");
  type.nullable = !(given.empty() && (function.kind == DataType::Date || function.kind == DataType::Guid));
  type.identity = false;
  return type;
}

// The type of an aggregate, or of a function over rows.
ExpressionType typeOfAggregate(const std::string& name, const Expression& over) {
  ExpressionType type = over.type;
  if (name == "count") {
    type = expressionType("int");
  } else if (name == "count_big" || name == "row_number" || name == "rank" || name == "dense_rank" || name == "ntile") {
    type = expressionType("bigint");
  } else if (name == "percent_rank") {
    type = expressionType("float");
  } else if (name == "sum" || name == "avg") {
    if (type.isDecimal()) type = expressionType("decimal", 38, name == "avg" ? std::max(type.scale, 6) : type.scale);
    if (type.xtype == xtype::SmallMoney) type = expressionType("money");
    if (type.xtype == xtype::SmallInt || type.xtype == xtype::TinyInt || type.xtype == xtype::Int)
      type = expressionType("int");
    if (type.xtype == xtype::Real) type = expressionType("float");
  } else if (name == "string_agg") {
    type = typeOf(over.width);
  }
  type.nullable = name != "row_number" && name != "rank" && name != "dense_rank" && name != "ntile";
  type.identity = false;
  return type;
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
  out.type = time ? expressionType("datetime") : expressionType("nvarchar", 128);
  out.type.nullable = !time;
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
  for (std::size_t i = 0; i < given.size(); ++i) {
    // SQLite takes fewer arguments than the server: what comes first is joined first.
    if (i > 0 && i % mostArgumentsInside == 0) {
      if (name != "concat") refuse(name + " with so many arguments can't be translated");
      out.sql = "q_concat(" + std::to_string(out.width.limit()) + ", " + out.sql + ")";
    }
    out.sql += (i ? ", " : "") + given[i].sql;
  }
  out.sql += ")";
  out.kind = function.kind;
  if (out.kind == unknown && !given.empty() && isNumericKind(given[0].kind)) out.kind = given[0].kind;
  out.type = typeOfCall(function, given, out.width);
  return out;
}

Expression Translation::callWithPart(const Function& function) {
  reader_.expectSymbol("(");
  Expression out;
  out.sql = "q_" + std::string(function.name) + "(" + quoteText(reader_.next().name());
  std::vector<Expression> given;
  while (reader_.acceptSymbol(",")) {
    given.push_back(expression());
    out.sql += ", " + given.back().sql;
  }
  reader_.expectSymbol(")");
  out.sql += ")";
  out.kind = function.kind;
  out.type = typeOfCall(function, given, out.width);
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
    out.type = commonType(yes.type, no.type);
    if (out.type.isExact()) out.kind = DataType::Decimal;
    return out;
  }
  if (name == "isnull" || name == "coalesce" || name == "nullif") {
    const std::vector<Expression> given = arguments();
    if (given.size() < 2) refuse(name + " needs two arguments");
    out.kind = given[0].kind;
    out.width = given[0].width;
    out.type = given[0].type;
    out.type.nullable = true;
    out.type.identity = false;
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
    if (name == "coalesce" || !out.type.known())
      for (const Expression& each : given) out.type = commonType(out.type, each.type);
    // Only ISNULL is never Null by what stands in its second place.
    out.type.nullable = name == "coalesce" || (given[0].type.nullable && given.back().type.nullable);
    if (out.type.isExact()) {
      Expression value = std::move(out);
      out = {};
      out.sql = asExact(value, value.type);
      out.kind = DataType::Decimal;
      out.type = value.type;
    }
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
  Expression over;
  const std::size_t named = grouping_ ? grouping_->used.size() : 0;
  if (reader_.acceptSymbol("*")) {
    inner = "*";
  } else if (!reader_.peek().isSymbol(")")) {
    if (reader_.acceptWord("distinct"))
      distinct = "distinct ";
    else
      reader_.acceptWord("all");
    over = expression();
    kind = over.kind;
    out.width = over.width;
    inner = distinct + over.sql;
    if (!over.column && (name == "min" || name == "max" || !distinct.empty())) inner += collationOf(over.kind);
    for (; reader_.acceptSymbol(","); separated = true) inner += ", " + expression().sql;
  }
  reader_.expectSymbol(")");
  if (name == "string_agg" && !separated)
    throw DataError(errorNumber::badSql, "The string_agg function requires 2 argument(s).", "42000");
  if (reader_.peek().is("within")) refuse("WITHIN GROUP can't be translated");
  const std::string window = this->over();
  // What an aggregate is made of needs no group.
  if (grouping_ && window.empty()) grouping_->used.resize(std::min(named, grouping_->used.size()));
  if (grouping_ && window.empty() && grouping_->scope == scope_) grouping_->aggregates = true;
  std::string function = name;
  if (name == "count_big")
    function = "count";
  else if (name == "string_agg")
    function = "group_concat";
  else if (name == "sum" || name == "avg")
    function = "q_" + name;
  else if (name == "stdev")
    refuse("STDEV can't be translated");
  if (contains(windowOnly, name) && window.empty()) refuse(name + " needs OVER");
  out.type = typeOfAggregate(name, over);
  if ((name == "sum" || name == "avg") && over.type.isExact() && over.exact.empty())
    inner += ", " + std::to_string(out.type.scale);
  out.sql = function + "(" + inner + ")" + window;
  if ((name == "sum" || name == "avg") && out.type.xtype == xtype::Int) out.sql = "q_whole('int', " + out.sql + ")";
  if (name == "string_agg" && out.width.limit() > 0) {
    out.width = out.width.full();
    out.sql = "q_within(" + out.sql + ", " + std::to_string(out.width.limit()) + ")";
  }
  const bool sameKind = name == "min" || name == "max" || name == "sum" || name == "avg" || name == "lag" ||
                        name == "lead" || name == "first_value" || name == "last_value";
  out.kind = name == "string_agg" ? DataType::Text : sameKind ? kind : DataType::Integer;
  if ((name == "sum" || name == "avg") && kind == DataType::Text) out.kind = DataType::Double;
  if ((name == "sum" || name == "avg") && over.type.isExact() && over.exact.empty()) out.kind = DataType::Decimal;
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
  if (!value.exact.empty() && (type.dataType == DataType::Text || type.dataType == DataType::Decimal)) {
    const std::size_t point = value.exact.find('.');  // ".5" is told as 0.5
    const bool bare = point == 0 || !isDigit(value.exact[point - 1]);
    value.sql = quoteText(bare ? value.exact.substr(0, point) + "0" + value.exact.substr(point) : value.exact);
  }
  const bool plainStyle = !style || *style == "0";
  if (type.dataType == DataType::Text && value.type.isMoney()) {  // two digits, or four with style 2 and 126
    if (!plainStyle && *style != "2" && *style != "126") refuse("this style can't be had for money");
    if (plainStyle) value.sql = "q_decimal('=', " + value.sql + ", 0, 38, 2)";
  }
  const bool real = value.type.xtype == xtype::Float || value.type.xtype == xtype::Real;
  if (type.dataType == DataType::Text && real && plainStyle) value.sql = "q_floattext(" + value.sql + ")";
  const bool whole = type.dataType == DataType::Integer || type.dataType == DataType::Boolean;
  if (whole && value.kind == DataType::Decimal) value.sql = "cast(" + value.sql + " as numeric)";
  Expression out;
  out.sql = std::string(attempt ? "q_try_convert(" : "q_convert(") + value.sql + ", " + quoteText(type.baseName) +
            ", " + std::to_string(size) + ", " + std::to_string(type.scale) + ", " + (style ? *style : "null") + ")";
  out.kind = type.dataType;
  out.type = expressionType(size == 30 && unsizedText ? systemTypeRef(*findSystemType(type.baseName), 30) : type);
  TypeRef sizedType = type;
  if (size == 30) sizedType.prec = size;
  if (type.dataType == DataType::Text) out.width = TextWidth::ofType(sizedType);
  return out;
}

}  // namespace qrel::tsql
