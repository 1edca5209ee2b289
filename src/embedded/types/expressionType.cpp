#include "embedded/types/expressionType.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace qrel::tsql {

namespace {

constexpr int mostDigits = 38;
constexpr int quotientScale = 6;

// From high to low: of two types the one that stands first is that of both together.
constexpr std::array precedence = std::to_array<int>({
    xtype::Clr,      xtype::SqlVariant,    xtype::Xml,      xtype::DateTimeOffset, xtype::DateTime2,
    xtype::DateTime, xtype::SmallDateTime, xtype::Date,     xtype::Time,           xtype::Float,
    xtype::Real,     xtype::Decimal,       xtype::Numeric,  xtype::Money,          xtype::SmallMoney,
    xtype::BigInt,   xtype::Int,           xtype::SmallInt, xtype::TinyInt,        xtype::Bit,
    xtype::NText,    xtype::Text,          xtype::Image,    xtype::Timestamp,      xtype::UniqueIdentifier,
    xtype::NVarChar, xtype::NChar,         xtype::VarChar,  xtype::Char,           xtype::VarBinary,
    xtype::Binary,
});

std::ptrdiff_t rankOf(int xtype) { return std::find(precedence.begin(), precedence.end(), xtype) - precedence.begin(); }

bool isDateType(int xtype) {
  return xtype == xtype::DateTime || xtype == xtype::SmallDateTime || xtype == xtype::Date || xtype == xtype::Time ||
         xtype == xtype::DateTime2 || xtype == xtype::DateTimeOffset;
}

ExpressionType decimalType(int prec, int scale, bool numeric) {
  return expressionType(numeric ? "numeric" : "decimal", std::max(prec, 1), scale);
}

// A whole number or money as the decimal that it becomes beside one.
ExpressionType asDecimal(const ExpressionType& type) {
  if (type.isDecimal()) return type;
  if (type.xtype == xtype::SmallMoney) return decimalType(10, 4, false);
  if (type.xtype == xtype::Money) return decimalType(19, 4, false);
  return decimalType(std::clamp(type.prec, 1, mostDigits), 0, false);
}

ExpressionType decimalResult(char operation, const ExpressionType& left, const ExpressionType& right) {
  const ExpressionType a = asDecimal(left);
  const ExpressionType b = asDecimal(right);
  const int wholeA = a.prec - a.scale;
  const int wholeB = b.prec - b.scale;
  const bool numeric = a.xtype == xtype::Numeric && b.xtype == xtype::Numeric;
  int prec = 0;
  int scale = 0;
  switch (operation) {
    case '+':
    case '-':
      scale = std::max(a.scale, b.scale);
      prec = scale + std::max(wholeA, wholeB) + 1;
      if (prec > mostDigits) scale = std::min(scale, mostDigits - std::max(wholeA, wholeB));
      return decimalType(std::min(prec, mostDigits), scale, numeric);
    case '%':
      scale = std::max(a.scale, b.scale);
      return decimalType(std::min(std::min(wholeA, wholeB) + scale, mostDigits), scale, numeric);
    case '*':
      scale = a.scale + b.scale;
      prec = a.prec + b.prec + 1;
      break;
    default:
      scale = std::max(quotientScale, a.scale + b.prec + 1);
      prec = wholeA + b.scale + scale;
      break;
  }
  // What has more digits than there may be gives up some behind the point, but keeps six.
  if (prec > mostDigits) scale = std::max(std::min(scale, mostDigits - (prec - scale)), std::min(scale, quotientScale));
  return decimalType(std::min(prec, mostDigits), scale, numeric);
}

bool isText(const ExpressionType& type) { return isCharacter(type.xtype); }
bool isWide(const ExpressionType& type) { return type.xtype == xtype::NVarChar || type.xtype == xtype::NChar; }

// Two texts or two binary values behind each other.
ExpressionType joinedType(const ExpressionType& a, const ExpressionType& b) {
  const bool wide = isWide(a) || isWide(b);
  const bool bytes = isBinary(a.xtype);
  const int most = wide ? 4000 : 8000;
  const bool longest = a.length < 0 || b.length < 0;
  return expressionType(bytes  ? "varbinary"
                        : wide ? "nvarchar"
                               : "varchar",
                        longest ? -1 : std::clamp(a.prec + b.prec, 1, most));
}

}  // namespace

bool ExpressionType::isWhole() const {
  return xtype == xtype::BigInt || xtype == xtype::Int || xtype == xtype::SmallInt || xtype == xtype::TinyInt;
}

ExpressionType expressionType(const TypeRef& type) {
  ExpressionType out;
  out.xtype = type.xtype;
  out.xusertype = type.xusertype;
  out.length = type.length;
  out.prec = type.prec;
  out.scale = type.scale;
  return out;
}

ExpressionType expressionType(std::string_view name, int size, int scale) {
  return expressionType(systemTypeRef(*findSystemType(name), size, scale));
}

TypeRef typeRef(const ExpressionType& type) {
  TypeRef out;
  for (const SystemType& each : systemTypes()) {
    const bool same = type.xtype == xtype::Clr ? each.xusertype == type.xusertype : each.xusertype == each.xtype;
    if (each.xtype != type.xtype || !same) continue;
    const bool sized = sizingOf(type.xtype) != Sizing::None;
    out = systemTypeRef(each);
    if (!sized) return out;
  }
  out.xtype = type.xtype;
  out.length = type.length;
  out.prec = type.prec;
  out.scale = type.scale;
  return out;
}

ExpressionType literalType(std::string_view digits) {
  ExpressionType type;
  if (digits.find_first_of("eE") != std::string_view::npos) {
    type = expressionType("float");
  } else {
    const std::size_t point = digits.find('.');
    std::string_view whole = digits.substr(0, point);
    while (!whole.empty() && whole.front() == '0') whole.remove_prefix(1);
    const auto before = static_cast<int>(whole.size());
    const auto behind = point == std::string_view::npos ? 0 : static_cast<int>(digits.size() - point - 1);
    const bool isInt = point == std::string_view::npos && (before < 10 || (before == 10 && whole <= "2147483647"));
    if (isInt) {
      type = expressionType("int");
      type.prec = std::max(before, 1);  // beside a decimal it counts with the digits that it has
    } else {
      const int scale = std::min(behind, mostDigits);
      type = decimalType(std::min(std::max(before + behind, 1), mostDigits), scale, true);
    }
  }
  type.nullable = false;
  return type;
}

ExpressionType resultType(char operation, const ExpressionType& a, const ExpressionType& b) {
  if (!a.known() || !b.known()) return {};
  ExpressionType out;
  if (operation == '+' && isText(a) && isText(b)) return joinedType(a, b);
  if (operation == '+' && isBinary(a.xtype) && isBinary(b.xtype)) return joinedType(a, b);
  const ExpressionType& higher = rankOf(a.xtype) <= rankOf(b.xtype) ? a : b;
  const ExpressionType& lower = &higher == &a ? b : a;
  const bool bits = higher.xtype == xtype::Bit && (operation == '&' || operation == '|' || operation == '^');
  if (higher.isDecimal() && (lower.isExact() || lower.isWhole() || lower.xtype == xtype::Bit)) {
    out = decimalResult(operation, a, b);
  } else if (higher.isDecimal()) {
    out =
        decimalResult(operation, a.isDecimal() ? a : b, a.isDecimal() ? a : b);  // a text becomes what it stands beside
  } else if (isDateType(higher.xtype) || higher.isMoney() || higher.isWhole() || higher.xtype == xtype::Float ||
             higher.xtype == xtype::Real || bits) {
    out = higher;
  }
  if (out.isWhole()) out = expressionType(typeRef(out));  // a literal's digits are its own
  out.nullable = true;                                    // the server takes every operator for one that may give Null
  out.identity = false;
  return out;
}

ExpressionType commonType(const ExpressionType& a, const ExpressionType& b) {
  const bool nullable = a.nullable || b.nullable;
  ExpressionType out = !a.known() ? b : a;
  if (a.known() && b.known()) {
    const bool first = rankOf(a.xtype) <= rankOf(b.xtype);
    out = first ? a : b;
    const ExpressionType& other = first ? b : a;
    if (out.isDecimal() && (other.isExact() || other.isWhole() || other.xtype == xtype::Bit)) {
      const ExpressionType x = asDecimal(out);
      const ExpressionType y = asDecimal(other);
      const int whole = std::max(x.prec - x.scale, y.prec - y.scale);
      const int scale = std::min(std::max(x.scale, y.scale), std::max(mostDigits - whole, 0));
      out = decimalType(std::min(whole + scale, mostDigits), scale, out.xtype == xtype::Numeric);
    } else if ((isText(out) && isText(other)) || (isBinary(out.xtype) && isBinary(other.xtype))) {
      const bool longest = a.length < 0 || b.length < 0;
      out = expressionType(typeRef(out).name, longest ? -1 : std::max(a.prec, b.prec));
    }
  }
  if (out.isWhole()) out = expressionType(typeRef(out));
  out.nullable = nullable;
  out.identity = false;
  return out;
}

}  // namespace qrel::tsql
