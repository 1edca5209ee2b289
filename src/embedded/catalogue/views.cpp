// The views that catalogue queries see, over the stored catalogue.
#include <algorithm>
#include <string>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "embedded/catalogue/sysViews.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Numbers of types in these queries are those of namespace xtype in types.h. In the order of the lists below:
//   34 image, 35 text, 36 uniqueidentifier, 98 sql_variant, 99 ntext, 104 bit, 165 varbinary, 167 varchar, 173 binary,
//   175 char, 189 timestamp, 231 nvarchar, 239 nchar, 240 hierarchyid and its like, 241 xml: no scale (sys.columns and
//   sys.types: no precision either, but for bit);
//   35, 99, 167, 175, 231, 239: the texts, which have a collation (xml has none);
//   165, 167, 173, 175, 231, 239: what is declared with a size (isCharacter, isBinary);
//   48 tinyint, 52 smallint, 56 int, 59 real, 60 money, 62 float, 106 decimal, 108 numeric, 122 smallmoney, 127 bigint;
//   40 date, 41 time, 42 datetime2, 43 datetimeoffset, 58 smalldatetime, 61 datetime.
// Types of a database's own begin at 257, firstAliasType.

// Known to every version. 1900000000 is firstTableTypeObject. The plus keeps a join with the users from looking objects
// up by owner: the objects come first, in the order of their ids.
constexpr View oldViews[] = {
    {"sysobjects", R"(select name, id, xtype, case xtype when 'TT' then 4 else +schema_id end as uid,
  case when xtype = 'D' then (select colid from cat_columns c where c.object_id = o.parent_obj and c.cdefault = o.id)
       when xtype = 'U' then (select count(*) from cat_columns c where c.object_id = o.id) else 0 end as info,
  0 as status, 0 as base_schema_ver, 0 as replinfo, parent_obj, crdate, 0 as ftcatid, 0 as schema_ver,
  0 as stats_schema_ver, case when xtype in ('PK', 'UQ') then 'K' else xtype end
  as type, 0 as userstat, 0 as sysstat, 0 as indexdel, crdate as refdate, 0 as version, 0 as deltrig, 0 as instrig,
  0 as updtrig, 0 as seltrig, 0 as category, 0 as cache from cat_objects o where id < 1900000000 or xtype = 'TT')"},
    {"syscolumns", R"(select name, object_id as id, xtype, 0 as typestat, xusertype, length, prec as xprec,
  scale as xscale, colid, 0 as xoffset, 0 as bitpos, 0 as reserved, is_identity as colstat, cdefault, 0 as domain,
  0 as number, colid as colorder, null as autoval, 0 as offset, null as collationid, null as language,
  (case when is_identity then 128 else 0 end) | (case when nullable then 8 else 0 end) as status, xtype as type,
  xusertype as usertype, null as printfmt, nullif(prec, 0) as prec,
  case when xtype in (34,35,36,98,99,104,165,167,173,175,189,231,239,240,241) then null else scale end as scale,
  coalesce(computed_text, '') <> '' as iscomputed, 0 as isoutparam, nullable as isnullable,
  case when xtype in (35,99,167,175,231,239) then #c.collation_name|'SQL_Latin1_General_CP1_CI_AS'# end as collation
  from cat_columns c where object_id < 1900000000)"},
    {"syscomments", R"(select c.object_id as id, case when o.xtype in ('P', 'X') then 1 else 0 end as number, c.colid,
  c.text is null as status, c.text as ctext, 2 as texttype, 0 as language, c.text is null as encrypted,
  0 as compressed, c.text from cat_comments c join cat_objects o on o.id = c.object_id
  where c.object_id < 1900000000)"},
    {"sysindexes", R"(select object_id as id, (case when is_unique then 2 else 0 end) |
  (case when indid = 1 then 16 else 0 end) | (case kind when 'PK' then 2048 when 'UQ' then 4096 else 0 end) as status,
  indid, name, 0 as minlen, 1 as groupid, 0 as dpages, 0 as reserved, 0 as used, 0 as rowcnt, 0 as rows,
  0 as rowmodctr, 0 as origfillfactor, (select count(*) from cat_indexkeys k where k.object_id = i.object_id and
  k.indid = i.indid and k.keyno > 0) as keycnt from cat_indexes i where kind in ('PK', 'UQ', 'IX', 'CS')
  and object_id < 1900000000)"},
    {"sysindexkeys",
     "select object_id as id, indid, colid, keyno from cat_indexkeys where keyno > 0 and object_id < 1900000000"},
    {"sysforeignkeys", R"(select r.constid, r.fkeyid, r.rkeyid, k.fcolid as fkey, k.rcolid as rkey, k.keyno
  from cat_references r join cat_referencekeys k on k.constid = r.constid)"},
    {"sysconstraints", R"(select id as constid, parent_obj as id, coalesce((select colid from cat_columns c
  where c.object_id = o.parent_obj and c.cdefault = o.id), 0) as colid, 0 as spare1, case xtype when 'PK' then 1
  when 'UQ' then 2 when 'F' then 3 when 'C' then 4 else 5 end as status, 0 as actions, 0 as error from cat_objects o
  where xtype in ('PK', 'UQ', 'F', 'C', 'D') and id < 1900000000)"},
    {"sysusers", R"(select id as uid, 0 as status, name, 1 as hasdbaccess, 1 as islogin, 0 as isntname, 0 as isntgroup,
  1 as issqluser, 0 as issqlrole, 0 as isapprole, 0 as gid, 0 as altuid from cat_schemas union all
  select column1, 0, column2, 0, 1, 0, 0, 1, 0, 0, 0, 0 from (values (2, 'guest'), (3, 'INFORMATION_SCHEMA'),
  (4, 'sys')))"},
    {"sysdatabases", R"(select json_extract(value, '$[1]') collate q_text as name, json_extract(value, '$[0]') as dbid,
  0 as mode, 0 as status, 0 as status2, '1900-01-01' as crdate, '1900-01-01' as reserved, 0 as category,
  null as filename, 0 as version from json_each(q_databases()))"},
    {"INFORMATION_SCHEMA.TABLES", R"(select q_db_name() as TABLE_CATALOG, s.name as TABLE_SCHEMA, o.name as TABLE_NAME,
  case o.xtype when 'V' then 'VIEW' else 'BASE TABLE' end as TABLE_TYPE from cat_objects o
  join cat_schemas s on s.id = o.schema_id where o.xtype in ('U', 'V'))"},
    {"INFORMATION_SCHEMA.VIEWS", R"(select q_db_name() as TABLE_CATALOG, s.name as TABLE_SCHEMA, o.name as TABLE_NAME,
  (select text from cat_comments c where c.object_id = o.id and c.colid = 1) as VIEW_DEFINITION,
  'NONE' as CHECK_OPTION, 'NO' as IS_UPDATABLE from cat_objects o join cat_schemas s on s.id = o.schema_id
  where o.xtype = 'V')"},
    {"INFORMATION_SCHEMA.ROUTINES", R"(select q_db_name() as SPECIFIC_CATALOG, s.name as SPECIFIC_SCHEMA,
  o.name as SPECIFIC_NAME, q_db_name() as ROUTINE_CATALOG, s.name as ROUTINE_SCHEMA, o.name as ROUTINE_NAME,
  case o.xtype when 'P' then 'PROCEDURE' else 'FUNCTION' end as ROUTINE_TYPE,
  (select text from cat_comments c where c.object_id = o.id and c.colid = 1) as ROUTINE_DEFINITION,
  o.crdate as CREATED, o.crdate as LAST_ALTERED from cat_objects o join cat_schemas s on s.id = o.schema_id
  where o.xtype in ('P', 'FN', 'IF', 'TF'))"},
    {"INFORMATION_SCHEMA.COLUMNS", R"(select q_db_name() as TABLE_CATALOG, s.name as TABLE_SCHEMA, o.name as TABLE_NAME,
  c.name as COLUMN_NAME, c.colid as ORDINAL_POSITION, (select text from cat_comments d where d.object_id = c.cdefault
  and d.colid = 1) as COLUMN_DEFAULT, case when c.nullable then 'YES' else 'NO' end as IS_NULLABLE,
  t.name as DATA_TYPE, case when c.xtype in (165,167,173,175,231,239) then c.prec end as CHARACTER_MAXIMUM_LENGTH,
  case when c.xtype in (165,167,173,175,231,239) then c.length end as CHARACTER_OCTET_LENGTH,
  case when c.xtype in (48,52,56,59,60,62,106,108,122,127) then c.prec end as NUMERIC_PRECISION,
  case when c.xtype in (48,52,56,60,106,108,122,127) then c.scale end as NUMERIC_SCALE,
  case when c.xtype in (40,41,42,43,58,61) then c.scale end as DATETIME_PRECISION,
  case when c.xtype in (35,99,167,175,231,239) then #c.collation_name|'SQL_Latin1_General_CP1_CI_AS'# end
  as COLLATION_NAME
  from cat_columns c join cat_objects o on o.id = c.object_id join cat_schemas s on s.id = o.schema_id
  join systypes t on t.xtype = c.xtype and t.xusertype = case when c.xtype = 240 then c.xusertype else c.xtype end
  where o.xtype in ('U', 'V'))"},
};

// The sixteen column pairs of sysreferences are found by number.
std::string referencesQuery() {
  std::string sql =
      "select constid, fkeyid, rkeyid, 0 as rkeyindid, (select count(*) from cat_referencekeys k where k.constid = "
      "r.constid) as keycnt, 0 as fkeydbid, 0 as rkeydbid";
  for (const char side : {'f', 'r'}) {
    for (int i = 1; i <= 16; ++i) {
      const std::string number = std::to_string(i);
      sql += ", coalesce((select ";
      sql += side;
      sql += "colid from cat_referencekeys k where k.constid = r.constid and k.keyno = " + number + "), 0) as ";
      sql += side;
      sql += "key" + number;
    }
  }
  return sql + " from cat_references r";
}

bool existsIn(const SystemType& type, int serverMajor) {
  switch (type.xtype) {
    case xtype::Xml:
      return serverMajor >= 9;
    case xtype::Date:
    case xtype::Time:
    case xtype::DateTime2:
    case xtype::DateTimeOffset:
    case xtype::Clr:
      return serverMajor >= 10;
    default:
      return true;
  }
}

std::string typesQuery(int serverMajor) {
  std::string rows;
  for (const SystemType& type : systemTypes()) {
    if (!existsIn(type, serverMajor)) continue;
    rows += rows.empty() ? "('" : ", ('";
    rows += type.name;
    rows += "'";
    for (const int number : {type.xtype, type.xusertype, type.length, type.prec, type.scale})
      rows += ", " + std::to_string(number);
    rows += type.xusertype == sysnameXusertype ? ", 0)" : ", 1)";
  }
  return "select column1 collate q_text as name, column2 as xtype, 0 as status, column3 as xusertype, column4 as "
         "length, "
         "column5 as xprec, column6 as xscale, 0 as tdefault, 0 as domain, 4 as uid, column3 as usertype, 0 as "
         "variable, "
         "column7 as allownulls, column2 as type, null as printfmt, nullif(column5, 0) as prec, column6 as scale, "
         "null as collation from (values " +
         rows +
         ") union all select name, xtype, 0, xusertype, length, prec, scale, 0, 0, schema_id, xusertype, 0, nullable, "
         "xtype, null, nullif(prec, 0), scale, null from cat_types where table_object is null";
}

std::vector<std::string_view> viewNames(int serverMajor) {
  std::vector<std::string_view> names = {"sysreferences", "systypes"};
  for (const View& view : oldViews) names.emplace_back(view.name);
  if (serverMajor >= 9)
    for (const View& view : sysViews()) names.emplace_back(view.name);
  return names;
}

// Whose property is meant, by the letter of the row's alias.
struct Owner {
  char letter;
  const char* condition;
};
constexpr Owner owners[] = {
    {'c', "c.object_id and p.class = 1 and p.minor_id = c.colid"},
    {'i', "i.object_id and p.class = 7 and p.minor_id = i.indid"},
    {'x', "x.object_id and p.class = 7 and p.minor_id = x.index_id"},
    {'h', "o.id and p.class = 7 and p.minor_id = 0"},
    {'o', "o.id and p.class = 0 and p.minor_id = 0"},
    {'v', "o.object_id and p.class = 0 and p.minor_id = 0"},
    {'d', "d.id and p.class = 20 and p.minor_id = 0"},
    {'f', "f.id and p.class = 21 and p.minor_id = 0"},
    {'g', "g.id and p.class = 23 and p.minor_id = 0"},
};

// What "#c.name#" or "#c.name|default#" stands for.
std::string propertyQuery(std::string_view wanted) {
  const std::string_view name = wanted.substr(2, wanted.find('|') - 2);
  std::string owner = "p.object_id = ";
  for (const Owner& each : owners)
    if (each.letter == wanted.front()) owner += each.condition;
  const std::size_t bar = wanted.find('|');
  const bool number = bar == std::string_view::npos;
  return std::string("coalesce((select ") + (number ? "cast(p.value as integer)" : "p.value") +
         " from cat_properties p where " + owner + " and p.name = '" + std::string(name) + "'), " +
         (number ? "0" : std::string(wanted.substr(bar + 1))) + ")";
}

std::string withProperties(std::string_view query) {
  std::string sql;
  for (std::size_t at; (at = query.find('#')) != std::string_view::npos;) {
    const std::size_t end = query.find('#', at + 1);
    sql += query.substr(0, at);
    sql += propertyQuery(query.substr(at + 1, end - at - 1));
    query.remove_prefix(end + 1);
  }
  return sql += query;
}

void append(std::string& sql, std::string_view name, std::string_view query) {
  sql += "create temp view \"";
  sql += name;
  sql += "\" as ";
  sql += withProperties(query);
  sql += ";\n";
}

}  // namespace

void createCatalogueViews(sqlite::Database& database, int serverMajor) {
  std::string sql = "begin;\n";
  append(sql, "sysreferences", referencesQuery());
  append(sql, "systypes", typesQuery(serverMajor));
  for (const View& view : oldViews) append(sql, view.name, view.query);
  if (serverMajor >= 9)
    for (const View& view : sysViews()) append(sql, view.name, view.query);
  database.execute(sql + "commit");
}

std::string catalogueViewName(std::string_view schema, std::string_view name, int serverMajor) {
  std::string wanted(name);
  if (equalNoCase(schema, "INFORMATION_SCHEMA") ||
      (equalNoCase(schema, "sys") && !equalNoCase(name.substr(0, 3), "sys")))
    wanted = std::string(schema) + "." + wanted;
  else if (equalNoCase(schema, "sys") ? serverMajor < 9 : !schema.empty() && !equalNoCase(schema, "dbo"))
    return {};
  for (const std::string_view known : viewNames(serverMajor))
    if (equalNoCase(known, wanted)) return std::string(known);
  return {};
}

}  // namespace qrel::tsql
