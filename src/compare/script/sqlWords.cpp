#include "compare/script/sqlWords.h"

#include <string_view>
#include <unordered_set>

#include "platform/text.h"

namespace qrel {

namespace {

using WordSet = std::unordered_set<std::string>;

WordSet wordsOf(std::string_view text) {
  WordSet words;
  for (std::string& word : splitAt(text, ' '))
    if (!word.empty()) words.insert(std::move(word));
  return words;
}

constexpr std::string_view functions =
    "abs acos app_name applock_mode applock_test approx_count_distinct approx_percentile_cont approx_percentile_disc "
    "ascii asin assemblyproperty asymkey_id atan atn2 avg base64_decode base64_encode binary_checksum bit_count cast "
    "ceiling cert_id certencoded certprivatekey changetable char charindex checksum checksum_agg choose col_length "
    "col_name collationproperty columnproperty columns_updated compress concat concat_ws connectionproperty "
    "containstable context_info convert cos cot count count_big cume_dist current_date current_request_id "
    "current_timestamp current_timezone current_timezone_id current_transaction_id current_user cursor_rows "
    "cursor_status database_principal_id databasepropertyex datalength date_bucket dateadd datediff datediff_big "
    "datefromparts datename datepart datetime2fromparts datetimefromparts datetimeoffsetfromparts datetrunc day db_id "
    "db_name decompress decryptbyasymkey decryptbycert decryptbykey decryptbykeyautoasymkey decryptbykeyautocert "
    "decryptbypassphrase degrees dense_rank difference edge_id_from_parts encryptbyasymkey encryptbycert encryptbykey "
    "encryptbypassphrase eomonth error_line error_message error_number error_procedure error_severity error_state "
    "eventdata exp file_id file_idex file_name filegroup_id filegroup_name filegroupproperty fileproperty "
    "first_value floor format formatmessage freetexttable fulltextcatalogproperty fulltextserviceproperty "
    "generate_series get_bit get_filestream_transaction_context getansinull getdate getutcdate graph_id_from_edge_id "
    "greatest grouping grouping_id has_dbaccess has_perms_by_name hashbytes host_id host_name ident_current "
    "ident_incr ident_seed identity iif index_col indexkey_property indexproperty is_member is_rolemember "
    "is_srvrolemember isdate isjson isnull isnumeric json_array json_arrayagg json_modify json_object json_objectagg "
    "json_path_exists json_query json_value key_guid key_id key_name lag last_value lead least left left_shift len "
    "log log10 loginproperty lower ltrim max min min_active_rowversion month nchar newid newsequentialid "
    "next_value_for ntile object_definition object_id object_name object_schema_name objectproperty "
    "objectpropertyex opendatasource openjson openquery openrowset openxml original_db_name original_login parse "
    "parsename patindex percent_rank percentile_cont percentile_disc permissions pi power product publishingservername "
    "pwdcompare pwdencrypt quotename radians rand rank regexp_count regexp_instr regexp_like regexp_replace "
    "regexp_substr replace replicate reverse right right_shift round row_number rowcount_big rtrim schema_id "
    "schema_name scope_identity serverproperty session_context session_id session_user set_bit setuser sign "
    "signbyasymkey signbycert sin smalldatetimefromparts soundex space sql_variant_property sqrt square stats_date "
    "stdev stdevp str string_agg string_escape string_split stuff substring sum suser_id suser_name suser_sid "
    "suser_sname switchoffset symkeyproperty sysdatetime sysdatetimeoffset system_user sysutcdatetime tan textptr "
    "textvalid timefromparts todatetimeoffset translate trigger_nestlevel trim try_cast try_convert try_parse "
    "type_id type_name typeproperty unicode unistr upper user user_id user_name var varp verifysignedbyasymkey "
    "verifysignedbycert xact_state year";

constexpr std::string_view types =
    "bigint binary bit char character cursor date datetime datetime2 datetimeoffset dec decimal double float geography "
    "geometry hierarchyid image int integer json money nchar ntext numeric nvarchar real rowversion smalldatetime "
    "smallint smallmoney sql_variant sysname table text time timestamp tinyint uniqueidentifier varbinary varchar "
    "vector xml";

constexpr std::string_view statementWords =
    // parts of statements
    "absolute action after aggregate apply array assembly at atomic auto backup base64 before binding called caller "
    "cast catalog catch certificate change changes char collection columnstore committed compression concat "
    "containment conversation cube cursor_close data data_compression date day deterministic dialog disable dynamic "
    "elements enable encrypted encryption exists_only expand explicit external fast fast_forward filegroup first "
    "following force force_order forceplan forward_only generated global go grouping hash hidden hint immediate "
    "include increment incremental input insensitive instead isolation json keepfixed keyset language last level "
    "local log login lookup loop manual mark masked matched max maxdop maxrecursion maxvalue merge message minvalue "
    "move name native_compilation next no nocache nocycle nolock none nowait null object offset online only "
    "optimistic optimize output owner parameterization partition partitions passthrough password path period "
    "persisted pivot preceding precision prior queue raw readcommitted readcommittedlock readonly readpast "
    "readuncommitted rebuild receive recompile relative remote rename repeatable repeatableread replicate reset "
    "respect restart result role rollup root row row_number rowguidcol rowlock rows schemabinding scoped scroll "
    "scroll_locks security self send sequence serializable server service sets snapshot source sparse spatial start "
    "state static status synonym system system_time system_versioning tablesample tablock tablockx target throw ties "
    "time timeout top_level trancount tranname try tsql type type_warning unbounded uncommitted unique unknown "
    "unpivot updlock use_hint user_db using value values view_metadata views virtual window within without work "
    "xact xlock xml xmldata xmlnamespaces xmlschema xquery xsinil zone distribution ignore nulls over filter "
    "without_array_wrapper include_null_values revert cycle symmetric asymmetric contract lifetime definition "
    "impersonate control showplan fn ts "
    // bulk loads
    "batchsize check_constraints codepage datafiletype data_source errorfile fieldterminator fieldquote fire_triggers "
    "firstrow format formatfile keepnulls kilobytes_per_batch lastrow maxerrors rows_per_batch rowterminator "
    "single_blob single_clob single_nclob "
    // set options
    "ansi_defaults ansi_null_dflt_off ansi_null_dflt_on ansi_nulls ansi_padding ansi_warnings arithabort arithignore "
    "concat_null_yields_null context_info cursor_close_on_commit datefirst dateformat deadlock_priority "
    "disable_def_cnst_chk fips_flagger fmtonly forceplan high implicit_transactions io lock_timeout low nocount noexec "
    "normal numeric_roundabort parseonly profile query_governor_cost_limit quoted_identifier remote_proc_transactions "
    "showplan_all showplan_text showplan_xml statistics xact_abort ymd dmy mdy ydm myd dym "
    // index and table options, events
    "allow_page_locks allow_row_locks drop_existing fillfactor filestream_on ignore_dup_key lob_compaction "
    "optimize_for_sequential_key pad_index page resumable sort_in_tempdb statistics_norecompute textimage_on "
    "delay delivery stats_stream fullscan sample noexpand forceseek forcescan keepidentity keepdefaults holdlock "
    "paglock wait_at_low_priority max_duration abort_after_wait blockers "
    // parts of dates
    "year yy yyyy quarter qq q month mm m dayofyear dy y dd d week wk ww weekday dw w hour hh minute mi n second ss s "
    "millisecond ms microsecond mcs nanosecond ns tzoffset tz iso_week isowk isoww "
    // roles, rows of a change
    "public dbo guest sa inserted deleted";

constexpr std::string_view systemTables =
    "sysaltfiles syscacheobjects syscharsets syscolumns syscomments sysconfigures sysconstraints syscurconfigs "
    "sysdatabases sysdepends sysdevices sysfilegroups sysfiles sysforeignkeys sysfulltextcatalogs sysindexes "
    "sysindexkeys syslanguages syslockinfo syslogins sysmembers sysmessages sysobjects sysperfinfo syspermissions "
    "sysprocesses sysprotects sysreferences sysremotelogins sysservers systypes sysusers";

}  // namespace

bool IsBuiltInFunction(const std::string& strLower) {
  static const WordSet words = wordsOf(functions);
  return words.count(strLower) > 0 || strLower.starts_with("fn_");
}

bool IsBuiltInType(const std::string& strLower) {
  static const WordSet words = wordsOf(types);
  return words.count(strLower) > 0;
}

bool IsStatementWord(const std::string& strLower) {
  static const WordSet words = wordsOf(statementWords);
  return words.count(strLower) > 0;
}

bool IsSystemObject(const std::string& strLower) {
  static const WordSet words = wordsOf(systemTables);
  return words.count(strLower) > 0 || strLower.starts_with("sp_") || strLower.starts_with("xp_");
}

}  // namespace qrel
