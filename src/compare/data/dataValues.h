// The values of records as a data comparison sees and shows them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/Program.h"
#include "platform/data/recordset.h"

namespace qrel {

// Colours of the differences window's rows, 0x00BBGGRR.
inline constexpr std::uint32_t COLOR_SOURCE_ONLY = 0xC0FFC0;
inline constexpr std::uint32_t COLOR_TARGET_ONLY = 0xC0E0FF;
inline constexpr std::uint32_t COLOR_DIFF_SOURCE = 0xFFFF00;
inline constexpr std::uint32_t COLOR_DIFF_TARGET = 0x80FFFF;

// A value as text; "Null" for Null.
std::string GetFieldValueOrNull(const Cell& varValue);
// The same behind a text: for values by the million.
void AppendFieldValueOrNull(std::string& strText, const Cell& varValue);

// The field of that very name, 0 when there is none.
std::size_t GetFieldIndexByName(const Recordset& rs, const std::string& strName);

// Whether two values count as equal: numbers by value, all else as texts without blanks at their ends, regardless of
// case unless blnCaseSensitive.
bool ValuesEqual(const Cell& varValue1, const Cell& varValue2, bool blnCaseSensitive);
// The same against the empty text.
bool ValueIsBlank(const Cell& varValue);

// Empty for a text of blanks, otherwise the text with its single quotes doubled.
std::string DoubleSingleQuotes(std::string_view strText);

// From the first record to record lngOffset (1-based), or to the end. Nothing happens for an offset below 2.
void MoveToRecordOffset(Program& program, Recordset& rs, std::int32_t lngOffset);

}  // namespace qrel
