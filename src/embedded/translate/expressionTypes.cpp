#include "embedded/translate/expressionTypes.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "embedded/catalogue/typeNames.h"
#include "embedded/translate/expressionTree.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

using Node = ExpressionNode;
using Kind = Node::Kind;

constexpr int mostPlainCharacters = 8000;
constexpr int mostWideCharacters = 4000;
constexpr int mostDigits = 38;
constexpr int leastDivisionScale = 6;

// An operand, with what a constant gives away beside its type.
struct Typed {
  TypeRef type;
  bool nullable = true;
  bool null = false;  // the constant NULL: of any type
  int digits = 0;     // of an integer constant
};

TypeRef systemType(std::string_view name, int size = 0, int scale = -1) {
  return systemTypeRef(*findSystemType(name), size, scale);
}

bool isWide(const TypeRef& type) { return type.xtype == xtype::NVarChar || type.xtype == xtype::NChar; }
bool isFixed(const TypeRef& type) {
  return type.xtype == xtype::Char || type.xtype == xtype::NChar || type.xtype == xtype::Binary;
}
bool isDecimal(const TypeRef& type) { return type.xtype == xtype::Decimal || type.xtype == xtype::Numeric; }
bool isMoney(const TypeRef& type) { return type.xtype == xtype::Money || type.xtype == xtype::SmallMoney; }

// The order in which one of two types is taken: the later one.
int rankOf(const TypeRef& type) {
  static constexpr std::array<int, 28> order{xtype::Binary,
                                             xtype::VarBinary,
                                             xtype::Char,
                                             xtype::VarChar,
                                             xtype::NChar,
                                             xtype::NVarChar,
                                             xtype::UniqueIdentifier,
                                             xtype::Timestamp,
                                             xtype::Image,
                                             xtype::Text,
                                             xtype::NText,
                                             xtype::Bit,
                                             xtype::TinyInt,
                                             xtype::SmallInt,
                                             xtype::Int,
                                             xtype::BigInt,
                                             xtype::SmallMoney,
                                             xtype::Money,
                                             xtype::Numeric,
                                             xtype::Decimal,
                                             xtype::Real,
                                             xtype::Float,
                                             xtype::Time,
                                             xtype::Date,
                                             xtype::SmallDateTime,
                                             xtype::DateTime,
                                             xtype::DateTime2,
                                             xtype::DateTimeOffset};
  const auto found = std::find(order.begin(), order.end(), type.xtype);
  return found == order.end() ? static_cast<int>(order.size()) : static_cast<int>(found - order.begin());
}
bool isInteger(const TypeRef& type) {
  return type.xtype == xtype::TinyInt || type.xtype == xtype::SmallInt || type.xtype == xtype::Int ||
         type.xtype == xtype::BigInt || type.xtype == xtype::Bit;
}
bool isDate(const TypeRef& type) { return type.dataType == DataType::Date; }

// A text or bytes of this length; -1 and what is too long are max.
TypeRef textType(bool wide, bool fixed, int length) {
  const int most = wide ? mostWideCharacters : mostPlainCharacters;
  if (length < 0) return systemType(wide ? "nvarchar" : "varchar", -1);
  const int size = std::clamp(length, 1, most);
  return systemType(fixed ? (wide ? "nchar" : "char") : wide ? "nvarchar" : "varchar", size);
}

struct Digits {
  int precision = 0, scale = 0;
};

// An exact number as a decimal one.
Digits digitsOf(const Typed& value) {
  if (value.digits > 0) return {value.digits, 0};
  switch (value.type.xtype) {
    case xtype::Bit:
      return {1, 0};
    case xtype::TinyInt:
      return {3, 0};
    case xtype::SmallInt:
      return {5, 0};
    case xtype::Int:
      return {10, 0};
    case xtype::BigInt:
      return {19, 0};
    case xtype::SmallMoney:
      return {10, 4};
    case xtype::Money:
      return {19, 4};
    default:
      return {value.type.prec, value.type.scale};
  }
}

// Where there are more than 38 digits, the fraction gives way.
Digits limited(Digits digits, bool additive) {
  if (digits.precision <= mostDigits) return digits;
  const int whole = digits.precision - digits.scale;
  if (additive) return {mostDigits, std::max(0, std::min(digits.scale, mostDigits - whole))};
  const int room = mostDigits - whole;
  if (room < leastDivisionScale) return {mostDigits, std::min(digits.scale, leastDivisionScale)};
  return {mostDigits, std::min(digits.scale, room)};
}

Digits combined(std::string_view sign, const Digits& a, const Digits& b) {
  const int scale = std::max(a.scale, b.scale);
  const int wholeA = a.precision - a.scale;
  const int wholeB = b.precision - b.scale;
  if (sign == "*") return limited({a.precision + b.precision + 1, a.scale + b.scale}, false);
  if (sign == "/") {
    const int made = std::max(leastDivisionScale, a.scale + b.precision + 1);
    return limited({wholeA + b.scale + made, made}, false);
  }
  if (sign == "%") return {std::min(wholeA, wholeB) + scale, scale};
  return limited({std::max(wholeA, wholeB) + scale + 1, scale}, true);
}

TypeRef decimalOf(const Typed& a, const Typed& b, Digits digits) {
  const bool written = a.type.xtype == xtype::Decimal || b.type.xtype == xtype::Decimal;
  return systemType(written ? "decimal" : "numeric", std::max(digits.precision, 1), digits.scale);
}

// The type that two values have in common, as branches of CASE have.
TypeRef common(const Typed& a, const Typed& b) {
  if (a.null) return b.type;
  if (b.null) return a.type;
  if (isDecimal(a.type) || isDecimal(b.type)) {
    const bool exact =
        rankOf(a.type) <= rankOf(systemType("decimal")) && rankOf(b.type) <= rankOf(systemType("decimal"));
    if (exact && (isDecimal(a.type) || isInteger(a.type)) && (isDecimal(b.type) || isInteger(b.type))) {
      const Digits left = digitsOf(a), right = digitsOf(b);
      const int scale = std::max(left.scale, right.scale);
      const int whole = std::max(left.precision - left.scale, right.precision - right.scale);
      return decimalOf(a, b, {std::min(whole + scale, mostDigits), scale});
    }
  }
  const bool texts = isCharacter(a.type.xtype) && isCharacter(b.type.xtype);
  if (texts) {
    const int length = a.type.prec < 0 || b.type.prec < 0 ? -1 : std::max(a.type.prec, b.type.prec);
    return textType(isWide(a.type) || isWide(b.type), isFixed(a.type) && isFixed(b.type), length);
  }
  return rankOf(b.type) > rankOf(a.type) ? b.type : a.type;
}

// What a function gives back, whatever its arguments are; `size` as in systemType.
struct Result {
  std::string_view function, type;
  int size = 0;
  bool never = false;  // Null
};
constexpr std::array results = std::to_array<Result>({
    {"getdate", "datetime", 0, true},
    {"getutcdate", "datetime", 0, true},
    {"sysdatetime", "datetime2", 0, true},
    {"sysutcdatetime", "datetime2", 0, true},
    {"sysdatetimeoffset", "datetimeoffset", 0, true},
    {"newid", "uniqueidentifier", 0, true},
    {"datepart", "int"},
    {"datediff", "int"},
    {"datediff_big", "bigint"},
    {"datename", "nvarchar", 30},
    {"year", "int"},
    {"month", "int"},
    {"day", "int"},
    {"eomonth", "date"},
    {"datefromparts", "date"},
    {"datetimefromparts", "datetime"},
    {"smalldatetimefromparts", "smalldatetime"},
    {"ascii", "int"},
    {"unicode", "int"},
    {"char", "char", 1},
    {"nchar", "nchar", 1},
    {"soundex", "varchar", 5},
    {"difference", "int"},
    {"checksum", "int"},
    {"binary_checksum", "int"},
    {"isnumeric", "int"},
    {"isdate", "int"},
    {"isjson", "int"},
    {"object_id", "int"},
    {"sqrt", "float"},
    {"square", "float"},
    {"exp", "float"},
    {"log", "float"},
    {"log10", "float"},
    {"sin", "float"},
    {"cos", "float"},
    {"tan", "float"},
    {"cot", "float"},
    {"asin", "float"},
    {"acos", "float"},
    {"atan", "float"},
    {"atn2", "float"},
    {"pi", "float"},
    {"rand", "float"},
    {"hashbytes", "varbinary", 8000},
    {"json_value", "nvarchar", 4000},
    {"json_query", "nvarchar", -1},
    {"format", "nvarchar", 4000},
    {"quotename", "nvarchar", 258},
    {"user_name", "nvarchar", 128},
    {"suser_sname", "nvarchar", 128},
    {"suser_name", "nvarchar", 128},
    {"object_name", "nvarchar", 128},
    {"db_name", "nvarchar", 128},
    {"app_name", "nvarchar", 128},
    {"host_name", "nvarchar", 128},
});

class Typer {
 public:
  Typer(const Catalogue& catalogue, const std::vector<ColumnDef>& columns) : catalogue_(catalogue), columns_(columns) {}

  Typed typeOf(const Node& node) const {
    switch (node.kind) {
      case Kind::Number:
        return number(node.text);
      case Kind::Text:
        return text(node.text);
      case Kind::Other:
        return other(node.text);
      case Kind::Null:
        return {systemType("int"), true, true};
      case Kind::Name:
        return name(node);
      case Kind::Call:
        return call(node);
      case Kind::Convert:
        return conversion(node);
      case Kind::Case:
        return caseOf(node);
      case Kind::Unary: {
        Typed inner = typeOf(node.children[0]);
        inner.digits = 0;
        inner.nullable = inner.nullable || node.text == "-";
        return inner;
      }
      case Kind::Collate:
        return typeOf(node.children[0]);
      case Kind::AtTimeZone:
        return {systemType("datetimeoffset"), true};
      case Kind::Binary:
        return operation(node);
      default:
        throw NotUnderstood{"a condition is no value", 1};
    }
  }

 private:
  static Typed number(std::string digits) {
    if (digits.front() == '-' || digits.front() == '+') digits.erase(0, 1);
    if (digits.find_first_of("eE") != std::string::npos) return {systemType("float"), false};
    const std::size_t point = digits.find('.');
    digits.erase(0, std::min(digits.find_first_not_of('0'), point == std::string::npos ? digits.size() - 1 : point));
    const std::size_t at = digits.find('.');
    const int whole = static_cast<int>(std::min(at, digits.size()));
    const int scale = at == std::string::npos ? 0 : static_cast<int>(digits.size() - at - 1);
    const bool small = whole < 10 || (whole == 10 && digits <= "2147483647");
    if (at == std::string::npos && small) return {systemType("int"), false, false, std::max(whole, 1)};
    return {systemType("numeric", std::clamp(whole + scale, 1, mostDigits), std::min(scale, mostDigits)), false};
  }

  static Typed text(const std::string& written) {
    const std::vector<Token> tokens = lex(written);
    const int length = static_cast<int>(characterCount(tokens[0].text));
    return {textType(tokens[0].national, false, std::max(length, 1)), false};
  }

  static Typed other(const std::string& written) {
    if (written.starts_with('$')) return {systemType("money"), false};
    if (written.starts_with("0x") || written.starts_with("0X"))
      return {systemType("varbinary", std::max(static_cast<int>((written.size() - 1) / 2), 1)), false};
    throw NotUnderstood{"a variable", 1};
  }

  Typed name(const Node& node) const {
    const std::string& wanted = node.parts.back();
    for (const ColumnDef& column : columns_)
      if (compareCollated(column.name, wanted) == 0) return {column.type, column.nullable};
    const std::string lower = lowerCase(wanted);
    if (node.simple && lower == "current_timestamp") return {systemType("datetime"), false};
    if (node.simple &&
        (lower == "current_user" || lower == "session_user" || lower == "user" || lower == "system_user"))
      return {systemType("nvarchar", 128), true};
    throw NotUnderstood{"the column '" + wanted + "' isn't known", 1};
  }

  Typed operation(const Node& node) const {
    const Typed a = typeOf(node.children[0]);
    const Typed b = typeOf(node.children[1]);
    const std::string_view sign = node.text;
    const bool nullable = a.nullable || b.nullable;
    const bool texts = isCharacter(a.type.xtype) && isCharacter(b.type.xtype);
    const bool bytes = isBinary(a.type.xtype) && isBinary(b.type.xtype);
    if (sign == "+" && texts) return {joinedText(a.type, b.type), nullable};
    if (sign == "+" && bytes) {
      const bool max = a.type.prec < 0 || b.type.prec < 0;
      return {systemType("varbinary", max ? -1 : std::min(a.type.prec + b.type.prec, mostPlainCharacters)), nullable};
    }
    if (a.null || b.null) return {a.null ? b.type : a.type, true};
    // A sum may overflow, which is Null at a server.
    return {numericResult(sign, a, b), true};
  }

  static TypeRef joinedText(const TypeRef& a, const TypeRef& b) {
    const bool max = a.prec < 0 || b.prec < 0;
    return textType(isWide(a) || isWide(b), isFixed(a) && isFixed(b), max ? -1 : a.prec + b.prec);
  }

  static TypeRef numericResult(std::string_view sign, const Typed& a, const Typed& b) {
    const bool bitwise = sign == "&" || sign == "|" || sign == "^";
    const Typed& higher = rankOf(b.type) > rankOf(a.type) ? b : a;
    if (isDate(higher.type)) return higher.type;
    if (!bitwise && isDecimal(higher.type)) {
      // A text beside it is read as a number of its type.
      const Typed& lower = &higher == &a ? b : a;
      const Digits own = isCharacter(lower.type.xtype) ? digitsOf(higher) : digitsOf(lower);
      const Digits left = &higher == &a ? digitsOf(a) : own;
      const Digits right = &higher == &a ? own : digitsOf(b);
      return decimalOf(a, b, combined(sign, left, right));
    }
    if (higher.type.xtype == xtype::Bit && !bitwise) return systemType("int");
    return higher.type;
  }

  Typed conversion(const Node& node) const {
    std::string words;
    for (const Token& token : node.type) words += (words.empty() ? "" : " ") + std::string(token.raw);
    const std::vector<Token> tokens = lex(words);
    TokenReader reader(words, tokens);
    TypeRef type = readType(reader, &catalogue_);
    const bool sized = words.find('(') != std::string::npos;
    const bool plain = isCharacter(type.xtype) || isBinary(type.xtype);
    if (plain && !sized && type.xusertype < firstAliasType && type.xusertype != sysnameXusertype)
      type = systemType(type.baseName, 30);
    return {type, true};
  }

  Typed caseOf(const Node& node) const {
    const std::size_t begin = node.simple ? 1 : 0;
    const bool otherwise = (node.children.size() - begin) % 2 == 1;
    std::vector<Typed> branches;
    for (std::size_t at = begin + 1; at < node.children.size(); at += 2) branches.push_back(typeOf(node.children[at]));
    if (otherwise) branches.push_back(typeOf(node.children.back()));
    Typed result = together(branches);
    result.nullable = result.nullable || !otherwise;
    return result;
  }

  static Typed together(const std::vector<Typed>& values) {
    Typed result = values.front();
    for (const Typed& each : values) {
      TypeRef type = common(result, each);
      result = {std::move(type), result.nullable || each.nullable, result.null && each.null, 0};
    }
    if (result.null) throw NotUnderstood{"no value has a type", 1};
    return result;
  }

  static int constantOf(const Node& node) {
    int value = -1;
    if (node.kind == Kind::Number) std::from_chars(node.text.data(), node.text.data() + node.text.size(), value);
    return value;
  }

  Typed call(const Node& node) const {
    if (node.parts.size() > 1) return userFunction(node);
    const std::string lower = lowerCase(node.parts.front());
    for (const Result& each : results)
      if (each.function == lower) return {systemType(each.type, each.size), !each.never};
    const std::vector<Node>& given = node.children;
    if (lower == "dateadd" && given.size() == 3) {
      const Typed date = typeOf(given[2]);
      return {isDate(date.type) ? date.type : systemType("datetime"), true};
    }
    if (given.empty()) unknownFunction(lower);
    if (lower == "iif" && given.size() == 3) return together({typeOf(given[1]), typeOf(given[2])});
    std::vector<Typed> types;
    types.reserve(given.size());
    for (const Node& each : given) types.push_back(typeOf(each));
    if (lower == "isnull" && given.size() == 2)
      return {types[0].null ? types[1].type : types[0].type, types[0].nullable && types[1].nullable};
    if (lower == "nullif") return {types[0].type, true};
    if (lower == "coalesce") return together(types);
    if (isCharacter(types[0].type.xtype) || lower == "str" || lower == "space" || lower.starts_with("concat")) {
      if (auto made = textFunction(lower, given, types)) return {*made, lower.starts_with("concat") ? false : true};
    }
    return numberFunction(lower, types);
  }

  static std::optional<TypeRef> textFunction(const std::string& lower, const std::vector<Node>& given,
                                             const std::vector<Typed>& types) {
    const TypeRef& first = types[0].type;
    const bool wide = isWide(first);
    const bool max = first.prec < 0;
    if (lower == "upper" || lower == "lower" || lower == "ltrim" || lower == "rtrim" || lower == "trim" ||
        lower == "reverse")
      return textType(wide, false, first.prec);
    if ((lower == "left" || lower == "right" || lower == "substring") && given.size() > 1) {
      const int length = constantOf(given.back());
      const bool cut = length >= 0 && (max || length < first.prec);
      return textType(wide, false, cut ? length : first.prec);
    }
    if (lower == "replace" || lower == "stuff" || lower == "replicate" || lower == "translate")
      return textType(wide || (types.size() > 2 && isWide(types.back().type)), false, max ? -1 : mostPlainCharacters);
    if (lower == "space") return systemType("varchar", 8000);
    if (lower == "str")
      return systemType("varchar", given.size() > 1 && constantOf(given[1]) > 0 ? constantOf(given[1]) : 10);
    if (lower == "concat") return concatenated(types);
    return std::nullopt;
  }

  // Every value becomes a text of the length that its type may need.
  static TypeRef concatenated(const std::vector<Typed>& types) {
    constexpr int numberCharacters = 12;
    bool wide = false, max = false;
    int length = 0;
    for (const Typed& each : types) {
      if (each.null) continue;
      const bool text = isCharacter(each.type.xtype);
      if (!text && each.type.xtype != xtype::Int) throw NotUnderstood{"the length of CONCAT isn't known", 1};
      wide = wide || isWide(each.type);
      max = max || (text && each.type.prec < 0);
      length += text ? each.type.prec : numberCharacters;
    }
    return textType(wide, false, max ? -1 : length);
  }

  static Typed numberFunction(const std::string& lower, const std::vector<Typed>& types) {
    const TypeRef& first = types[0].type;
    const bool max = first.prec < 0;
    if (lower == "len" || lower == "datalength") return {systemType(max ? "bigint" : "int"), true};
    if ((lower == "charindex" || lower == "patindex") && types.size() > 1)
      return {systemType(types[1].type.prec < 0 ? "bigint" : "int"), true};
    const bool rounds = lower == "floor" || lower == "ceiling";
    if (!rounds && lower != "abs" && lower != "round" && lower != "sign" && lower != "power") unknownFunction(lower);
    if (isDecimal(first)) {
      const bool widest = lower == "abs" || lower == "sign" || lower == "power";
      return {systemType(first.baseName, widest ? mostDigits : first.prec, rounds ? 0 : first.scale), true};
    }
    if (first.xtype == xtype::BigInt || first.xtype == xtype::Float) return {first, true};
    if (isMoney(first)) return {systemType("money"), true};
    return {systemType(isInteger(first) && first.xtype != xtype::Bit ? "int" : "float"), true};
  }

  [[noreturn]] static void unknownFunction(const std::string& name) {
    throw NotUnderstood{"the type of " + name + " isn't known", 1};
  }

  // What the function was declared to return.
  Typed userFunction(const Node& node) const {
    const auto function = catalogue_.find(node.parts[node.parts.size() - 2], node.parts.back());
    const auto columns = function ? catalogue_.returned(function->id) : std::nullopt;
    if (!columns) throw NotUnderstood{"the function '" + node.parts.back() + "' isn't known", 1};
    return {*columns, true};
  }

  const Catalogue& catalogue_;
  const std::vector<ColumnDef>& columns_;
};

}  // namespace

std::optional<DerivedType> derivedType(const Catalogue& catalogue, std::string_view text,
                                       const std::vector<ColumnDef>& columns) {
  try {
    const Typed found = Typer(catalogue, columns).typeOf(readExpressionTree(text));
    if (found.null) return std::nullopt;
    return DerivedType{found.type, found.nullable};
  } catch (const NotUnderstood&) {
    return std::nullopt;
  } catch (const DataError&) {  // a type's size
    return std::nullopt;
  }
}

}  // namespace qrel::tsql
