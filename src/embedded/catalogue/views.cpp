// The views that catalogue queries see, over the stored catalogue.
#include <algorithm>
#include <string>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

struct View {
  const char* name;
  const char* query;
};

// Numbers of types in these queries are those of namespace xtype in types.h. In the order of the lists below:
//   34 image, 35 text, 36 uniqueidentifier, 98 sql_variant, 99 ntext, 104 bit, 165 varbinary, 167 varchar, 173 binary,
//   175 char, 189 timestamp, 231 nvarchar, 239 nchar, 240 hierarchyid and its like, 241 xml: no scale (sys.columns and
//   sys.types: no precision either, but for bit);
//   35, 99, 167, 175, 231, 239: the texts, which have a collation (xml has none);
//   165, 167, 173, 175, 231, 239: what is declared with a size (isCharacter, isBinary);
//   48 tinyint, 52 smallint, 56 int, 59 real, 60 money, 62 float, 106 decimal, 108 numeric, 122 smallmoney, 127 bigint;
// "#c.name#" in a query is the number of a property of column c, "#i.name#" of index i, "#o.name#" of object o (of
// cat_objects) and "#v.name#" of object o (of sys.objects), 0 where there is none; "#c.name|default#" is its text.
//   40 date, 41 time, 42 datetime2, 43 datetimeoffset, 58 smalldatetime, 61 datetime.
// Types of a database's own begin at 257, firstAliasType.

// Known to every version. The plus keeps a join with the users from looking objects up by owner: the objects come
// first, in the order of their ids.
constexpr View oldViews[] = {
    {"sysobjects", R"(select name, id, xtype, +schema_id as uid,
  case when xtype = 'D' then (select colid from cat_columns c where c.object_id = o.parent_obj and c.cdefault = o.id)
       when xtype = 'U' then (select count(*) from cat_columns c where c.object_id = o.id) else 0 end as info,
  0 as status, 0 as base_schema_ver, 0 as replinfo, parent_obj, crdate, 0 as ftcatid, 0 as schema_ver,
  0 as stats_schema_ver, case when xtype in ('PK', 'UQ') then 'K' else xtype end
  as type, 0 as userstat, 0 as sysstat, 0 as indexdel, crdate as refdate, 0 as version, 0 as deltrig, 0 as instrig,
  0 as updtrig, 0 as seltrig, 0 as category, 0 as cache from cat_objects o)"},
    {"syscolumns", R"(select name, object_id as id, xtype, 0 as typestat, xusertype, length, prec as xprec,
  scale as xscale, colid, 0 as xoffset, 0 as bitpos, 0 as reserved, is_identity as colstat, cdefault, 0 as domain,
  0 as number, colid as colorder, null as autoval, 0 as offset, null as collationid, null as language,
  (case when is_identity then 128 else 0 end) | (case when nullable then 8 else 0 end) as status, xtype as type,
  xusertype as usertype, null as printfmt, nullif(prec, 0) as prec,
  case when xtype in (34,35,36,98,99,104,165,167,173,175,189,231,239,240,241) then null else scale end as scale,
  coalesce(computed_text, '') <> '' as iscomputed, 0 as isoutparam, nullable as isnullable,
  case when xtype in (35,99,167,175,231,239) then #c.collation_name|'SQL_Latin1_General_CP1_CI_AS'# end as collation
  from cat_columns c)"},
    {"syscomments", R"(select c.object_id as id, case when o.xtype in ('P', 'X') then 1 else 0 end as number, c.colid,
  c.text is null as status, c.text as ctext, 2 as texttype, 0 as language, c.text is null as encrypted,
  0 as compressed, c.text from cat_comments c join cat_objects o on o.id = c.object_id)"},
    {"sysindexes", R"(select object_id as id, (case when is_unique then 2 else 0 end) |
  (case when indid = 1 then 16 else 0 end) | (case kind when 'PK' then 2048 when 'UQ' then 4096 else 0 end) as status,
  indid, name, 0 as minlen, 1 as groupid, 0 as dpages, 0 as reserved, 0 as used, 0 as rowcnt, 0 as rows,
  0 as rowmodctr, 0 as origfillfactor, (select count(*) from cat_indexkeys k where k.object_id = i.object_id and
  k.indid = i.indid and k.keyno > 0) as keycnt from cat_indexes i)"},
    {"sysindexkeys", "select object_id as id, indid, colid, keyno from cat_indexkeys where keyno > 0"},
    {"sysforeignkeys", R"(select r.constid, r.fkeyid, r.rkeyid, k.fcolid as fkey, k.rcolid as rkey, k.keyno
  from cat_references r join cat_referencekeys k on k.constid = r.constid)"},
    {"sysconstraints", R"(select id as constid, parent_obj as id, coalesce((select colid from cat_columns c
  where c.object_id = o.parent_obj and c.cdefault = o.id), 0) as colid, 0 as spare1, case xtype when 'PK' then 1
  when 'UQ' then 2 when 'F' then 3 when 'C' then 4 else 5 end as status, 0 as actions, 0 as error from cat_objects o
  where xtype in ('PK', 'UQ', 'F', 'C', 'D'))"},
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

constexpr View newViews[] = {
    {"sys.databases", R"(select name, dbid as database_id, null as source_database_id, crdate as create_date,
  110 as compatibility_level, 'SQL_Latin1_General_CP1_CI_AS' as collation_name, 0 as user_access,
  'MULTI_USER' as user_access_desc, 0 as is_read_only, 0 as state, 'ONLINE' as state_desc, 3 as recovery_model,
  'SIMPLE' as recovery_model_desc, 1 as owner_sid, 0 as snapshot_isolation_state, 0 as is_read_committed_snapshot_on,
  0 as is_auto_close_on, 0 as is_auto_shrink_on, 1 as is_auto_create_stats_on, 1 as is_auto_update_stats_on,
  0 as is_auto_update_stats_async_on, 0 as is_ansi_null_default_on, 0 as is_ansi_nulls_on, 0 as is_ansi_padding_on,
  0 as is_ansi_warnings_on, 0 as is_arithabort_on, 0 as is_concat_null_yields_null_on, 0 as is_quoted_identifier_on,
  0 as is_recursive_triggers_on, 0 as is_fulltext_enabled, 0 as is_trustworthy_on, 0 as is_broker_enabled,
  0 as is_encrypted, 0 as is_cdc_enabled from sysdatabases)"},
    {"sys.objects", R"(select name, id as object_id, null as principal_id, schema_id, parent_obj as parent_object_id,
  xtype as type, case xtype when 'U' then 'USER_TABLE' when 'V' then 'VIEW' when 'P' then 'SQL_STORED_PROCEDURE'
  when 'FN' then 'SQL_SCALAR_FUNCTION' when 'IF' then 'SQL_INLINE_TABLE_VALUED_FUNCTION'
  when 'TF' then 'SQL_TABLE_VALUED_FUNCTION' when 'TR' then 'SQL_TRIGGER' when 'F' then 'FOREIGN_KEY_CONSTRAINT'
  when 'PK' then 'PRIMARY_KEY_CONSTRAINT' when 'UQ' then 'UNIQUE_CONSTRAINT' when 'C' then 'CHECK_CONSTRAINT'
  when 'D' then 'DEFAULT_CONSTRAINT' when 'SO' then 'SEQUENCE_OBJECT' when 'TT' then 'TYPE_TABLE'
  when 'SN' then 'SYNONYM' end collate q_text as type_desc, crdate as create_date, crdate as modify_date,
  0 as is_ms_shipped, 0 as is_published, 0 as is_schema_published from cat_objects)"},
    {"sys.all_objects", "select * from \"sys.objects\""},
    {"sys.tables", R"(select o.*, #v.temporal_type# as temporal_type, case #v.temporal_type# when 2 then
  'SYSTEM_VERSIONED_TEMPORAL_TABLE' when 1 then 'HISTORY_TABLE' else 'NON_TEMPORAL_TABLE' end as temporal_type_desc,
  nullif(#v.history_table_id#, 0) as history_table_id, 1 as uses_ansi_nulls, 0 as is_memory_optimized
  from "sys.objects" o where type = 'U')"},
    {"sys.views", R"(select o.*, 0 as is_replicated, 0 as has_replication_filter, 0 as has_opaque_metadata,
  0 as has_unchecked_assembly_data, 0 as with_check_option, 0 as is_date_correlation_view from "sys.objects" o
  where type = 'V')"},
    {"sys.procedures", "select * from \"sys.objects\" where type = 'P'"},
    {"sys.sequences",
     R"(select o.*, #v.start_value# as start_value, s.increment, #v.minimum_value|-9223372036854775808# as minimum_value,
  #v.maximum_value|9223372036854775807# as maximum_value, #v.is_cycling# as is_cycling, 1 - #v.is_not_cached#
  as is_cached, nullif(#v.cache_size#, 0) as cache_size, #v.type_name|'bigint'# as type_name, s.next as current_value
  from "sys.objects" o join cat_sequences s on s.object_id = o.object_id where type = 'SO')"},
    {"sys.synonyms", R"(select o.*, #v.base_object_name|''# as base_object_name from "sys.objects" o
  where type = 'SN')"},
    {"sys.triggers", R"(select name, object_id, 1 as parent_class, 'OBJECT_OR_COLUMN' as parent_class_desc,
  parent_object_id as parent_id, type, type_desc, create_date, modify_date, 0 as is_ms_shipped,
  #v.is_disabled# as is_disabled, #v.is_not_for_replication# as is_not_for_replication,
  #v.is_instead_of_trigger# as is_instead_of_trigger from "sys.objects" o where type = 'TR')"},
    {"sys.trigger_events", R"(select o.id as object_id, e.column1 as type, e.column2 as type_desc,
  exists (select 1 from cat_properties p where p.object_id = o.id and p.name = 'first_on_' || lower(e.column2))
  as is_first, exists (select 1 from cat_properties p where p.object_id = o.id and p.name = 'last_on_' ||
  lower(e.column2)) as is_last, null as event_group_type, null as event_group_type_desc, 1 as is_trigger_event
  from cat_objects o join (values (1, 'INSERT'), (2, 'UPDATE'), (3, 'DELETE')) e where o.xtype = 'TR' and
  exists (select 1 from cat_properties p where p.object_id = o.id and p.class = 0 and
  p.name = 'on_' || lower(e.column2)))"},
    {"sys.columns", R"(select object_id, name, colid as column_id, xtype as system_type_id, xusertype as user_type_id,
  length as max_length, case when xtype in (35,34,98,99,165,167,173,175,189,231,239,240,241,36) then 0 else prec end
  as precision, coalesce(scale, 0) as scale, case when xtype in (35,99,167,175,231,239) then
  #c.collation_name|'SQL_Latin1_General_CP1_CI_AS'# end as collation_name, nullable as is_nullable,
  1 - #c.is_not_ansi_padded# as is_ansi_padded, #c.is_rowguidcol# as is_rowguidcol, is_identity,
  coalesce(computed_text, '') <> '' as is_computed, #c.is_filestream# as is_filestream,
  cdefault as default_object_id, 0 as rule_object_id, #c.is_sparse# as is_sparse,
  #c.generated_always_type# as generated_always_type, #c.is_hidden# as is_hidden,
  #c.masking_function|''# <> '' as is_masked, #c.encryption|''# <> '' as is_encrypted from cat_columns c)"},
    {"sys.all_columns", "select * from \"sys.columns\""},
    {"sys.identity_columns", R"(select object_id, name, colid as column_id, xtype as system_type_id,
  xusertype as user_type_id, seed as seed_value, increment as increment_value,
  #c.is_not_for_replication# as is_not_for_replication from cat_columns c where is_identity)"},
    {"sys.computed_columns", R"(select object_id, name, colid as column_id, xtype as system_type_id,
  xusertype as user_type_id, nullable as is_nullable, computed_text as definition, #c.is_persisted# as is_persisted
  from cat_columns c where coalesce(computed_text, '') <> '')"},
    {"sys.masked_columns", R"(select object_id, name, colid as column_id, 1 as is_masked,
  #c.masking_function|''# as masking_function from cat_columns c where #c.masking_function|''# <> '')"},
    {"sys.schemas", R"(select name, id as schema_id, 1 as principal_id from cat_schemas union all
  select column2, column1, column1 from (values (2, 'guest'), (3, 'INFORMATION_SCHEMA'), (4, 'sys')))"},
    {"sys.types", R"(select name, xtype as system_type_id, xusertype as user_type_id, case when xusertype < 257 then 4
  else uid end as schema_id, null as principal_id, length as max_length, case when xtype in (35,34,98,99,165,167,173,
  175,189,231,239,240,241,36) then 0 else xprec end as precision, coalesce(xscale, 0) as scale, null as collation_name,
  allownulls as is_nullable, xusertype > 256 as is_user_defined, 0 as is_assembly_type, 0 as is_table_type
  from systypes)"},
    {"sys.indexes", R"(select object_id, name, indid as index_id, case when indid = 1 then 1 else 2 end as type,
  case when indid = 1 then 'CLUSTERED' else 'NONCLUSTERED' end as type_desc, is_unique, 1 as data_space_id,
  #i.ignore_dup_key# as ignore_dup_key, kind = 'PK' as is_primary_key, kind = 'UQ' as is_unique_constraint,
  #i.fill_factor# as fill_factor, #i.is_padded# as is_padded, #i.is_disabled# as is_disabled, 0 as is_hypothetical,
  filter is not null as has_filter, filter as filter_definition, #i.allow_row_locks|1# + 0 as allow_row_locks,
  #i.allow_page_locks|1# + 0 as allow_page_locks,
  #i.optimize_for_sequential_key# as optimize_for_sequential_key from cat_indexes i union all
  select id, null, 0, 0, 'HEAP', 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, null, 1, 1, 0 from cat_objects o where xtype = 'U'
  and not exists
  (select 1 from cat_indexes i where i.object_id = o.id and i.indid = 1))"},
    {"sys.stats", R"(select object_id, name, indid as stats_id, 0 as auto_created, 0 as user_created,
  #i.no_recompute# as no_recompute, filter is not null as has_filter, filter as filter_definition
  from cat_indexes i)"},
    {"sys.partitions", R"(select object_id * 8 + indid as partition_id, object_id, indid as index_id,
  1 as partition_number, #i.data_compression_desc|'NONE'# as data_compression_desc, case
  #i.data_compression_desc|'NONE'# when 'ROW' then 1 when 'PAGE' then 2 when 'COLUMNSTORE' then 3 else 0 end
  as data_compression from cat_indexes i)"},
    {"sys.index_columns", R"(select object_id, indid as index_id, ordinal as index_column_id, colid as column_id,
  keyno as key_ordinal, 0 as partition_ordinal, descending as is_descending_key, keyno = 0 as is_included_column
  from cat_indexkeys)"},
    {"sys.foreign_keys", R"(select o.name, o.object_id, o.schema_id, o.parent_object_id, o.type, o.type_desc,
  o.create_date, o.modify_date, r.rkeyid as referenced_object_id, #v.is_disabled# as is_disabled,
  #v.is_not_trusted# as is_not_trusted, #v.is_not_for_replication# as is_not_for_replication,
  #v.delete_referential_action# as delete_referential_action, case #v.delete_referential_action# when 1 then 'CASCADE'
  when 2 then 'SET_NULL' when 3 then 'SET_DEFAULT' else 'NO_ACTION' end as delete_referential_action_desc,
  #v.update_referential_action# as update_referential_action, case #v.update_referential_action# when 1 then 'CASCADE'
  when 2 then 'SET_NULL' when 3 then 'SET_DEFAULT' else 'NO_ACTION' end as update_referential_action_desc,
  #v.is_system_named# as is_system_named from "sys.objects" o
  join cat_references r on r.constid = o.object_id)"},
    {"sys.foreign_key_columns", R"(select r.constid as constraint_object_id, k.keyno as constraint_column_id,
  r.fkeyid as parent_object_id, k.fcolid as parent_column_id, r.rkeyid as referenced_object_id,
  k.rcolid as referenced_column_id from cat_references r join cat_referencekeys k on k.constid = r.constid)"},
    {"sys.default_constraints", R"(select o.*, (select colid from cat_columns c where c.object_id = o.parent_object_id
  and c.cdefault = o.object_id) as parent_column_id, (select text from cat_comments t where t.object_id = o.object_id
  and t.colid = 1) as definition, #v.is_system_named# as is_system_named from "sys.objects" o where o.type = 'D')"},
    {"sys.check_constraints", R"(select o.*, #v.parent_column_id# as parent_column_id, (select text from cat_comments t
  where t.object_id = o.object_id and t.colid = 1) as definition, #v.is_disabled# as is_disabled,
  #v.is_not_trusted# as is_not_trusted, #v.is_not_for_replication# as is_not_for_replication,
  #v.is_system_named# as is_system_named from "sys.objects" o where o.type = 'C')"},
    {"sys.key_constraints", R"(select o.*, i.indid as unique_index_id, #v.is_system_named# as is_system_named
  from "sys.objects" o
  join cat_indexes i on i.constraint_id = o.object_id where o.type in ('PK', 'UQ'))"},
    {"sys.sql_modules", R"(select id as object_id, (select group_concat(text, '') from (select text from cat_comments c
  where c.object_id = o.id order by c.colid)) as definition, 1 - #o.ansi_nulls_off# as uses_ansi_nulls,
  1 - #o.quoted_identifier_off# as uses_quoted_identifier, #o.is_schema_bound# as is_schema_bound,
  0 as uses_database_collation, #o.is_recompiled# as is_recompiled, #o.null_on_null_input# as null_on_null_input,
  nullif(#o.execute_as|''#, '') as execute_as, #o.uses_native_compilation# as uses_native_compilation
  from cat_objects o where xtype in ('P', 'V', 'FN', 'IF', 'TF', 'TR'))"},
    {"sys.database_principals", R"(select column2 collate q_text as name, column1 as principal_id, column3 as type,
  column4 as type_desc from (values (0, 'public', 'R', 'DATABASE_ROLE'), (1, 'dbo', 'S', 'SQL_USER'),
  (2, 'guest', 'S', 'SQL_USER'), (3, 'INFORMATION_SCHEMA', 'S', 'SQL_USER'), (4, 'sys', 'S', 'SQL_USER'))
  union all select grantee, 1000 + min(rowid), 'S', 'SQL_USER' from cat_permissions
  where grantee not in ('public', 'dbo', 'guest') group by grantee)"},
    {"sys.database_permissions", R"(select class, case class when 0 then 'DATABASE' when 3 then 'SCHEMA' else
  'OBJECT_OR_COLUMN' end as class_desc, major_id, minor_id, (select principal_id from "sys.database_principals" g
  where g.name = p.grantee) as grantee_principal_id, 1 as grantor_principal_id, type, permission_name, state,
  case state when 'G' then 'GRANT' when 'W' then 'GRANT_WITH_GRANT_OPTION' when 'D' then 'DENY' else 'REVOKE' end
  as state_desc from cat_permissions p)"},
    {"sys.fulltext_catalogs", "select null as fulltext_catalog_id, null as name where 0"},
    {"sys.fulltext_indexes", "select null as object_id, null as unique_index_id where 0"},
    {"sys.extended_properties",
     "select null as class, null as major_id, null as minor_id, null as name, null as value where 0"},
    {"INFORMATION_SCHEMA.SCHEMATA", R"(select q_db_name() as CATALOG_NAME, name as SCHEMA_NAME, 'dbo' as SCHEMA_OWNER
  from "sys.schemas")"},
    {"INFORMATION_SCHEMA.TABLE_CONSTRAINTS", R"(select q_db_name() as CONSTRAINT_CATALOG, s.name as CONSTRAINT_SCHEMA,
  o.name as CONSTRAINT_NAME, q_db_name() as TABLE_CATALOG, s.name as TABLE_SCHEMA, t.name as TABLE_NAME,
  case o.xtype when 'PK' then 'PRIMARY KEY' when 'UQ' then 'UNIQUE' when 'F' then 'FOREIGN KEY' else 'CHECK' end
  as CONSTRAINT_TYPE from cat_objects o join cat_schemas s on s.id = o.schema_id join cat_objects t
  on t.id = o.parent_obj where o.xtype in ('PK', 'UQ', 'F', 'C'))"},
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
         "xtype, null, nullif(prec, 0), scale, null from cat_types";
}

std::vector<std::string_view> viewNames(int serverMajor) {
  std::vector<std::string_view> names = {"sysreferences", "systypes"};
  for (const View& view : oldViews) names.emplace_back(view.name);
  if (serverMajor >= 9)
    for (const View& view : newViews) names.emplace_back(view.name);
  return names;
}

// What "#c.name#" or "#c.name|default#" stands for.
std::string propertyQuery(std::string_view wanted) {
  const std::string_view name = wanted.substr(2, wanted.find('|') - 2);
  std::string owner = "p.object_id = ";
  switch (wanted.front()) {
    case 'c':
      owner += "c.object_id and p.class = 1 and p.minor_id = c.colid";
      break;
    case 'i':
      owner += "i.object_id and p.class = 7 and p.minor_id = i.indid";
      break;
    case 'o':
      owner += "o.id and p.class = 0 and p.minor_id = 0";
      break;
    default:
      owner += "o.object_id and p.class = 0 and p.minor_id = 0";
  }
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
    for (const View& view : newViews) append(sql, view.name, view.query);
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
