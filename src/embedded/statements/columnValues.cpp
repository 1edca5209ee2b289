#include "embedded/statements/columnValues.h"

#include "embedded/catalogue/reading.h"
#include "embedded/catalogue/temporaryTables.h"
#include "embedded/language/refusal.h"
#include "embedded/run/identities.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/statements/literals.h"

namespace qrel::tsql {

namespace {

constexpr std::int64_t firstVersion = 2000;

std::string bytesOf(std::int64_t number) {
  std::string bytes(8, '\0');
  for (int i = 7; i >= 0; --i, number >>= 8) bytes[static_cast<std::size_t>(i)] = static_cast<char>(number & 0xFF);
  return bytes;
}

std::int64_t numberOf(std::string_view bytes) {
  std::int64_t number = 0;
  for (const char c : bytes) number = (number << 8) | static_cast<unsigned char>(c);
  return number;
}

}  // namespace

bool isVersionColumn(const TableInfo::Column& column) { return column.type.baseName == "timestamp"; }

InsertPlan::Column defaultFor(StatementRun& run, const TableInfo::Column& column) {
  InsertPlan::Column source;
  source.column = &column;
  if (column.identity || isVersionColumn(column)) return source;
  if (column.defaultText.empty()) {
    source.fixed = Value();
    return source;
  }
  if (const auto literal = literalDefault(column.defaultText)) {
    source.fixed = literal->null ? Value() : convertTo(column.type, *literal);
    return source;
  }
  const auto tokens = lex(column.defaultText);
  TokenReader reader(column.defaultText, tokens);
  while (reader.peek().isSymbol("(")) reader.next();
  if (reader.peek().is("NEXT") && reader.peek(1).is("VALUE") && reader.peek(2).is("FOR")) {
    reader.moveTo(reader.position() + 3);
    source.sequence = run.localName(readObjectName(reader));
    return source;
  }
  reader.moveTo(0);
  source.sql = Translator(run.context(), reader).expression();
  return source;
}

Value defaultOf(StatementRun& run, const InsertPlan::Column& source) {
  if (source.fixed) return *source.fixed;
  if (source.sequence)
    return convertTo(source.column->type, Value::ofInteger(run.changes().nextSequenceValue(*source.sequence)));
  if (source.sql.empty()) return {};
  const Value value = run.evaluate(source.sql);
  return value.null ? value : convertTo(source.column->type, value);
}

Value generated(StatementRun& run, const TableInfo& table, const TableInfo::Column& column) {
  if (isVersionColumn(column)) {
    auto [kept, fresh] = run.memory.versions.try_emplace(table.id, firstVersion);
    if (fresh) {
      sqlite::Statement query(run.database(),
                              "select max(" + quoteColumn(column.name) + ") from " + quoteName(table.storage));
      if (query.step() && !query.isNull(0)) kept->second = numberOf(query.text(0));
    }
    Value value = Value::ofText(bytesOf(++kept->second));
    value.type = DataType::Binary;
    return value;
  }
  const std::int64_t increment = column.identityIncrement;
  std::int64_t& last = lastIdentity(run, table, column);
  last += increment;
  run.setGlobal("@@identity", last);
  return convertTo(column.type, Value::ofInteger(last));
}

std::int64_t& lastIdentity(StatementRun& run, const TableInfo& table, const TableInfo::Column& column) {
  const auto found = run.memory.identities.try_emplace(table.id, 0);
  std::int64_t& last = found.first->second;
  if (!found.second) return last;
  const std::int64_t seed = column.identitySeed, increment = column.identityIncrement;
  const bool down = increment < 0;
  last = seed - increment;
  const auto raise = [&](std::int64_t value) {
    if (down ? value < last : value > last) last = value;
  };
  sqlite::Statement rows(run.database(), "select max(" + quoteColumn(column.name) + "), min(" +
                                             quoteColumn(column.name) + ") from " + quoteName(table.storage));
  const int end = down ? 1 : 0;
  if (rows.step() && !rows.isNull(end)) raise(rows.integer(end));
  // What a load or a session before this one has counted to, or RESEED has set.
  if (const auto before = keptIdentity(run.database(), table.id)) last = *before;
  return last;
}

void forgetIdentity(StatementRun& run, const TableInfo& table) {
  run.memory.identities.erase(table.id);
  keepIdentity(run.database(), table.id, std::nullopt);
}

void refuseNull(const StatementRun& run, const TableInfo& table, const TableInfo::Column& column,
                std::string_view statement) {
  refuse("Cannot insert the value NULL into column '" + column.name + "', table '" +
         (table.temporary ? "tempdb.dbo." + table.name : run.open->facts.database + "." + table.storage) +
         "'; column does not allow nulls. " + std::string(statement) + " fails.");
}

namespace {

constexpr std::string_view duplicatePrefix = "UNIQUE constraint failed: ";

}  // namespace

bool isDuplicate(const DataError& error) { return error.description.starts_with(duplicatePrefix); }

void refuseDuplicate(StatementRun& run, const TableInfo& table, const DataError& error) {
  if (!isDuplicate(error)) throw error;
  const std::string_view failed = std::string_view(error.description).substr(duplicatePrefix.size());
  auto& query = run.database().cached(
      "select i.name, i.kind, group_concat(?2 || '.' || c.name, ', ') from cat_indexes i join (select * from "
      "cat_indexkeys order by keyno) k on k.object_id = i.object_id and k.indid = i.indid and k.keyno > 0 join "
      "cat_columns c on c.object_id = i.object_id and c.colid = k.colid where i.object_id = ?1 and i.is_unique = 1 "
      "group by i.indid");
  query.bind(1, table.id).bind(2, table.storage);
  std::string name, kind;
  const std::string shown = table.temporary ? "dbo." + table.name : table.storage;
  if (table.temporary) {
    const std::string key = table.name.starts_with('@') ? variableMark + table.name : table.name;
    const TemporaryTable* kept = run.catalogue().temporary().find(run.database(), key);
    for (const IndexDef& index : kept ? kept->def.indexes : std::vector<IndexDef>()) {
      std::string columns;
      for (const std::string& column : index.columns)
        columns += (columns.empty() ? "" : ", ") + table.storage + "." + table.find(column)->name;
      if (!index.unique || (failed != columns && !failed.ends_with("." + index.name + "'"))) continue;
      name = index.name;
      kind = index.kind == KeyKind::Index ? "IX" : index.kind == KeyKind::PrimaryKey ? "PK" : "UQ";
    }
  }
  while (query.step()) {
    const std::string marked = "index '" + table.storage + "." + std::string(query.text(0)) + "'";
    if (failed != marked && failed != query.text(2)) continue;
    name = query.text(0);
    kind = query.text(1);
  }
  query.reset();
  if (kind == "IX")
    refuse("Cannot insert duplicate key row in object '" + shown + "' with unique index '" + name + "'.");
  refuse("Violation of " + std::string(kind == "PK" ? "PRIMARY KEY" : "UNIQUE KEY") + " constraint '" + name +
         "'. Cannot insert duplicate key in object '" + shown + "'.");
}

}  // namespace qrel::tsql
