#include "embedded/types/types.h"

#include <algorithm>
#include <charconv>

#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool canBeMax(int xtype) { return xtype == xtype::VarChar || xtype == xtype::NVarChar || xtype == xtype::VarBinary; }

void sizeDecimal(TypeRef& ref, const SystemType& type, int size, int scale) {
  if (size < 0 || size > 38) badSize(type, size);
  ref.prec = size == 0 ? 18 : size;
  ref.scale = scale < 0 ? 0 : scale;
  if (ref.scale > ref.prec) badSize(type, scale);
  ref.length = ref.prec <= 9 ? 5 : ref.prec <= 19 ? 9 : ref.prec <= 28 ? 13 : 17;
}

// time, datetime2 and datetimeoffset with a number of digits of the fraction.
void sizeFraction(TypeRef& ref, const SystemType& type, int digits) {
  if (digits < 0 || digits > 7) badSize(type, digits);
  ref.scale = digits;
  const int whole = ref.xtype == xtype::Time ? 8 : ref.xtype == xtype::DateTime2 ? 19 : 26;
  ref.prec = whole + (digits == 0 ? 0 : digits + 1);
  const int time = digits <= 2 ? 3 : digits <= 4 ? 4 : 5;
  ref.length = time + (ref.xtype == xtype::Time ? 0 : ref.xtype == xtype::DateTime2 ? 3 : 5);
}

void sizeCharacters(TypeRef& ref, const SystemType& type, int size, int bytesEach) {
  if (size == -1 && canBeMax(ref.xtype)) {
    ref.length = ref.prec = -1;
    return;
  }
  const int count = size == 0 ? 1 : size;
  if (count < 0 || count * bytesEach > 8000) badSize(type, size);
  ref.prec = count;
  ref.length = count * bytesEach;
}

struct Synonym {
  const char* name;
  const char* type;
};

constexpr Synonym synonyms[] = {
    {"integer", "int"},
    {"dec", "decimal"},
    {"rowversion", "timestamp"},
    {"double precision", "float"},
    {"character", "char"},
    {"char varying", "varchar"},
    {"character varying", "varchar"},
    {"binary varying", "varbinary"},
    {"national char", "nchar"},
    {"national character", "nchar"},
    {"national char varying", "nvarchar"},
    {"national character varying", "nvarchar"},
    {"national text", "ntext"},
};

const char* affinityOf(const TypeRef& type) {
  switch (type.dataType) {
    case DataType::Boolean:
    case DataType::Integer:
      return "INTEGER";
    case DataType::Double:
      return "REAL";
    case DataType::Binary:
    case DataType::Empty:
      return "BLOB";
    default:
      return "TEXT";
  }
}

const char* collationClause(DataType type) {
  switch (type) {
    case DataType::Decimal:
      return " COLLATE q_decimal";
    case DataType::Date:
      return " COLLATE q_date";
    case DataType::Guid:
      return " COLLATE q_guid";
    case DataType::Text:
    case DataType::Empty:
      return " COLLATE q_text";
    default:
      return "";
  }
}

std::string sizeText(const TypeRef& type) {
  switch (sizingOf(type.xtype)) {
    case Sizing::Characters:
    case Sizing::WideCharacters:
    case Sizing::Bytes:
      return "(" + std::to_string(type.prec) + ")";  // -1 for max: SQLite takes numbers only
    case Sizing::Decimal:
      return "(" + std::to_string(type.prec) + "," + std::to_string(type.scale) + ")";
    case Sizing::Fraction:
      return "(" + std::to_string(type.scale) + ")";
    default:
      return "";
  }
}

}  // namespace

Sizing sizingOf(int xtype) {
  switch (xtype) {
    case xtype::VarChar:
    case xtype::Char:
      return Sizing::Characters;
    case xtype::NVarChar:
    case xtype::NChar:
      return Sizing::WideCharacters;
    case xtype::VarBinary:
    case xtype::Binary:
      return Sizing::Bytes;
    case xtype::Decimal:
    case xtype::Numeric:
      return Sizing::Decimal;
    case xtype::Float:
      return Sizing::Float;
    case xtype::Time:
    case xtype::DateTime2:
    case xtype::DateTimeOffset:
      return Sizing::Fraction;
    default:
      return Sizing::None;
  }
}

void badSize(const SystemType& type, int size) {
  throw DataError(errorNumber::badSql,
                  "The size (" + std::to_string(size) + ") given to the type '" + type.name + "' is not allowed.",
                  "42000");
}

const std::vector<SystemType>& systemTypes() {
  static const std::vector<SystemType> types = {
      {"image", xtype::Image, xtype::Image, 16, 0, 0, DataType::Binary},
      {"text", xtype::Text, xtype::Text, 16, 0, 0, DataType::Text},
      {"uniqueidentifier", xtype::UniqueIdentifier, xtype::UniqueIdentifier, 16, 36, 0, DataType::Guid},
      {"date", xtype::Date, xtype::Date, 3, 10, 0, DataType::Date},
      {"time", xtype::Time, xtype::Time, 5, 16, 7, DataType::Date},
      {"datetime2", xtype::DateTime2, xtype::DateTime2, 8, 27, 7, DataType::Date},
      {"datetimeoffset", xtype::DateTimeOffset, xtype::DateTimeOffset, 10, 34, 7, DataType::Date},
      {"tinyint", xtype::TinyInt, xtype::TinyInt, 1, 3, 0, DataType::Integer},
      {"smallint", xtype::SmallInt, xtype::SmallInt, 2, 5, 0, DataType::Integer},
      {"int", xtype::Int, xtype::Int, 4, 10, 0, DataType::Integer},
      {"smalldatetime", xtype::SmallDateTime, xtype::SmallDateTime, 4, 16, 0, DataType::Date},
      {"real", xtype::Real, xtype::Real, 4, 24, 0, DataType::Double},
      {"money", xtype::Money, xtype::Money, 8, 19, 4, DataType::Decimal},
      {"datetime", xtype::DateTime, xtype::DateTime, 8, 23, 3, DataType::Date},
      {"float", xtype::Float, xtype::Float, 8, 53, 0, DataType::Double},
      {"sql_variant", xtype::SqlVariant, xtype::SqlVariant, 8016, 0, 0, DataType::Empty},
      {"ntext", xtype::NText, xtype::NText, 16, 0, 0, DataType::Text},
      {"bit", xtype::Bit, xtype::Bit, 1, 1, 0, DataType::Boolean},
      {"decimal", xtype::Decimal, xtype::Decimal, 17, 38, 38, DataType::Decimal},
      {"numeric", xtype::Numeric, xtype::Numeric, 17, 38, 38, DataType::Decimal},
      {"smallmoney", xtype::SmallMoney, xtype::SmallMoney, 4, 10, 4, DataType::Decimal},
      {"bigint", xtype::BigInt, xtype::BigInt, 8, 19, 0, DataType::Integer},
      {"hierarchyid", xtype::Clr, 128, 892, 0, 0, DataType::Binary},
      {"geometry", xtype::Clr, 129, -1, -1, 0, DataType::Binary},
      {"geography", xtype::Clr, 130, -1, -1, 0, DataType::Binary},
      {"varbinary", xtype::VarBinary, xtype::VarBinary, 8000, 8000, 0, DataType::Binary},
      {"varchar", xtype::VarChar, xtype::VarChar, 8000, 8000, 0, DataType::Text},
      {"binary", xtype::Binary, xtype::Binary, 8000, 8000, 0, DataType::Binary},
      {"char", xtype::Char, xtype::Char, 8000, 8000, 0, DataType::Text},
      {"timestamp", xtype::Timestamp, xtype::Timestamp, 8, 8, 0, DataType::Binary},
      {"nvarchar", xtype::NVarChar, xtype::NVarChar, 8000, 4000, 0, DataType::Text},
      {"nchar", xtype::NChar, xtype::NChar, 8000, 4000, 0, DataType::Text},
      {"xml", xtype::Xml, xtype::Xml, -1, -1, 0, DataType::Text},
      {"sysname", xtype::NVarChar, sysnameXusertype, 256, 128, 0, DataType::Text},
  };
  return types;
}

const SystemType* findSystemType(std::string_view name) {
  std::string lower = lowerCase(name);
  for (const Synonym& synonym : synonyms)
    if (lower == synonym.name) lower = synonym.type;
  const auto& types = systemTypes();
  const auto found =
      std::find_if(types.begin(), types.end(), [&](const SystemType& type) { return lower == type.name; });
  return found == types.end() ? nullptr : &*found;
}

TypeRef systemTypeRef(const SystemType& type, int size, int scale) {
  if (type.xtype == xtype::Float && size >= 1 && size <= 24) return systemTypeRef(*findSystemType("real"));
  TypeRef ref;
  ref.name = ref.baseName = type.name;
  ref.xtype = type.xtype;
  ref.xusertype = type.xusertype;
  ref.length = type.length;
  ref.prec = type.prec;
  ref.scale = type.scale;
  ref.dataType = type.dataType;
  if (type.xusertype == sysnameXusertype) {
    ref.baseName = "nvarchar";
    ref.aliasNullable = false;
    return ref;
  }
  switch (sizingOf(type.xtype)) {
    case Sizing::Characters:
    case Sizing::Bytes:
      sizeCharacters(ref, type, size, 1);
      break;
    case Sizing::WideCharacters:
      sizeCharacters(ref, type, size, 2);
      break;
    case Sizing::Decimal:
      sizeDecimal(ref, type, size, scale);
      break;
    case Sizing::Fraction:
      sizeFraction(ref, type, scale >= 0 ? scale : 7);
      break;
    case Sizing::Float:
      if (size < 0 || size > 53) badSize(type, size);
      break;
    case Sizing::None:
      break;
  }
  return ref;
}

std::string storageDeclaration(const TypeRef& type) {
  return std::string(affinityOf(type)) + " " + type.baseName + sizeText(type) + collationClause(type.dataType);
}

ColumnInfo columnFromDeclaration(std::string_view name, std::string_view declaration) {
  ColumnInfo column;
  column.name = name;
  const std::size_t blank = declaration.find(' ');
  if (blank == std::string_view::npos) return column;
  std::string_view type = declaration.substr(blank + 1);
  std::string_view sizes;
  if (const std::size_t bracket = type.find('('); bracket != std::string_view::npos) {
    sizes = type.substr(bracket + 1);
    type = type.substr(0, bracket);
  }
  const SystemType* system = findSystemType(trimBlanks(type));
  if (!system) return column;
  const auto number = [&sizes]() {
    int value = -1;
    const auto [end, error] = std::from_chars(sizes.data(), sizes.data() + sizes.size(), value);
    sizes.remove_prefix(error == std::errc() ? std::min<std::size_t>(end - sizes.data() + 1, sizes.size()) : 0);
    return value;
  };
  column.typeName = system->name;
  column.type = system->dataType;
  column.precision = system->prec;
  column.scale = system->scale;
  const Sizing sizing = sizingOf(system->xtype);
  if (sizes.empty() || sizing == Sizing::None) return column;
  if (sizing == Sizing::Fraction) {
    column.scale = number();
  } else {
    column.precision = number();
    if (sizing == Sizing::Decimal) column.scale = number();
  }
  return column;
}

}  // namespace qrel::tsql
