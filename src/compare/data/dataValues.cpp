#include "compare/data/dataValues.h"

#include <bit>

#include "platform/data/matchKey.h"
#include "platform/text.h"

namespace qrel {

namespace {

// Equal for sure, without making texts of them.
bool sameContent(const Cell& a, const Cell& b) {
  if (a.null || b.null) return a.null && b.null;
  if (a.type != b.type) return false;
  switch (a.type) {
    case DataType::Integer:
    case DataType::Boolean:
      return a.integer == b.integer;
    case DataType::Double:
      return std::bit_cast<std::uint64_t>(a.real) == std::bit_cast<std::uint64_t>(b.real);
    default:
      return a.text == b.text;
  }
}

}  // namespace

std::string GetFieldValueOrNull(const Cell& varValue) { return varValue.null ? "Null" : textOf(varValue); }

void AppendFieldValueOrNull(std::string& strText, const Cell& varValue) {
  if (varValue.null)
    strText += "Null";
  else
    appendText(strText, varValue);
}

std::size_t GetFieldIndexByName(const Recordset& rs, const std::string& strName) {
  for (std::size_t index = 0; index < rs.FieldCount(); ++index)
    if (rs.Column(index).name == strName) return index;
  return 0;
}

bool ValuesEqual(const Cell& varValue1, const Cell& varValue2, bool blnCaseSensitive) {
  if (sameContent(varValue1, varValue2) || sameNumber(varValue1, varValue2)) return true;
  const std::string text1 = GetFieldValueOrNull(varValue1);
  const std::string text2 = GetFieldValueOrNull(varValue2);
  const std::string_view trimmed1 = trimBlanks(text1);
  const std::string_view trimmed2 = trimBlanks(text2);
  return trimmed1 == trimmed2 || (!blnCaseSensitive && upperCase(trimmed1) == upperCase(trimmed2));
}

bool ValueIsBlank(const Cell& varValue) { return trimBlanks(GetFieldValueOrNull(varValue)).empty(); }

std::string DoubleSingleQuotes(std::string_view strText) {
  if (trimBlanks(strText).empty()) return {};
  return replaceAll(strText, "'", "''");
}

void MoveToRecordOffset(Program& program, Recordset& rs, std::int32_t lngOffset) {
  if (lngOffset < 2) return;
  const PointerScope pointer(program.host, Pointer::Hourglass);
  for (std::int32_t i = 2; i <= lngOffset && !rs.Eof(); ++i) rs.MoveNext();
}

}  // namespace qrel
