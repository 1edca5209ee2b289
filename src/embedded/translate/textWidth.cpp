#include "embedded/translate/textWidth.h"

#include <algorithm>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Of a text made of both.
TextWidth::Kind commonKind(TextWidth::Kind a, TextWidth::Kind b) {
  using Kind = TextWidth::Kind;
  for (const Kind kind : {Kind::Long, Kind::Unknown, Kind::National})
    if (a == kind || b == kind) return kind;
  return Kind::Plain;
}

}  // namespace

TextWidth TextWidth::ofType(const TypeRef& type) {
  switch (type.xtype) {
    case xtype::VarChar:
    case xtype::Char:
      return type.length < 0 ? TextWidth{Kind::Long, 0} : TextWidth{Kind::Plain, type.prec};
    case xtype::NVarChar:
    case xtype::NChar:
      return type.length < 0 ? TextWidth{Kind::Long, 0} : TextWidth{Kind::National, type.prec};
    case xtype::Text:
    case xtype::NText:
    case xtype::Xml:
      return {Kind::Long, 0};
    default:
      return {};
  }
}

TextWidth TextWidth::ofLiteral(std::string_view text, bool national) {
  TextWidth width{national ? Kind::National : Kind::Plain, static_cast<std::int64_t>(characterCount(text))};
  if (width.exceeds()) width = {Kind::Long, 0};
  return width;
}

ExpressionType typeOf(const TextWidth& width) {
  if (width.kind == TextWidth::Kind::Unknown) return {};
  if (width.kind == TextWidth::Kind::Long) return expressionType("nvarchar", -1);
  const auto most =
      static_cast<int>(std::clamp<std::int64_t>(width.most == 0 ? width.limit() : width.most, 1, width.limit()));
  return expressionType(width.kind == TextWidth::Kind::National ? "nvarchar" : "varchar", most);
}

TextWidth either(const TextWidth& a, const TextWidth& b) {
  return {commonKind(a.kind, b.kind), std::max(a.most, b.most)};
}

TextWidth joined(const TextWidth& a, const TextWidth& b) { return {commonKind(a.kind, b.kind), a.most + b.most}; }

std::string cutToWidth(std::string sql, TextWidth& width) {
  if (!width.exceeds()) return sql;
  width = width.full();
  return "q_cut(" + sql + ", " + std::to_string(width.limit()) + ")";
}

}  // namespace qrel::tsql
