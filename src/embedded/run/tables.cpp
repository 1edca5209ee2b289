// CREATE TABLE, ALTER TABLE, CREATE INDEX, TRUNCATE TABLE.
#include <algorithm>

#include "embedded/change/parts.h"
#include "embedded/run/interpreter.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

void Interpreter::createTable() {
  const ObjectName name = localName(readObjectName(reader_));
  TableDef table;
  table.schema = name.schema.empty() ? "dbo" : name.schema;
  table.name = name.name;
  DdlReader ddl(reader_, *catalogue_);
  if (reader_.peek().is("AS")) notUnderstood("CREATE TABLE AS isn't kept");
  ddl.tableBody(table);
  if (!act()) return;
  ddl.checkPrimaryKey(table);
  atomically([&] { changes().createTable(table); });
  schemaChanged();
  made("table");
}

void Interpreter::createIndex() {
  DdlReader ddl(reader_, *catalogue_);
  ObjectName table;
  const IndexDef index = ddl.createIndex(table);
  table = localName(table);
  if (!act()) return;
  atomically([&] { changes().addIndex(table, index); });
  schemaChanged();
  made("index");
}

void Interpreter::alterTable() {
  const ObjectName name = localName(readObjectName(reader_));
  if (reader_.peek().is("WITH") && (reader_.peek(1).is("CHECK") || reader_.peek(1).is("NOCHECK"))) {
    reader_.next();
    reader_.next();
  }
  const Token& word = reader_.peek();
  if (word.is("ADD")) {
    alterTableAdd(name);
  } else if (word.is("DROP")) {
    alterTableDrop(name);
  } else if (word.is("ALTER") && reader_.peek(1).is("COLUMN")) {
    alterTableColumn(name);
  } else if (word.is("CHECK") || word.is("NOCHECK") || word.is("ENABLE") || word.is("DISABLE")) {
    reader_.next();  // CONSTRAINT or TRIGGER, and names
    if (!reader_.acceptWord("CONSTRAINT")) reader_.expectWord("TRIGGER");
    do {
      reader_.expectIdentifier();
    } while (reader_.acceptSymbol(","));
    withoutEffect();
    act();
  } else if (word.is("SET") || word.is("REBUILD") || word.is("SWITCH")) {
    if (word.is("SWITCH")) notUnderstood("partitions aren't kept");
    reader_.next();
    if (reader_.peek().isSymbol("(")) reader_.skipParentheses();
    if (reader_.acceptWord("WITH")) reader_.skipParentheses();
    withoutEffect();
    act();
  } else {
    notUnderstood("unknown form of ALTER TABLE");
  }
}

void Interpreter::alterTableAdd(const ObjectName& name) {
  reader_.expectWord("ADD");
  const auto before = catalogue_->table(name.schema, name.name);
  TableDef table;  // with the columns that are there: computed ones take their types from them
  if (before) {
    for (const auto& column : before->columns) {
      ColumnDef& def = table.columns.emplace_back();
      def.name = column.name;
      def.type = column.type;
    }
  }
  const auto existing = static_cast<std::ptrdiff_t>(table.columns.size());
  DdlReader ddl(reader_, *catalogue_);
  do {
    ddl.tableElement(table);
  } while (reader_.acceptSymbol(","));
  if (!act()) return;
  std::vector<ColumnDef> columns(table.columns.begin() + existing, table.columns.end());
  atomically([&] {
    if (!columns.empty()) {
      for (const IndexDef& index : table.indexes) {
        for (ColumnDef& column : columns) {
          const bool inKey = std::any_of(index.columns.begin(), index.columns.end(), [&](const std::string& key) {
            return compareCollated(key, column.name) == 0;
          });
          if (index.kind == KeyKind::PrimaryKey && inKey) column.nullable = false;
        }
      }
      changes().addColumns(name, columns);
      fillColumns(name, columns, ddl.withValues);
    }
    for (const IndexDef& index : table.indexes) changes().addIndex(name, index);
    for (const ForeignKeyDef& key : table.foreignKeys) changes().addForeignKey(name, key);
    for (const CheckDef& check : table.checks) changes().addCheck(name, check);
    for (const auto& each : ddl.defaultsFor) changes().addDefault(name, each.column, each.name, each.text);
  });
  schemaChanged();
  made(!columns.empty() ? "column" : "constraint");
}

// Gives the rows that are there the values of new columns: counted ones, and defaults where Null isn't allowed or
// WITH VALUES asks for them.
void Interpreter::fillColumns(const ObjectName& name, const std::vector<ColumnDef>& columns, bool withValues) {
  const auto table = requireTable(name);
  std::vector<std::int64_t> rows;
  {
    sqlite::Statement query(*database_, "select _rowid_ from " + quoteName(table->storage) + " order by _rowid_");
    while (query.step()) rows.push_back(query.integer(0));
  }
  if (rows.empty()) return;
  for (const ColumnDef& def : columns) {
    const auto* column = table->find(def.name);
    const bool counted = def.identity || def.type.baseName == "timestamp";
    const bool filled = !def.defaultText.empty() && (!def.nullable || withValues);
    if (!counted && !filled) continue;
    const InsertPlan::Column source = defaultFor(*column);
    sqlite::Statement update(*database_, "update " + quoteName(table->storage) + " set " + quoteColumn(column->name) +
                                             " = ?1 where _rowid_ = ?2");
    for (const std::int64_t row : rows) {
      checkStop();
      update.bind(1, counted ? generated(*table, *column) : defaultOf(source)).bind(2, row).run();
    }
  }
}

void Interpreter::alterTableDrop(const ObjectName& name) {
  reader_.expectWord("DROP");
  struct Part {
    bool column = false, ifExists = false;
    std::string name;
  };
  std::vector<Part> parts;
  bool column = false;
  do {
    if (reader_.acceptWord("COLUMN")) {
      column = true;
    } else if (reader_.acceptWord("CONSTRAINT")) {
      column = false;
    } else if (parts.empty() && reader_.peek().is("PERIOD")) {
      notUnderstood("periods aren't kept");
    }
    Part part;
    part.column = column;
    if (reader_.acceptWord("IF")) {
      reader_.expectWord("EXISTS");
      part.ifExists = true;
    }
    part.name = reader_.expectIdentifier();
    if (reader_.peek().is("WITH") && reader_.peek(1).isSymbol("(")) {
      reader_.next();
      reader_.skipParentheses();
    }
    parts.push_back(std::move(part));
  } while (reader_.acceptSymbol(","));
  if (!act()) return;
  atomically([&] {
    for (const Part& part : parts) {
      const auto table = catalogue_->table(name.schema, name.name);
      if (part.ifExists && table) {
        const auto object = catalogue_->find(table->schema, part.name);
        if (part.column ? table->find(part.name) == nullptr : !object || object->parent != table->id) continue;
      }
      if (part.column) {
        changes().dropColumn(name, part.name);
      } else {
        changes().dropConstraint(name, part.name);
      }
    }
  });
  schemaChanged();
}

void Interpreter::alterTableColumn(const ObjectName& name) {
  reader_.expectWord("ALTER");
  reader_.expectWord("COLUMN");
  if ((reader_.peek(1).is("ADD") || reader_.peek(1).is("DROP")) && !reader_.peek(2).isSymbol("(")) {
    reader_.next();  // ADD or DROP of ROWGUIDCOL, PERSISTED, SPARSE, ...
    reader_.next();
    reader_.next();
    if (reader_.acceptWord("WITH")) reader_.skipParentheses();
    act();
    return;
  }
  TableDef extra;
  ColumnDef column = DdlReader(reader_, *catalogue_).column(extra);
  if (reader_.acceptWord("WITH")) reader_.skipParentheses();
  if (!act()) return;
  atomically([&] { changes().alterColumn(name, column); });
  schemaChanged();
}

void Interpreter::truncateStatement() {
  reader_.next();
  reader_.expectWord("TABLE");
  const ObjectName name = localName(readObjectName(reader_));
  if (reader_.peek().is("WITH") && reader_.peek(1).isSymbol("(")) notUnderstood("partitions aren't kept");
  if (!act()) return;
  const auto table = requireTable(name);
  auto& references = database_->cached("select 1 from cat_references where rkeyid = ?1 and fkeyid <> ?1");
  const bool referenced = references.bind(1, table->id).step();
  references.reset();
  if (referenced) {
    refuse("Cannot truncate table '" + table->name + "' because it is being referenced by a FOREIGN KEY constraint.");
  }
  database_->execute("delete from " + quoteName(table->storage));
  state_.identities.erase(table->id);
}

}  // namespace qrel::tsql
