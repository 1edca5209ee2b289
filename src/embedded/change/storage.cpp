// The SQLite tables and indexes behind user tables.
#include <algorithm>

#include "embedded/change/parts.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

std::string indexStorage(const TableInfo& table, std::string_view index) {
  return table.storage + "." + std::string(index);
}

// A stored expression or condition in SQLite's words.
std::string translated(const Catalogue& catalogue, const TableInfo& table, const std::string& text, bool condition) {
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  TranslateContext context;
  context.catalogue = &catalogue;
  context.table = &table;
  Translator translator(context, reader);
  return condition ? translator.condition() : translator.expression();
}

// A computed column's expression, which gives exact numbers with the digits of their type.
std::string computedText(const TableInfo::Column& column) {
  if (column.type.dataType != DataType::Decimal) return column.computedText;
  const bool sized = sizingOf(column.type.xtype) == Sizing::Decimal;
  const std::string size =
      "(" + std::to_string(column.type.prec) + "," + std::to_string(std::max(column.type.scale, 0)) + ")";
  return "CAST(" + column.computedText + " AS " + column.type.baseName + (sized ? size : "") + ")";
}

// A key column of a unique index. The server takes Nulls as equal, SQLite doesn't: a value that no column can hold
// stands in for them.
std::string indexColumn(const TableInfo::Column& column, bool descending) {
  std::string text = quoteColumn(column.name);
  if (column.nullable && !column.computed) text = "ifnull(" + text + ", -9e999)" + storageCollation(column.type);
  return descending ? text + " desc" : text;
}

struct UniqueIndex {
  std::string name, filter, columns;
};

std::vector<UniqueIndex> uniqueIndexes(sqlite::Database& database, const TableInfo& table, int onlyIndid) {
  std::vector<UniqueIndex> found;
  auto& query = database.cached(
      "select i.indid, i.name, i.filter, k.colid, k.descending from cat_indexes i join cat_indexkeys k on "
      "k.object_id = i.object_id and k.indid = i.indid where i.object_id = ?1 and i.is_unique = 1 and k.keyno > 0 and "
      "?2 in (0, i.indid) and not exists (select 1 from cat_properties p where p.object_id = i.object_id and p.class = "
      "7 "
      "and p.minor_id = i.indid and p.name = 'is_disabled') order by i.indid, k.keyno");
  query.bind(1, table.id).bind(2, std::int64_t{onlyIndid});
  std::int64_t last = 0;
  while (query.step()) {
    if (query.integer(0) != last) found.push_back({std::string(query.text(1)), std::string(query.text(2)), ""});
    last = query.integer(0);
    const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                     [&](const auto& each) { return each.colid == query.integer(3); });
    if (column == table.columns.end()) continue;
    std::string& list = found.back().columns;
    list += (list.empty() ? "" : ", ") + indexColumn(*column, query.integer(4) != 0);
  }
  query.reset();
  return found;
}

// SQLite keeps its own mind about which expressions may stand in an index or a computed column.
bool isRefusedExpression(const sqlite::EngineError& error) {
  for (const char* words : {"non-deterministic", "prohibited", "subqueries", "no such function"})
    if (error.engineText.find(words) != std::string::npos) return true;
  return false;
}

}  // namespace

std::string storageCollation(const TypeRef& type) {
  const std::string declaration = storageDeclaration(type);
  const std::size_t at = declaration.find(" COLLATE ");
  return at == std::string::npos ? "" : declaration.substr(at);
}

std::string storageColumn(const Catalogue& catalogue, const TableInfo& table, const TableInfo::Column& column,
                          bool plain) {
  // SQLite takes numbers only as a type's size.
  std::string sql = quoteColumn(column.name) + " " + replaceAll(storageDeclaration(column.type), "(max)", "(-1)");
  if (column.computed && !plain)
    sql += " generated always as (" + translated(catalogue, table, computedText(column), false) + ") virtual";
  return sql;
}

namespace {

// False: SQLite or the translation refuse one of its expressions. `plain`: the columns that are ordinary ones instead.
bool tryTable(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
              const std::vector<bool>& plain, const std::string& storage) {
  const std::vector<TableInfo::Column>& columns = table.columns;
  try {
    std::string text = (table.temporary ? "create temp table " : "create table ") + quoteName(storage) + " (";
    for (std::size_t i = 0; i < columns.size(); ++i)
      text += (i == 0 ? "" : ", ") + storageColumn(catalogue, table, columns[i], plain[i]);
    database.execute(text + ")");
    return true;
  } catch (const NotUnderstood&) {
    return false;
  } catch (const DataError& error) {
    const bool computed = std::any_of(columns.begin(), columns.end(), [](const auto& each) { return each.computed; });
    if (!computed || error.number == errorNumber::cannotConnect) throw;
    return false;
  }
}

}  // namespace

void createStorageTable(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                        const std::string& storage) {
  std::vector<bool> plain(table.columns.size());
  if (tryTable(database, catalogue, table, plain, storage)) return;
  // Which ones are refused is told by each of them alone beside the ordinary columns.
  const std::string probe = storage + "\x01p";
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    if (!table.columns[i].computed) continue;
    std::vector<bool> others(table.columns.size());
    for (std::size_t k = 0; k < others.size(); ++k) others[k] = k != i;
    plain[i] = !tryTable(database, catalogue, table, others, probe);
    database.execute("drop table if exists " + quoteName(probe));
  }
  if (tryTable(database, catalogue, table, plain, storage)) return;
  plain.assign(plain.size(), true);
  tryTable(database, catalogue, table, plain, storage);
}

void rebuildStorageTable(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                         std::string_view changed) {
  const std::string fresh = table.storage + "\x01r";
  createStorageTable(database, catalogue, table, fresh);
  std::string columns, marks;
  std::vector<const TableInfo::Column*> stored;
  for (const auto& column : table.columns) {
    if (column.computed) continue;
    stored.push_back(&column);
    columns += (columns.empty() ? "" : ", ") + quoteColumn(column.name);
    marks += marks.empty() ? "?" : ", ?";
  }
  {
    sqlite::Statement from(database, "select " + columns + " from " + quoteName(table.storage) + " order by _rowid_");
    sqlite::Statement into(database, "insert into " + quoteName(fresh) + " (" + columns + ") values (" + marks + ")");
    while (from.step()) {
      for (std::size_t i = 0; i < stored.size(); ++i) {
        const int at = static_cast<int>(i);
        sqlite3_value* value = sqlite3_column_value(from.get(), at);
        if (compareCollated(stored[i]->name, changed) == 0) {
          into.bind(at + 1, convertTo(stored[i]->type, sqlite::valueOf(from, at)));
        } else {
          sqlite3_bind_value(into.get(), at + 1, value);
        }
      }
      into.run();
    }
  }
  database.execute("drop table " + quoteName(table.storage));
  database.execute("alter table " + quoteName(fresh) + " rename to " + quoteName(table.storage));
  createStorageIndexes(database, catalogue, table);
}

void createStorageIndexes(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                          int onlyIndid) {
  for (const UniqueIndex& index : uniqueIndexes(database, table, onlyIndid)) {
    std::string sql = "create unique index " + quoteName(indexStorage(table, index.name)) + " on " +
                      quoteName(table.storage) + " (" + index.columns + ")";
    try {
      if (!index.filter.empty()) sql += " where " + translated(catalogue, table, index.filter, true);
      database.execute(sql);
    } catch (const NotUnderstood&) {
      continue;  // the catalogue knows the index; only its uniqueness isn't watched
    } catch (const sqlite::EngineError& error) {
      if (isRefusedExpression(error)) continue;
      if (error.engineText.find("UNIQUE constraint failed") == std::string::npos) throw;
      refuse("The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name '" +
             table.storage + "' and the index name '" + index.name + "'.");
    }
  }
}

void createTemporaryIndex(sqlite::Database& database, const Catalogue& catalogue, const TableInfo& table,
                          const IndexDef& index) {
  std::string columns;
  for (std::size_t i = 0; i < index.columns.size(); ++i) {
    const auto* column = table.find(index.columns[i]);
    if (!column) refuse("Column name '" + index.columns[i] + "' does not exist in the target table or view.");
    columns += (columns.empty() ? "" : ", ") + indexColumn(*column, false);
  }
  std::string sql = "create unique index temp." + quoteName(indexStorage(table, index.name)) + " on " +
                    quoteName(table.storage) + " (" + columns + ")";
  try {
    if (!index.filter.empty()) sql += " where " + translated(catalogue, table, index.filter, true);
    database.execute(sql);
  } catch (const NotUnderstood&) {
    return;
  } catch (const sqlite::EngineError& error) {
    if (isRefusedExpression(error)) return;
    if (error.engineText.find("UNIQUE constraint failed") == std::string::npos) throw;
    refuse("The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name 'dbo." +
           table.name + "' and the index name '" + index.name + "'.");
  }
}

void dropStorageIndex(sqlite::Database& database, const TableInfo& table, std::string_view indexName) {
  database.execute("drop index if exists " + quoteName(indexStorage(table, indexName)));
}

}  // namespace qrel::tsql
