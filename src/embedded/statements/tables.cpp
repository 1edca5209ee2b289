#include "embedded/statements/tables.h"

#include <algorithm>

#include "embedded/change/parts.h"
#include "embedded/change/temporary.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/statements/columnValues.h"
#include "embedded/statements/noEffect.h"
#include "embedded/statements/tableReader.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Gives the rows that are there the values of new columns: counted ones, and defaults where Null isn't allowed or
// WITH VALUES asks for them.
void fillColumns(StatementRun& run, const ObjectName& name, const std::vector<ColumnDef>& columns, bool withValues) {
  const auto table = run.requireTable(name);
  std::vector<std::int64_t> rows;
  {
    sqlite::Statement query(run.database(), "select _rowid_ from " + quoteName(table->storage) + " order by _rowid_");
    while (query.step()) rows.push_back(query.integer(0));
  }
  if (rows.empty()) return;
  for (const ColumnDef& def : columns) {
    const auto* column = table->find(def.name);
    const bool counted = def.identity || def.type.baseName == "timestamp";
    const bool filled = !def.defaultText.empty() && (!def.nullable || withValues);
    if (!counted && !filled) continue;
    const InsertPlan::Column source = defaultFor(run, *column);
    sqlite::Statement update(run.database(), "update " + quoteName(table->storage) + " set " +
                                                 quoteColumn(column->name) + " = ?1 where _rowid_ = ?2");
    for (const std::int64_t row : rows) {
      run.checkStop();
      update.bind(1, counted ? generated(run, *table, *column) : defaultOf(run, source)).bind(2, row).run();
    }
  }
}

// WITH NOCHECK: the rows that are there aren't looked at. (Neither are they for replication's constraints.)
void markUntrusted(TableDef& table, bool unchecked) {
  const auto mark = [&](Properties& properties) {
    const bool replicated = std::any_of(properties.begin(), properties.end(),
                                        [](const Property& each) { return each.name == "is_not_for_replication"; });
    if (unchecked || replicated) properties.push_back({"is_not_trusted", "1"});
  };
  for (CheckDef& check : table.checks) mark(check.properties);
  for (ForeignKeyDef& key : table.foreignKeys) mark(key.properties);
}

// What ALTER TABLE ADD has read, for a temporary table.
void addToTemporary(StatementRun& run, const ObjectName& name, const TableDef& added,
                    const std::vector<ColumnDef>& columns, const DdlReader& ddl) {
  run.atomically([&] {
    TableDef def = temporaryDefinition(run.catalogue(), name.name);
    def.columns.insert(def.columns.end(), columns.begin(), columns.end());
    def.indexes.insert(def.indexes.end(), added.indexes.begin(), added.indexes.end());
    for (const auto& each : ddl.defaultsFor)
      for (ColumnDef& column : def.columns)
        if (compareCollated(column.name, each.column) == 0) column.defaultText = each.text;
    replaceTemporary(run.catalogue(), std::move(def));
    fillColumns(run, name, columns, ddl.withValues);
  });
  run.schemaChanged();
}

// Takes columns or constraints away from a temporary table. Of constraints only keys are kept; whether another is there
// isn't known.
void dropFromTemporary(StatementRun& run, const ObjectName& name, const std::vector<std::string>& columns,
                       const std::vector<std::string>& constraints) {
  run.atomically([&] {
    TableDef def = temporaryDefinition(run.catalogue(), name.name);
    for (const std::string& column : columns)
      if (std::erase_if(def.columns, [&](const auto& each) { return compareCollated(each.name, column) == 0; }) == 0)
        refuse("ALTER TABLE DROP COLUMN failed because column '" + column + "' does not exist in table '" + def.name +
               "'.");
    for (const IndexDef& index : def.indexes)
      for (const std::string& key : index.columns)
        for (const std::string& column : columns)
          if (compareCollated(key, column) == 0)
            refuse("The index '" + index.name + "' is dependent on column '" + column + "'.");
    for (const std::string& constraint : constraints)
      std::erase_if(def.indexes, [&](const auto& each) { return compareCollated(each.name, constraint) == 0; });
    replaceTemporary(run.catalogue(), std::move(def));
  });
  run.schemaChanged();
}

void tellNotKept(StatementRun& run, const DdlReader& ddl) {
  for (const DdlReader::NotKept& each : ddl.notKept) run.notKept(each.reason, each.token - 1);
}

void alterTableAdd(StatementRun& run, const ObjectName& name, bool unchecked) {
  TokenReader& reader = run.reader;
  reader.expectWord("ADD");
  const auto before = run.catalogue().table(name.schema, name.name);
  TableDef table;  // with the columns that are there: computed ones take their types from them
  if (before) {
    for (const auto& column : before->columns) {
      ColumnDef& def = table.columns.emplace_back();
      def.name = column.name;
      def.type = column.type;
      def.nullable = column.nullable;
    }
  }
  const auto existing = static_cast<std::ptrdiff_t>(table.columns.size());
  DdlReader ddl(reader, run.catalogue(), run.session.settings.ansiPadding);
  do {
    ddl.tableElement(table);
  } while (reader.acceptSymbol(","));
  ddl.deriveTypes(table);
  if (!run.act()) return;
  markUntrusted(table, unchecked);
  std::vector<ColumnDef> columns(table.columns.begin() + existing, table.columns.end());
  if (isTemporaryName(name.name)) return addToTemporary(run, name, table, columns, ddl);
  run.atomically([&] {
    if (!columns.empty()) {
      for (const IndexDef& index : table.indexes) {
        for (ColumnDef& column : columns) {
          const bool inKey = std::any_of(index.columns.begin(), index.columns.end(), [&](const std::string& key) {
            return compareCollated(key, column.name) == 0;
          });
          if (index.kind == KeyKind::PrimaryKey && inKey) column.nullable = false;
        }
      }
      run.changes().addColumns(name, columns);
      fillColumns(run, name, columns, ddl.withValues);
    }
    for (const IndexDef& index : table.indexes) run.changes().addIndex(name, index);
    for (const ForeignKeyDef& key : table.foreignKeys) run.changes().addForeignKey(name, key);
    for (const CheckDef& check : table.checks) run.changes().addCheck(name, check);
    for (const auto& each : ddl.defaultsFor) run.changes().addDefault(name, each.column, each.name, each.text);
    if (!table.periodStart.empty()) run.changes().setPeriod(name, table.periodStart, table.periodEnd);
  });
  tellNotKept(run, ddl);
  run.schemaChanged();
  run.made(!columns.empty() ? "column" : "constraint");
}

void alterTableDrop(StatementRun& run, const ObjectName& name) {
  TokenReader& reader = run.reader;
  reader.expectWord("DROP");
  struct Part {
    bool column = false, ifExists = false;
    std::string name;
  };
  std::vector<Part> parts;
  bool column = false;
  bool moved = false;
  do {
    if (reader.acceptWord("COLUMN")) {
      column = true;
    } else if (reader.acceptWord("CONSTRAINT")) {
      column = false;
    } else if (parts.empty() && reader.peek().is("PERIOD") && reader.peek(1).is("FOR")) {
      for (const char* word : {"PERIOD", "FOR", "SYSTEM_TIME"}) reader.expectWord(word);
      if (run.act()) run.atomically([&] { run.changes().setPeriod(name, "", ""); });
      return;
    }
    Part part;
    part.column = column;
    if (reader.acceptWord("IF")) {
      reader.expectWord("EXISTS");
      part.ifExists = true;
    }
    part.name = reader.expectIdentifier();
    if (reader.peek().is("WITH") && reader.peek(1).isSymbol("(")) {
      reader.next();
      moved = moved || reader.peek(1).is("MOVE");
      reader.skipParentheses();
    }
    parts.push_back(std::move(part));
  } while (reader.acceptSymbol(","));
  if (!run.act()) return;
  if (isTemporaryName(name.name)) {
    std::vector<std::string> columns, constraints;
    for (const Part& part : parts) (part.column ? columns : constraints).push_back(part.name);
    return dropFromTemporary(run, name, columns, constraints);
  }
  run.atomically([&] {
    for (const Part& part : parts) {
      const auto table = run.catalogue().table(name.schema, name.name);
      if (part.ifExists && table) {
        const auto object = run.catalogue().find(table->schema, part.name);
        if (part.column ? table->find(part.name) == nullptr : !object || object->parent != table->id) continue;
      }
      if (part.column) {
        run.changes().dropColumn(name, part.name);
      } else {
        run.changes().dropConstraint(name, part.name);
      }
    }
  });
  if (moved) run.notKept("where the rows are moved to isn't kept", reader.position() - 1);
  run.schemaChanged();
}

// "column ADD | DROP ROWGUIDCOL", and the like.
void alterColumnProperty(StatementRun& run, const ObjectName& name) {
  TokenReader& reader = run.reader;
  const std::string column = reader.expectIdentifier();
  const bool adds = reader.next().is("ADD");
  TableDef extra;
  ColumnDef options;
  if (!DdlReader(reader, run.catalogue()).columnOption(extra, options)) {
    if (!reader.acceptWord("MASKED")) run.notUnderstood("an option of a column is expected");
    options.properties.push_back({"masking_function", ""});
  }
  if (!run.act()) return;
  if (!adds)
    for (Property& each : options.properties) each.value.clear();
  run.atomically([&] { run.changes().setColumnProperties(name, column, options.properties); });
}

// [CHECK | NOCHECK] CONSTRAINT, [ENABLE | DISABLE] TRIGGER name, ... or ALL.
void alterTableSwitch(StatementRun& run, const ObjectName& name, bool checked) {
  TokenReader& reader = run.reader;
  const Token& word = reader.next();
  const bool enabled = word.is("CHECK") || word.is("ENABLE");
  const bool triggers = word.is("ENABLE") || word.is("DISABLE");
  reader.expectWord(triggers ? "TRIGGER" : "CONSTRAINT");
  std::vector<std::string> names;
  if (!reader.acceptWord("ALL")) {
    do {
      names.push_back(reader.expectIdentifier());
    } while (reader.acceptSymbol(","));
  }
  if (!run.act()) return;
  run.atomically([&] {
    if (triggers) {
      run.changes().switchTriggers(name, names, enabled);
    } else {
      run.changes().switchConstraints(name, names, enabled, checked);
    }
  });
}

void alterTableColumn(StatementRun& run, const ObjectName& name) {
  TokenReader& reader = run.reader;
  reader.expectWord("ALTER");
  reader.expectWord("COLUMN");
  if ((reader.peek(1).is("ADD") || reader.peek(1).is("DROP")) && !reader.peek(2).isSymbol("(")) {
    return alterColumnProperty(run, name);
  }
  TableDef extra;
  DdlReader ddl(reader, run.catalogue());
  ColumnDef column = ddl.column(extra);
  if (reader.acceptWord("WITH")) reader.skipParentheses();
  if (!run.act()) return;
  run.atomically([&] {
    if (!isTemporaryName(name.name)) return run.changes().alterColumn(name, column);
    TableDef def = temporaryDefinition(run.catalogue(), name.name);
    for (ColumnDef& each : def.columns)
      if (compareCollated(each.name, column.name) == 0) each = column;
    replaceTemporary(run.catalogue(), std::move(def));
  });
  tellNotKept(run, ddl);
  run.schemaChanged();
}

// The foreign keys to tables that aren't there yet are left to whoever asked for that.
void leaveOutKeys(StatementRun& run, TableDef& table) {
  std::erase_if(table.foreignKeys, [&](const ForeignKeyDef& key) {
    const ObjectName& other = key.referenced;
    const bool itself = compareCollated(other.name, table.name) == 0 &&
                        compareCollated(other.schema.empty() ? "dbo" : other.schema, table.schema) == 0;
    if (itself || run.catalogue().table(other.schema, other.name)) return false;
    run.session.laterKeys->push_back({{{}, {}, table.schema, table.name}, key});
    return true;
  });
}

// SET (LOCK_ESCALATION = ...), SET (SYSTEM_VERSIONING = ...), REBUILD [PARTITION = n] [WITH (...)].
void alterTableOptions(StatementRun& run, const ObjectName& name) {
  TokenReader& reader = run.reader;
  const bool set = reader.next().is("SET");
  if (set && reader.peek(1).is("LOCK_ESCALATION")) {
    for (int i = 0; i < 3; ++i) reader.next();
    const Token& value = reader.next();
    reader.expectSymbol(")");
    const char* kept = value.is("DISABLE") ? "1" : value.is("AUTO") ? "2" : "";
    if (run.act()) run.changes().setTableProperties(name, {{"lock_escalation", kept}});
    return;
  }
  DdlReader ddl(reader, run.catalogue());
  TableDef table;
  IndexDef rebuilt;
  std::string partition;
  if (reader.acceptWord("PARTITION")) {
    reader.expectSymbol("=");
    partition = reader.next().raw;
  }
  if (set) {
    ddl.tableOptions(table);
  } else if (reader.acceptWord("WITH")) {
    ddl.readIndexOptions(rebuilt);
  }
  if (!partition.empty() && !equalNoCase(partition, "ALL")) {
    for (Property& each : rebuilt.properties)
      if (each.name == "data_compression_desc")
        each = {"partition_compression_" + partition, each.value.empty() ? "NONE" : each.value};
  }
  if (!run.act()) return;
  run.atomically([&] {
    run.requireTable(name);
    run.changes().compressTable(name, rebuilt.properties);
    if (!table.versioning) return;
    if (table.versioning->on) {
      run.changes().startVersioning(name, run.localName(table.versioning->history), table.versioning->properties);
    } else {
      run.changes().stopVersioning(name);
    }
  });
  run.schemaChanged();
  tellNotKept(run, ddl);
}

}  // namespace

void createTable(StatementRun& run) {
  const std::size_t at = run.reader.position();
  const std::function<void()> work = readTable(run, "dbo");
  TokenReader name = run.reader;
  name.moveTo(at);
  const bool temporary = isTemporaryName(readObjectName(name).name);
  if (!run.act()) return;
  run.atomically(work);
  run.schemaChanged();
  if (!temporary) run.made("table");
}

std::function<void()> readTable(StatementRun& run, const std::string& schema) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.localName(readObjectName(reader));
  TableDef table;
  table.schema = name.schema.empty() ? schema : name.schema;
  table.name = name.name;
  DdlReader ddl(reader, run.catalogue(), run.session.settings.ansiPadding);
  if (reader.peek().is("AS"))
    run.notUnderstood(reader.peek(1).is("FILETABLE") ? "tables of files aren't kept" : "CREATE TABLE AS isn't kept");
  ddl.tableBody(table);
  markUntrusted(table, false);
  if (!run.session.settings.ansiNulls) table.properties.push_back({"ansi_nulls_off", "1"});
  if (table.versioning) table.versioning->history = run.localName(table.versioning->history);
  return [&run, schema, table = std::move(table), ddl = std::move(ddl)] {
    ddl.checkPrimaryKey(table);
    if (isTemporaryName(table.name)) return createTemporary(run.catalogue(), table);
    TableDef made = table;
    for (ForeignKeyDef& key : made.foreignKeys) {
      if (!key.referenced.schema.empty() || schema == "dbo") continue;
      const bool itself = compareCollated(key.referenced.name, made.name) == 0;
      if (itself || run.catalogue().table(schema, key.referenced.name)) key.referenced.schema = schema;
    }
    if (run.session.laterKeys) leaveOutKeys(run, made);
    run.changes().createTable(made);
    tellNotKept(run, ddl);
  };
}

void createIndex(StatementRun& run) {
  TokenReader& reader = run.reader;
  DdlReader ddl(reader, run.catalogue());
  ObjectName table;
  const IndexDef index = ddl.createIndex(table);
  table = run.localName(table);
  if (!run.act()) return;
  if (isTemporaryName(table.name)) {
    run.atomically([&] {
      TableDef def = temporaryDefinition(run.catalogue(), table.name);
      if (index.dropExisting) std::erase_if(def.indexes, [&](const auto& each) { return each.name == index.name; });
      def.indexes.push_back(index);
      replaceTemporary(run.catalogue(), std::move(def));
    });
    return run.schemaChanged();
  }
  run.atomically([&] { run.changes().addIndex(table, index); });
  run.schemaChanged();
  tellNotKept(run, ddl);
  run.made("index");
}

void alterTable(StatementRun& run) {
  TokenReader& reader = run.reader;
  const ObjectName name = run.localName(readObjectName(reader));
  bool checked = false;
  bool unchecked = false;
  if (reader.peek().is("WITH") && (reader.peek(1).is("CHECK") || reader.peek(1).is("NOCHECK"))) {
    reader.next();
    checked = reader.peek().is("CHECK");
    unchecked = reader.next().is("NOCHECK");
  }
  const Token& word = reader.peek();
  if (word.is("ADD")) {
    alterTableAdd(run, name, unchecked);
  } else if (word.is("DROP")) {
    alterTableDrop(run, name);
  } else if (word.is("ALTER") && reader.peek(1).is("COLUMN")) {
    alterTableColumn(run, name);
  } else if (word.is("CHECK") || word.is("NOCHECK") || word.is("ENABLE") || word.is("DISABLE")) {
    alterTableSwitch(run, name, checked);
  } else if (word.is("SET") || word.is("REBUILD")) {
    alterTableOptions(run, name);
  } else if (word.is("SWITCH")) {
    run.notUnderstood("rows aren't moved between partitions");
  } else {
    run.notUnderstood("unknown form of ALTER TABLE");
  }
}

// ALTER INDEX name | ALL ON table REBUILD | DISABLE | SET (...) | REORGANIZE; from the name on.
void alterIndex(StatementRun& run) {
  TokenReader& reader = run.reader;
  std::string index;
  if (!reader.acceptWord("ALL")) index = reader.expectIdentifier();
  reader.expectWord("ON");
  const ObjectName table = run.localName(readObjectName(reader));
  using Change = CatalogueChanges::IndexChange;
  Change change = Change::Set;
  IndexDef options;
  DdlReader ddl(reader, run.catalogue());
  if (reader.acceptWord("DISABLE")) {
    change = Change::Disable;
  } else if (reader.acceptWord("REBUILD")) {
    change = Change::Rebuild;
    std::string partition;
    if (reader.acceptWord("PARTITION")) {
      reader.expectSymbol("=");
      partition = reader.next().raw;
    }
    if (reader.acceptWord("WITH")) ddl.readIndexOptions(options);
    for (Property& each : options.properties)
      if (!partition.empty() && !equalNoCase(partition, "ALL") && each.name == "data_compression_desc")
        each = {"partition_compression_" + partition, each.value.empty() ? "NONE" : each.value};
  } else if (reader.acceptWord("SET")) {
    ddl.readIndexOptions(options);
  } else {
    return skipWithoutEffect(run);  // REORGANIZE, PAUSE, ...
  }
  if (!run.act()) return;
  run.atomically([&] { run.changes().alterIndexes(table, index, change, options.properties); });
  run.schemaChanged();
  tellNotKept(run, ddl);
}

void declareTable(StatementRun& run, const std::string& name) {
  run.reader.expectWord("TABLE");
  TableDef table;
  table.name = name;
  DdlReader ddl(run.reader, run.catalogue());
  ddl.tableBody(table);
  // In a loop it is declared once, and keeps its rows.
  if (!run.running() || run.catalogue().table("", name)) return;
  run.atomically([&] { createTemporary(run.catalogue(), table); });
}

void truncateStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  reader.expectWord("TABLE");
  const ObjectName name = run.localName(readObjectName(reader));
  if (reader.peek().is("WITH") && reader.peek(1).isSymbol("(")) run.notUnderstood("partitions aren't kept");
  if (!run.act()) return;
  const auto table = run.requireTable(name);
  auto& references = run.database().cached("select 1 from cat_references where rkeyid = ?1 and fkeyid <> ?1");
  const bool referenced = references.bind(1, table->id).step();
  references.reset();
  if (referenced) {
    refuse("Cannot truncate table '" + table->name + "' because it is being referenced by a FOREIGN KEY constraint.");
  }
  run.database().execute("delete from " + quoteName(table->storage));
  forgetIdentity(run, *table);
}

}  // namespace qrel::tsql
