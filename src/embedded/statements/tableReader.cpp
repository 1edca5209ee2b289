#include "embedded/statements/tableReader.h"

#include <algorithm>
#include <array>

#include "embedded/catalogue/typeNames.h"
#include "embedded/language/words.h"
#include "embedded/translate/expressionTypes.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

template <std::size_t count>
bool isOneOf(const Token& token, const std::array<std::string_view, count>& words) {
  return token.kind == TokenKind::Word &&
         std::any_of(words.begin(), words.end(), [&](std::string_view word) { return token.is(word); });
}

bool isBinaryOperator(const Token& token) {
  static constexpr std::array<std::string_view, 8> operators{"+", "-", "*", "/", "%", "&", "|", "^"};
  return token.kind == TokenKind::Symbol && std::find(operators.begin(), operators.end(), token.raw) != operators.end();
}

// NEXT VALUE FOR a sequence as the server keeps it; empty when the text is something else.
std::string storedSequenceDefault(std::string_view text) {
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  while (reader.acceptSymbol("(")) {
  }
  if (!reader.acceptWord("NEXT") || !reader.acceptWord("VALUE") || !reader.acceptWord("FOR")) return "";
  const ObjectName name = readObjectName(reader);
  return "(NEXT VALUE FOR [" + (name.schema.empty() ? "dbo" : name.schema) + "].[" + name.name + "])";
}

TypeRef namedType(const std::string& text) {
  const auto tokens = lex(text);
  TokenReader reader(text, tokens);
  return readType(reader, nullptr);
}

}  // namespace

std::vector<std::string> DdlReader::nameList() {
  std::vector<std::string> names;
  reader_.expectSymbol("(");
  do {
    names.push_back(reader_.expectIdentifier());
  } while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
  return names;
}

// One operand of an expression: signs, then brackets, a literal, a name with or without arguments, CASE ... END.
void DdlReader::operand() {
  while (reader_.peek().isSymbol("-") || reader_.peek().isSymbol("+") || reader_.peek().isSymbol("~")) reader_.next();
  const Token& first = reader_.peek();
  if (first.isSymbol("(")) return reader_.skipParentheses();
  if (first.is("CASE")) {
    int depth = 0;
    do {
      const Token& token = reader_.next();
      if (token.kind == TokenKind::End) throw NotUnderstood{"CASE without END", first.line};
      if (token.is("CASE")) ++depth;
      if (token.is("END")) --depth;
    } while (depth > 0);
    return;
  }
  if (first.kind == TokenKind::Symbol || first.kind == TokenKind::End)
    throw NotUnderstood{"an expression is expected", first.line};
  if (reader_.acceptWord("NEXT")) {
    reader_.expectWord("VALUE");
    reader_.expectWord("FOR");
    readObjectName(reader_);
    return;
  }
  const bool name = first.isIdentifier();
  reader_.next();
  if (!name) return;
  while (reader_.acceptSymbol(".") || reader_.acceptSymbol("::")) reader_.next();
  if (reader_.peek().isSymbol("(")) reader_.skipParentheses();
}

std::string_view DdlReader::expression() {
  const std::size_t begin = reader_.position();
  operand();
  while (isBinaryOperator(reader_.peek()) || reader_.peek().is("COLLATE")) {
    reader_.next();
    operand();
  }
  return reader_.sourceBetween(begin, reader_.position());
}

void DdlReader::tableBody(TableDef& table) {
  reader_.expectSymbol("(");
  do {
    if (reader_.peek().isSymbol(")")) break;  // a comma before the closing bracket is allowed
    tableElement(table);
  } while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
  deriveTypes(table);
  storageOptions(table);
}

void DdlReader::storageOptions(TableDef& table) {
  for (;;) {
    if (reader_.acceptWord("ON")) {
      table.placement = placement();
    } else if (reader_.acceptWord("TEXTIMAGE_ON")) {
      table.texts = placement();
    } else if (reader_.acceptWord("FILESTREAM_ON")) {
      table.files = placement();
    } else if (reader_.peek().is("WITH") && reader_.peek(1).isSymbol("(")) {
      reader_.next();
      tableOptions(table);
    } else if (reader_.peek().is("AS") && (reader_.peek(1).is("NODE") || reader_.peek(1).is("EDGE"))) {
      reader_.next();
      tellNotKept("the columns that a graph table has by itself aren't kept");
      table.properties.push_back({reader_.next().is("NODE") ? "is_node" : "is_edge", "1"});
    } else {
      return;
    }
  }
}

// The list behind WITH of a table, brackets included.
void DdlReader::tableOptions(TableDef& table) {
  reader_.expectSymbol("(");
  do {
    const Token& word = reader_.peek();
    reader_.expectIdentifier();
    if (word.is("SYSTEM_VERSIONING")) {
      versioningOption(table);
    } else if (word.is("DATA_COMPRESSION")) {
      reader_.expectSymbol("=");
      const std::string value = upperCase(reader_.next().raw);
      if (reader_.peek().is("ON")) {
        for (Property& each : partitionCompression(value)) table.compressions.push_back(std::move(each));
      } else {
        table.compressions.push_back({"data_compression_desc", value == "NONE" ? "" : value});
      }
    } else if (word.is("MEMORY_OPTIMIZED")) {
      reader_.expectSymbol("=");
      table.properties.push_back({"is_memory_optimized", reader_.next().is("ON") ? "1" : ""});
    } else if (word.is("DURABILITY")) {
      reader_.expectSymbol("=");
      table.properties.push_back({"durability", reader_.next().is("SCHEMA_ONLY") ? "1" : ""});
    } else {
      tellNotKept("the table's option " + upperCase(word.raw) + " isn't kept");
      while (!reader_.peek().isSymbol(",") && !reader_.peek().isSymbol(")")) {
        if (reader_.peek().isSymbol("(")) {
          reader_.skipParentheses();
        } else if (reader_.next().kind == TokenKind::End) {
          break;
        }
      }
    }
  } while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
}

// Once all columns are there: a computed one may come before those that it is made of.
void DdlReader::deriveTypes(TableDef& table) {
  for (const Computed& each : computed_) {
    const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                     [&](const ColumnDef& candidate) { return candidate.name == each.column; });
    if (column == table.columns.end()) continue;
    if (const auto derived = derivedType(catalogue_, each.text, table.columns)) {
      column->type = derived->type;
      column->nullable = column->nullable && derived->nullable;
    } else {
      tellNotKept("the type of the computed column '" + each.column + "' can't be told: nvarchar(4000) stands for it");
    }
  }
  computed_.clear();
}

// "= ON (HISTORY_TABLE = name, DATA_CONSISTENCY_CHECK = ON, HISTORY_RETENTION_PERIOD = 6 MONTHS)" or "= OFF".
void DdlReader::versioningOption(TableDef& table) {
  reader_.expectSymbol("=");
  VersioningDef& versioning = table.versioning.emplace();
  versioning.on = !reader_.acceptWord("OFF");
  if (!versioning.on) return;
  reader_.expectWord("ON");
  if (!reader_.acceptSymbol("(")) return;
  do {
    const Token& word = reader_.next();
    reader_.expectSymbol("=");
    if (word.is("HISTORY_TABLE")) {
      versioning.history = readObjectName(reader_);
      continue;
    }
    const Token& value = reader_.next();
    if (!word.is("HISTORY_RETENTION_PERIOD") || value.is("INFINITE")) continue;
    std::string unit = upperCase(reader_.next().raw);
    if (unit.ends_with('S')) unit.pop_back();
    versioning.properties = {{"history_retention_period", std::string(value.raw)},
                             {"history_retention_period_unit_desc", unit}};
  } while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
}

void DdlReader::period(TableDef& table) {
  for (const char* word : {"PERIOD", "FOR", "SYSTEM_TIME"}) reader_.expectWord(word);
  const std::vector<std::string> names = nameList();
  if (names.size() != 2) throw NotUnderstood{"a period has two columns", reader_.peek().line};
  table.periodStart = names[0];
  table.periodEnd = names[1];
}

// A filegroup, or a partition scheme with its column in brackets.
Placement DdlReader::placement() {
  Placement placement;
  placement.space = std::string(reader_.next().name());
  if (reader_.acceptSymbol("(")) {
    placement.column = reader_.expectIdentifier();
    reader_.expectSymbol(")");
  }
  return placement;
}

void DdlReader::tellNotKept(std::string reason) { notKept.push_back({reader_.position(), std::move(reason)}); }

void DdlReader::tableElement(TableDef& table) {
  static constexpr std::array<std::string_view, 6> constraintWords{"CONSTRAINT", "PRIMARY", "UNIQUE",
                                                                   "FOREIGN",    "CHECK",   "DEFAULT"};
  const Token& first = reader_.peek();
  if (isOneOf(first, constraintWords)) return constraint(table, nullptr);
  if (first.is("INDEX")) return inlineIndex(table, nullptr);
  if (first.is("PERIOD") && reader_.peek(1).is("FOR")) return period(table);
  table.columns.push_back(column(table));
  // The server lets a table constraint follow its column without a comma; column() has read it then.
}

ColumnDef DdlReader::column(TableDef& table) {
  ColumnDef column;
  column.name = reader_.expectIdentifier();
  if (reader_.acceptWord("AS")) {
    computedColumn(table, column);
    return column;
  }
  const Token& next = reader_.peek();
  if (equalNoCase(column.name, "timestamp") && !next.isIdentifier()) {
    column.type = namedType("timestamp");
  } else {
    const std::size_t begin = reader_.position();
    column.type = readType(reader_, &catalogue_);
    const bool listed = column.type.xtype == xtype::Xml && reader_.position() > begin + 1;
    if (listed && reader_.sourceBetween(begin, reader_.position()).ends_with(')'))
      tellNotKept("the XML schema collection of column '" + column.name + "' isn't kept");
  }
  const bool padded =
      isBinary(column.type.xtype) || column.type.xtype == xtype::Char || column.type.xtype == xtype::VarChar;
  if (padded && !ansiPadding_) column.properties.push_back({"is_not_ansi_padded", "1"});
  column.nullable = column.type.aliasNullable.value_or(true);
  bool nullWritten = false;
  for (;;) {
    if (reader_.peek().is("NULL")) {
      reader_.next();
      column.nullable = nullWritten = true;
    } else if (reader_.peek().is("NOT") && reader_.peek(1).is("NULL")) {
      reader_.next();
      reader_.next();
      column.nullable = false;
    } else if (!columnOption(table, column)) {
      break;
    }
  }
  if (column.identity || (column.type.baseName == "timestamp" && !nullWritten)) column.nullable = false;
  if (nullWritten) nullWritten_.push_back(column.name);
  return column;
}

void DdlReader::checkPrimaryKey(const TableDef& table) const {
  for (const IndexDef& index : table.indexes) {
    if (index.kind != KeyKind::PrimaryKey) continue;
    for (const std::string& name : index.columns)
      for (const std::string& column : nullWritten_)
        if (compareCollated(name, column) == 0)
          refuse("Cannot define PRIMARY KEY constraint on nullable column in table '" + table.name + "'.");
  }
}

bool DdlReader::columnOption(TableDef& table, ColumnDef& column) {
  static constexpr std::array<std::string_view, 7> constraintWords{"CONSTRAINT", "PRIMARY", "UNIQUE",    "FOREIGN",
                                                                   "CHECK",      "DEFAULT", "REFERENCES"};
  static constexpr std::array<std::array<std::string_view, 2>, 4> flags{{{"SPARSE", "is_sparse"},
                                                                         {"FILESTREAM", "is_filestream"},
                                                                         {"HIDDEN", "is_hidden"},
                                                                         {"PERSISTED", "is_persisted"}}};
  const Token& token = reader_.peek();
  if (isOneOf(token, constraintWords)) {
    constraint(table, &column);
  } else if (token.is("IDENTITY")) {
    identity(column);
  } else if (token.is("ROWGUIDCOL")) {
    reader_.next();
    column.rowGuid = true;
    column.properties.push_back({"is_rowguidcol", "1"});
  } else if (token.is("COLLATE")) {
    reader_.next();
    const std::string collation = reader_.expectIdentifier();
    if (!equalNoCase(collation, "database_default")) column.properties.push_back({"collation_name", collation});
  } else if (token.is("NOT") && reader_.peek(1).is("FOR")) {
    notForReplication();
    column.properties.push_back({"is_not_for_replication", "1"});
  } else if ((token.is("MASKED") || token.is("ENCRYPTED")) && reader_.peek(1).is("WITH")) {
    reader_.next();
    reader_.next();
    const std::size_t begin = reader_.position();
    reader_.skipParentheses();
    column.properties.push_back({token.is("MASKED") ? "masking_function" : "encryption",
                                 std::string(reader_.sourceBetween(begin, reader_.position()))});
  } else if (token.is("GENERATED")) {
    generated(column);
  } else if (token.is("COLUMN_SET") && reader_.peek(1).is("FOR")) {
    for (const char* word : {"COLUMN_SET", "FOR", "ALL_SPARSE_COLUMNS"}) reader_.expectWord(word);
    column.properties.push_back({"is_column_set", "1"});
  } else if (token.is("INDEX")) {
    inlineIndex(table, &column);
  } else {
    for (const auto& [word, property] : flags) {
      if (!token.is(word)) continue;
      reader_.next();
      column.properties.push_back({std::string(property), "1"});
      return true;
    }
    return false;
  }
  return true;
}

// GENERATED ALWAYS AS ROW | TRANSACTION_ID | SEQUENCE_NUMBER START | END, by their numbers in the views.
void DdlReader::generated(ColumnDef& column) {
  for (const char* word : {"GENERATED", "ALWAYS", "AS"}) reader_.expectWord(word);
  const Token& what = reader_.next();
  const int first = what.is("ROW") ? 1 : what.is("TRANSACTION_ID") ? 7 : 9;
  const bool end = reader_.acceptWord("END");
  if (!end) reader_.expectWord("START");
  column.properties.push_back({"generated_always_type", std::to_string(first + end)});
  if (first == 1) column.nullable = false;
}

void DdlReader::notForReplication() {
  reader_.expectWord("NOT");
  reader_.expectWord("FOR");
  reader_.expectWord("REPLICATION");
}

// NO ACTION, CASCADE, SET NULL, SET DEFAULT, by their numbers in the views.
int DdlReader::referentialAction() {
  if (reader_.acceptWord("CASCADE")) return 1;
  if (!reader_.acceptWord("SET")) {
    reader_.expectWord("NO");
    reader_.expectWord("ACTION");
    return 0;
  }
  if (reader_.acceptWord("NULL")) return 2;
  reader_.expectWord("DEFAULT");
  return 3;
}

void DdlReader::identity(ColumnDef& column) {
  reader_.expectWord("IDENTITY");
  column.identity = true;
  if (!reader_.acceptSymbol("(")) return;
  const auto number = [&] {
    std::string text;
    while (reader_.peek().isSymbol("-") || reader_.peek().isSymbol("+")) text += reader_.next().raw;
    if (reader_.peek().kind != TokenKind::Number) throw NotUnderstood{"IDENTITY without a number", reader_.peek().line};
    return text + std::string(reader_.next().raw);
  };
  column.identitySeed = number();
  reader_.expectSymbol(",");
  column.identityIncrement = number();
  reader_.expectSymbol(")");
}

void DdlReader::computedColumn(TableDef& table, ColumnDef& column) {
  const std::string written(expression());
  column.computedText = storedExpression(written, catalogue_.serverMajor());
  column.type = namedType("nvarchar(4000)");
  computed_.push_back({column.name, written});
  for (;;) {
    if (reader_.peek().is("NOT") && reader_.peek(1).is("NULL")) {
      reader_.next();
      reader_.next();
      column.nullable = false;
    } else if (!columnOption(table, column)) {
      return;
    }
  }
}

void DdlReader::constraint(TableDef& table, ColumnDef* column) {
  std::string name;
  if (reader_.acceptWord("CONSTRAINT")) name = reader_.expectIdentifier();
  const Token& kind = reader_.peek();
  if (kind.is("PRIMARY")) {
    reader_.next();
    reader_.expectWord("KEY");
    keyConstraint(table, name, true, column);
  } else if (kind.is("UNIQUE")) {
    reader_.next();
    keyConstraint(table, name, false, column);
  } else if (kind.is("FOREIGN") || (column && kind.is("REFERENCES"))) {
    foreignKey(table, name, column);
  } else if (kind.is("CHECK")) {
    check(table, name, column);
  } else if (kind.is("DEFAULT")) {
    defaultValue(name, column);
  } else if (column && (kind.is("NULL") || kind.is("NOT"))) {
    return;  // a named NOT NULL: the caller reads it
  } else {
    throw NotUnderstood{"unknown constraint before '" + std::string(kind.raw.substr(0, 40)) + "'", kind.line};
  }
}

void DdlReader::keyConstraint(TableDef& table, const std::string& name, bool primary, const ColumnDef* column) {
  IndexDef index;
  index.name = name;
  index.kind = primary ? KeyKind::PrimaryKey : KeyKind::Unique;
  index.clustered = primary;
  index.unique = true;
  clusteredWords(index);
  if (!column || reader_.peek().isSymbol("(")) {
    keyColumns(index);
  } else {
    index.columns = {column->name};
    index.descending = {false};
  }
  indexTail(index);
  table.indexes.push_back(std::move(index));
}

void DdlReader::foreignKey(TableDef& table, const std::string& name, const ColumnDef* column) {
  ForeignKeyDef key;
  key.name = name;
  if (column) key.columns = {column->name};
  if (reader_.acceptWord("FOREIGN")) {
    reader_.expectWord("KEY");
    if (!column || reader_.peek().isSymbol("(")) key.columns = nameList();
  }
  reader_.expectWord("REFERENCES");
  key.referenced = readObjectName(reader_);
  if (reader_.peek().isSymbol("(")) key.referencedColumns = nameList();
  for (;;) {
    if (reader_.peek().is("ON") && (reader_.peek(1).is("DELETE") || reader_.peek(1).is("UPDATE"))) {
      reader_.next();
      const std::string event = lowerCase(reader_.next().raw);
      if (const int action = referentialAction(); action != 0)
        key.properties.push_back({event + "_referential_action", std::to_string(action)});
    } else if (reader_.peek().is("NOT") && reader_.peek(1).is("FOR")) {
      notForReplication();
      key.properties.push_back({"is_not_for_replication", "1"});
    } else {
      break;
    }
  }
  table.foreignKeys.push_back(std::move(key));
}

void DdlReader::check(TableDef& table, const std::string& name, const ColumnDef* column) {
  reader_.expectWord("CHECK");
  CheckDef def;
  if (reader_.peek().is("NOT")) {
    notForReplication();
    def.properties.push_back({"is_not_for_replication", "1"});
  }
  const std::size_t begin = reader_.position();
  reader_.skipParentheses();
  def.name = name;
  if (column) def.column = column->name;
  def.text = storedExpression(reader_.sourceBetween(begin, reader_.position()), catalogue_.serverMajor());
  table.checks.push_back(std::move(def));
}

void DdlReader::defaultValue(const std::string& name, ColumnDef* column) {
  reader_.expectWord("DEFAULT");
  const std::string_view written = expression();
  std::string text = storedSequenceDefault(written);
  if (text.empty()) text = storedExpression(written, catalogue_.serverMajor());
  std::string target;
  if (reader_.acceptWord("FOR")) target = reader_.expectIdentifier();
  if (reader_.peek().is("WITH") && reader_.peek(1).is("VALUES")) {
    reader_.next();
    reader_.next();
    withValues = true;
  }
  if (!target.empty()) {
    defaultsFor.push_back({name, std::move(text), std::move(target)});
  } else if (column) {
    column->defaultName = name;
    column->defaultText = std::move(text);
  } else {
    throw NotUnderstood{"DEFAULT without its column", reader_.peek().line};
  }
}

}  // namespace qrel::tsql
