// SQL Server's types: what the catalogue says of them, how the embedded server stores them, and how values get there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/provider.h"

namespace qrel::tsql {

// The numbers of the types as catalogues store them (systypes.xtype, syscolumns.xtype): plain ints everywhere else.
namespace xtype {
enum : int {
  Image = 34,
  Text = 35,
  UniqueIdentifier = 36,
  Date = 40,
  Time = 41,
  DateTime2 = 42,
  DateTimeOffset = 43,
  TinyInt = 48,
  SmallInt = 52,
  Int = 56,
  SmallDateTime = 58,
  Real = 59,
  Money = 60,
  DateTime = 61,
  Float = 62,
  SqlVariant = 98,
  NText = 99,
  Bit = 104,
  Decimal = 106,
  Numeric = 108,
  SmallMoney = 122,
  BigInt = 127,
  VarBinary = 165,
  VarChar = 167,
  Binary = 173,
  Char = 175,
  Timestamp = 189,
  NVarChar = 231,
  NChar = 239,
  Clr = 240,  // hierarchyid, geometry, geography: their xusertype tells which
  Xml = 241,
  Table = 243,  // types of tables, of which no column is
};
}  // namespace xtype
// char, varchar, nchar, nvarchar: texts that have a size. text, ntext and xml have none.
constexpr bool isCharacter(int xtype) {
  return xtype == xtype::Char || xtype == xtype::VarChar || xtype == xtype::NChar || xtype == xtype::NVarChar;
}
// binary, varbinary: bytes that have a size.
constexpr bool isBinary(int xtype) { return xtype == xtype::Binary || xtype == xtype::VarBinary; }
inline constexpr int sysnameXusertype = 256;
// Types that were made in a database are counted from here on, as xusertype.
inline constexpr int firstAliasType = 257;

// A row of systypes. `length` in bytes (-1: max), `prec` in characters or digits (0: the type has none).
struct SystemType {
  const char* name;
  int xtype;
  int xusertype;
  int length;
  int prec;
  int scale;
  DataType dataType;
};
const std::vector<SystemType>& systemTypes();
// Case-insensitive; synonyms (integer, dec, character varying, national char, rowversion, sysname, ...) are resolved.
const SystemType* findSystemType(std::string_view name);

// A column's or variable's type as declared. `baseName` is the system type in lower case; `name` what the catalogue
// shows: the same, or the alias type's name. length in bytes (-1: max), prec as in syscolumns (-1: max).
struct TypeRef {
  std::string name;
  std::string baseName;
  int xtype = 0;
  int xusertype = 0;
  int length = 0;
  int prec = 0;
  int scale = 0;
  DataType dataType = DataType::Text;
  std::optional<bool> aliasNullable;  // set for alias types
};

// The type of a bare system type name; `size` and `scale` as in name(size,scale): 0 and -1 where they are absent, size
// -1 for max. Raises DataError 0x80040E14 for a size the type can't have.
TypeRef systemTypeRef(const SystemType& type, int size = 0, int scale = -1);

// Sizes that a type is declared with, by xtype.
enum class Sizing : std::uint8_t { None, Characters, WideCharacters, Bytes, Decimal, Float, Fraction };
Sizing sizingOf(int xtype);
// Raises the DataError of a size that the type can't have.
[[noreturn]] void badSize(const SystemType& type, int size);

// The declaration of a column in the SQLite table: affinity, type text and collation, such as
// "TEXT decimal(18,2) COLLATE q_decimal". decimal, money, dates, GUIDs and text are TEXT in their text form; binary
// BLOB; bit and integers INTEGER; float and real REAL.
std::string storageDeclaration(const TypeRef& type);
// The reverse, from sqlite3_column_decltype: type name, DataType, precision and scale.
ColumnInfo columnFromDeclaration(std::string_view name, std::string_view declaration);

// Brings a value into the stored form of a type: digits rounded to the scale, dates in any of the server's literal
// forms to yyyy-mm-dd hh:mm:ss.f, char and binary padded, GUIDs in braces and upper case, 0x... to bytes for binary
// columns. Fractions of seconds lose their trailing zeros. Raises DataError 0x80040E14 with the server's words for what
// doesn't convert or doesn't fit ("String or binary data would be truncated.", "Conversion failed when converting ...",
// "Arithmetic overflow error ...").
Value convertTo(const TypeRef& type, const Value& value);
// CONVERT(varchar, date, style) and the like: a value as text.
std::string dateText(std::string_view storedDate, int style);

}  // namespace qrel::tsql
