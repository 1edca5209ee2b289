#include "embedded/catalogue/sysViews.h"

namespace qrel::tsql {

namespace {

// Numbers of types in these queries are those of namespace xtype in types.h; views.cpp tells their lists. 1900000000 is
// firstTableTypeObject.
constexpr View views[] = {
    {"sys.databases", R"(select name, dbid as database_id, null as source_database_id, crdate as create_date,
  110 as compatibility_level, 'SQL_Latin1_General_CP1_CI_AS' as collation_name, 0 as user_access,
  'MULTI_USER' as user_access_desc, 0 as is_read_only, 0 as state, 'ONLINE' as state_desc, 3 as recovery_model,
  'SIMPLE' as recovery_model_desc, 1 as owner_sid, 0 as snapshot_isolation_state, 0 as is_read_committed_snapshot_on,
  0 as is_auto_close_on, 0 as is_auto_shrink_on, 1 as is_auto_create_stats_on, 1 as is_auto_update_stats_on,
  0 as is_auto_update_stats_async_on, 0 as is_ansi_null_default_on, 0 as is_ansi_nulls_on, 0 as is_ansi_padding_on,
  0 as is_ansi_warnings_on, 0 as is_arithabort_on, 0 as is_concat_null_yields_null_on, 0 as is_quoted_identifier_on,
  0 as is_recursive_triggers_on, 0 as is_fulltext_enabled, 0 as is_trustworthy_on, 0 as is_broker_enabled,
  0 as is_encrypted, 0 as is_cdc_enabled from sysdatabases)"},
    {"sys.objects", R"(select name, id as object_id, nullif(#o.principal_id#, 0) as principal_id,
  case when id < 1900000000 then schema_id else 4 end as schema_id, parent_obj as parent_object_id,
  xtype as type, case xtype when 'U' then 'USER_TABLE' when 'V' then 'VIEW' when 'P' then 'SQL_STORED_PROCEDURE'
  when 'FN' then 'SQL_SCALAR_FUNCTION' when 'IF' then 'SQL_INLINE_TABLE_VALUED_FUNCTION'
  when 'TF' then 'SQL_TABLE_VALUED_FUNCTION' when 'TR' then 'SQL_TRIGGER' when 'F' then 'FOREIGN_KEY_CONSTRAINT'
  when 'PK' then 'PRIMARY_KEY_CONSTRAINT' when 'UQ' then 'UNIQUE_CONSTRAINT' when 'C' then 'CHECK_CONSTRAINT'
  when 'D' then 'DEFAULT_CONSTRAINT' when 'SO' then 'SEQUENCE_OBJECT' when 'TT' then 'TYPE_TABLE'
  when 'SN' then 'SYNONYM' end collate q_text as type_desc, crdate as create_date, crdate as modify_date,
  0 as is_ms_shipped, 0 as is_published, 0 as is_schema_published from cat_objects o)"},
    {"sys.all_objects", "select * from \"sys.objects\""},
    {"sys.tables", R"(select o.*, #v.temporal_type# as temporal_type, case #v.temporal_type# when 2 then
  'SYSTEM_VERSIONED_TEMPORAL_TABLE' when 1 then 'HISTORY_TABLE' else 'NON_TEMPORAL_TABLE' end as temporal_type_desc,
  nullif(#v.history_table_id#, 0) as history_table_id, 1 - #v.ansi_nulls_off# as uses_ansi_nulls,
  #v.is_memory_optimized# as is_memory_optimized, #v.durability# as durability, case #v.durability# when 1 then
  'SCHEMA_ONLY' else 'SCHEMA_AND_DATA' end as durability_desc, #v.is_filetable# as is_filetable, #v.is_node# as is_node,
  #v.is_edge# as is_edge, #v.lock_escalation# as lock_escalation, case #v.lock_escalation# when 1 then 'DISABLE' when 2
  then 'AUTO' else 'TABLE' end as lock_escalation_desc, #v.lob_data_space_id# as lob_data_space_id,
  nullif(#v.filestream_data_space_id#, 0) as filestream_data_space_id, nullif(#v.history_retention_period#, 0)
  as history_retention_period, nullif(#v.history_retention_period_unit_desc|''#, '')
  as history_retention_period_unit_desc from "sys.objects" o where type = 'U')"},
    {"sys.views",
     R"(select o.*, 0 as is_replicated, 0 as has_replication_filter, #v.has_view_metadata# as has_opaque_metadata,
  0 as has_unchecked_assembly_data, #v.with_check_option# as with_check_option, 0 as is_date_correlation_view from "sys.objects" o
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
  case when xtype in (98,165,167,173,175,231,239) then 1 - #c.is_not_ansi_padded# else 0 end as is_ansi_padded, #c.is_rowguidcol# as is_rowguidcol, is_identity,
  coalesce(computed_text, '') <> '' as is_computed, #c.is_filestream# as is_filestream,
  cdefault as default_object_id, 0 as rule_object_id, #c.is_sparse# as is_sparse,
  #c.generated_always_type# as generated_always_type, #c.is_hidden# as is_hidden,
  #c.masking_function|''# <> '' as is_masked, #c.encryption|''# <> '' as is_encrypted,
  case #c.generated_always_type# when 1 then 'AS_ROW_START' when 2 then 'AS_ROW_END' else 'NOT_APPLICABLE' end
  as generated_always_type_desc, #c.is_column_set# as is_column_set from cat_columns c)"},
    {"sys.all_columns", "select * from \"sys.columns\""},
    {"sys.identity_columns", R"(select v.*, seed as seed_value, increment as increment_value, null as last_value,
  #c.is_not_for_replication# as is_not_for_replication from cat_columns c join "sys.columns" v
  on v.object_id = c.object_id and v.column_id = c.colid where c.is_identity)"},
    {"sys.computed_columns", R"(select v.*, computed_text as definition, 1 as uses_database_collation,
  #c.is_persisted# as is_persisted from cat_columns c join "sys.columns" v on v.object_id = c.object_id and
  v.column_id = c.colid where coalesce(computed_text, '') <> '')"},
    {"sys.masked_columns", R"(select object_id, name, colid as column_id, 1 as is_masked,
  #c.masking_function|''# as masking_function from cat_columns c where #c.masking_function|''# <> '')"},
    {"sys.schemas", R"(select name, id as schema_id, owner as principal_id from cat_schemas union all
  select column2, column1, column1 from (values (2, 'guest'), (3, 'INFORMATION_SCHEMA'), (4, 'sys')))"},
    {"sys.types", R"(select name, xtype as system_type_id, xusertype as user_type_id, case when xusertype < 257 then 4
  else uid end as schema_id, null as principal_id, length as max_length, case when xtype in (35,34,98,99,165,167,173,
  175,189,231,239,240,241,36) then 0 else xprec end as precision, coalesce(xscale, 0) as scale, null as collation_name,
  allownulls as is_nullable, xusertype > 256 as is_user_defined, 0 as is_assembly_type, 0 as is_table_type
  from systypes union all select name, xtype, xusertype, schema_id, null, length, 0, 0, null, 0, 1, 0, 1 from cat_types
  where table_object is not null)"},
    {"sys.table_types", R"(select t.name, t.xtype as system_type_id, t.xusertype as user_type_id, t.schema_id, null
  as principal_id, -1 as max_length, 0 as precision, 0 as scale, null as collation_name, 0 as is_nullable,
  1 as is_user_defined, 0 as is_assembly_type, 0 as default_object_id, 0 as rule_object_id, 1 as is_table_type,
  o.id as type_table_object_id, #o.is_memory_optimized# as is_memory_optimized from cat_types t
  join cat_objects o on o.id = t.table_object)"},
    {"sys.parameters", R"(select object_id, name, parameter_id, xtype as system_type_id, xusertype as user_type_id,
  length as max_length, case when xtype in (34,35,36,98,99,165,167,173,175,189,231,239,240,241,243) then 0 else prec end
  as precision, scale, is_output, 0 as is_cursor_ref, 0 as has_default_value, 0 as is_xml_document, null
  as default_value, 0 as xml_collection_id, is_readonly, 1 as is_nullable from cat_parameters)"},
    {"sys.indexes", R"(select object_id, name, indid as index_id, case kind when 'XM' then 3 when 'SP' then 4
  when 'CS' then case when indid = 1 then 5 else 6 end else case when #i.is_hash# then 7 when indid = 1 then 1 else 2 end
  end as type, case kind when 'XM' then 'XML' when 'SP' then 'SPATIAL' when 'CS' then
  case when indid = 1 then 'CLUSTERED COLUMNSTORE' else 'NONCLUSTERED COLUMNSTORE' end else case when #i.is_hash#
  then 'NONCLUSTERED HASH' when indid = 1 then 'CLUSTERED' else 'NONCLUSTERED' end end as type_desc, is_unique,
  #i.data_space|1# + 0 as data_space_id,
  #i.ignore_dup_key# as ignore_dup_key, kind = 'PK' as is_primary_key, kind = 'UQ' as is_unique_constraint,
  #i.fill_factor# as fill_factor, #i.is_padded# as is_padded, #i.is_disabled# as is_disabled, 0 as is_hypothetical,
  filter is not null as has_filter, filter as filter_definition, #i.allow_row_locks|1# + 0 as allow_row_locks,
  #i.allow_page_locks|1# + 0 as allow_page_locks, nullif(#i.compression_delay#, 0) as compression_delay, 0 as auto_created, 0 as suppress_dup_key_messages,
  #i.optimize_for_sequential_key# as optimize_for_sequential_key from cat_indexes i where kind <> 'ST' union all
  select id, null, 0, 0, 'HEAP', 0, #h.data_space|1# + 0, 0, 0, 0, 0, 0, 0, 0, 0, null, 1, 1, null, 0, 0, 0 from cat_objects o
  where xtype = 'U' and not exists (select 1 from cat_indexes i where i.object_id = o.id and i.indid = 1))"},
    {"sys.xml_indexes", R"(select x.*, nullif(#x.using_xml_index_id#, 0) as using_xml_index_id,
  nullif(#x.secondary_type|''#, '') as secondary_type, case #x.secondary_type|''# when 'P' then 'PATH' when 'V' then
  'VALUE' when 'R' then 'PROPERTY' end as secondary_type_desc, #x.using_xml_index_id# <> 0 as xml_index_type,
  case when #x.using_xml_index_id# then 'SECONDARY_XML' else 'PRIMARY_XML' end as xml_index_type_description
  from "sys.indexes" x where type = 3)"},
    {"sys.spatial_indexes", R"(select x.*, 1 + (#x.tessellation_scheme|''# like 'GEOGRAPHY%') as spatial_index_type,
  case when #x.tessellation_scheme|''# like 'GEOGRAPHY%' then 'GEOGRAPHY' else 'GEOMETRY' end
  as spatial_index_type_desc, #x.tessellation_scheme|''# as tessellation_scheme from "sys.indexes" x where type = 4)"},
    {"sys.spatial_index_tessellations",
     R"(select object_id, index_id, #x.tessellation_scheme|''# as tessellation_scheme,
  #x.bounding_box_xmin|null# + 0.0 as bounding_box_xmin, #x.bounding_box_ymin|null# + 0.0 as bounding_box_ymin,
  #x.bounding_box_xmax|null# + 0.0 as bounding_box_xmax, #x.bounding_box_ymax|null# + 0.0 as bounding_box_ymax,
  #x.level_1_grid_desc|null# as level_1_grid_desc, #x.level_2_grid_desc|null# as level_2_grid_desc,
  #x.level_3_grid_desc|null# as level_3_grid_desc, #x.level_4_grid_desc|null# as level_4_grid_desc,
  nullif(#x.cells_per_object#, 0) as cells_per_object from "sys.indexes" x where type = 4)"},
    {"sys.hash_indexes", R"(select x.*, #x.bucket_count# as bucket_count from "sys.indexes" x where type = 7)"},
    {"sys.stats", R"(select object_id, name, indid as stats_id, 0 as auto_created, kind = 'ST' as user_created,
  #i.no_recompute# as no_recompute, filter is not null as has_filter, filter as filter_definition, 0 as is_temporary,
  #i.is_incremental# as is_incremental from cat_indexes i where kind in ('PK', 'UQ', 'IX', 'CS', 'ST'))"},
    {"sys.stats_columns", R"(select k.object_id, k.indid as stats_id, k.ordinal as stats_column_id, k.colid as column_id
  from cat_indexkeys k join cat_indexes i on i.object_id = k.object_id and i.indid = k.indid
  where k.keyno > 0 or i.kind = 'ST')"},
    {"sys.data_spaces",
     R"(select name, id as data_space_id, kind as type, case kind when 'FG' then 'ROWS_FILEGROUP' else
  'PARTITION_SCHEME' end as type_desc, id = 1 as is_default, 0 as is_system from cat_entities
  where kind in ('FG', 'PS'))"},
    {"sys.filegroups",
     R"(select *, null as filegroup_guid, 0 as is_read_only from "sys.data_spaces" where type = 'FG')"},
    {"sys.partition_schemes", R"(select d.name, d.id as data_space_id, 'PS' as type, 'PARTITION_SCHEME' as type_desc,
  0 as is_default, 0 as is_system, #d.function_id# as function_id from cat_entities d where kind = 'PS')"},
    {"sys.partition_functions",
     R"(select name, id as function_id, 'R' as type, 'RANGE' as type_desc, 1 + (select count(*)
  from cat_properties p where p.object_id = f.id and p.class = 21 and p.minor_id > 0) as fanout,
  #f.boundary_value_on_right# as boundary_value_on_right, 0 as is_system from cat_entities f where kind = 'PF')"},
    {"sys.partition_parameters", R"(select id as function_id, 1 as parameter_id, #f.system_type_id# as system_type_id,
  #f.max_length# as max_length, #f.precision# as precision, #f.scale# as scale, null as collation_name,
  #f.user_type_id# as user_type_id from cat_entities f where kind = 'PF')"},
    {"sys.partition_range_values", R"(select f.id as function_id, p.minor_id as boundary_id, 1 as parameter_id, p.value
  from cat_entities f join cat_properties p on p.object_id = f.id and p.class = 21 and p.minor_id > 0
  where f.kind = 'PF')"},
    {"sys.destination_data_spaces", R"(select d.id as partition_scheme_id, p.minor_id as destination_id,
  cast(p.value as integer) as data_space_id from cat_entities d join cat_properties p on p.object_id = d.id
  and p.class = 20 and p.minor_id > 0 where d.kind = 'PS')"},
    {"sys.partitions", R"(select partition_id, object_id, index_id, partition_number, compression
  as data_compression_desc, case compression when 'ROW' then 1 when 'PAGE' then 2 when 'COLUMNSTORE' then 3 when
  'COLUMNSTORE_ARCHIVE' then 4 else 0 end as data_compression from (select (x.object_id * 1000000 + x.index_id) * 20000 +
  coalesce(n.boundary_id, 0) as partition_id, x.object_id, x.index_id, coalesce(n.boundary_id, 0) + 1 as partition_number,
  coalesce((select value from cat_properties p where p.object_id = x.object_id and p.class = 7 and
  p.minor_id = x.index_id and p.name = 'partition_compression_' || (coalesce(n.boundary_id, 0) + 1)),
  #x.data_compression_desc|case when x.type in (5, 6) then 'COLUMNSTORE' else 'NONE' end#) as compression
  from "sys.indexes" x left join (select ps.data_space_id,
  r.boundary_id from "sys.partition_schemes" ps join "sys.partition_range_values" r on r.function_id = ps.function_id
  union all select data_space_id, 0 from "sys.partition_schemes") n on n.data_space_id = x.data_space_id
  where x.type in (0, 1, 2, 5, 6)))"},
    {"sys.index_columns",
     R"(select k.object_id, k.indid as index_id, k.ordinal as index_column_id, k.colid as column_id,
  k.keyno as key_ordinal, #i.partition_column# = k.colid as partition_ordinal, k.descending as is_descending_key,
  k.keyno = 0 and i.kind not in ('XM', 'SP') as is_included_column
  from cat_indexkeys k join cat_indexes i on i.object_id = k.object_id and i.indid = k.indid where i.kind <> 'ST'
  union all select i.object_id, i.indid, 1 + (select count(*) from cat_indexkeys k where k.object_id = i.object_id and
  k.indid = i.indid), #i.partition_column#, 0, 1, 0, 0 from cat_indexes i where #i.partition_column# <> 0 and not exists
  (select 1 from cat_indexkeys k where k.object_id = i.object_id and k.indid = i.indid and
  k.colid = #i.partition_column#) union all select o.id, 0, 1, #h.partition_column#, 0, 1, 0, 0 from cat_objects o
  where o.xtype = 'U' and #h.partition_column# <> 0)"},
    {"sys.periods", R"(select 'SYSTEM_TIME' as name, 1 as period_type, 'SYSTEM_TIME_PERIOD' as period_type_desc,
  id as object_id, #o.period_start# as start_column_id, #o.period_end# as end_column_id from cat_objects o
  where xtype = 'U' and #o.period_start# <> 0)"},
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
    {"sys.database_principals",
     R"(select name, id as principal_id, type, case type when 'S' then 'SQL_USER' when 'U' then
  'WINDOWS_USER' when 'R' then 'DATABASE_ROLE' when 'A' then 'APPLICATION_ROLE' when 'C' then 'CERTIFICATE_MAPPED_USER'
  when 'K' then 'ASYMMETRIC_KEY_MAPPED_USER' when 'E' then 'EXTERNAL_USER' end collate q_text as type_desc,
  default_schema as default_schema_name, owner as owning_principal_id, id >= 16384 as is_fixed_role,
  authentication as authentication_type, case authentication when 1 then 'INSTANCE' when 2 then 'DATABASE' when 3 then
  'WINDOWS' when 4 then 'EXTERNAL' else 'NONE' end as authentication_type_desc from cat_principals
  union all select grantee, 1000000 + min(rowid), 'S', 'SQL_USER', 'dbo', null, 0, 1, 'INSTANCE' from cat_permissions p
  where not exists (select 1 from cat_principals c where c.name = p.grantee) group by grantee)"},
    {"sys.database_role_members",
     "select role_id as role_principal_id, member_id as member_principal_id from cat_members"},
    {"sys.database_permissions", R"(select class, case class when 0 then 'DATABASE' when 3 then 'SCHEMA' when 4 then
  'DATABASE_PRINCIPAL' when 6 then 'TYPE' when 23 then 'FULLTEXT_CATALOG' else
  'OBJECT_OR_COLUMN' end as class_desc, major_id, minor_id, (select principal_id from "sys.database_principals" g
  where g.name = p.grantee) as grantee_principal_id, coalesce((select id from cat_principals g
  where g.name = p.grantor), 1) as grantor_principal_id, type, permission_name, state,
  case state when 'G' then 'GRANT' when 'W' then 'GRANT_WITH_GRANT_OPTION' when 'D' then 'DENY' else 'REVOKE' end
  as state_desc from cat_permissions p)"},
    {"sys.fulltext_catalogs", R"(select id as fulltext_catalog_id, name, #g.is_default# as is_default,
  1 - #g.is_accent_insensitive# as is_accent_sensitivity_on, 1 as principal_id from cat_entities g
  where kind = 'FC')"},
    {"sys.fulltext_indexes", R"(select id as object_id, #o.fulltext_key# as unique_index_id, #o.fulltext_catalog#
  as fulltext_catalog_id, 1 - #o.fulltext_disabled# as is_enabled, #o.fulltext_tracking|'A'# as change_tracking_state,
  case #o.fulltext_tracking|'A'# when 'M' then 'MANUAL' when 'O' then 'OFF' else 'AUTO' end
  as change_tracking_state_desc, nullif(#o.fulltext_stoplist#, -1) as stoplist_id from cat_objects o
  where #o.fulltext_key# <> 0)"},
    {"sys.fulltext_index_columns", R"(select object_id, colid as column_id, nullif(#c.fulltext_type_column#, 0)
  as type_column_id, #c.fulltext_language|1033# + 0 as language_id, #c.fulltext_semantics# as statistical_semantics
  from cat_columns c where #c.fulltext_indexed#)"},
    {"sys.extended_properties", R"(select class, case class when 0 then 'DATABASE' when 2 then 'PARAMETER' when 3 then
  'SCHEMA' when 4 then 'DATABASE_PRINCIPAL' when 6 then 'TYPE' when 7 then 'INDEX' when 20 then 'DATASPACE' when 21 then
  'PARTITION_FUNCTION' when 8 then 'USER_DEFINED_TABLE_TYPE_COLUMN' else 'OBJECT_OR_COLUMN' end as class_desc, major_id,
  minor_id, name, value from cat_extended)"},
    {"INFORMATION_SCHEMA.SCHEMATA",
     R"(select q_db_name() as CATALOG_NAME, name as SCHEMA_NAME, coalesce((select name from cat_principals p
  where p.id = s.principal_id), 'dbo') as SCHEMA_OWNER from "sys.schemas" s)"},
    {"INFORMATION_SCHEMA.TABLE_CONSTRAINTS", R"(select q_db_name() as CONSTRAINT_CATALOG, s.name as CONSTRAINT_SCHEMA,
  o.name as CONSTRAINT_NAME, q_db_name() as TABLE_CATALOG, s.name as TABLE_SCHEMA, t.name as TABLE_NAME,
  case o.xtype when 'PK' then 'PRIMARY KEY' when 'UQ' then 'UNIQUE' when 'F' then 'FOREIGN KEY' else 'CHECK' end
  as CONSTRAINT_TYPE from cat_objects o join cat_schemas s on s.id = o.schema_id join cat_objects t
  on t.id = o.parent_obj where o.xtype in ('PK', 'UQ', 'F', 'C'))"},
};

}  // namespace

std::span<const View> sysViews() { return views; }

}  // namespace qrel::tsql
