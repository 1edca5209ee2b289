// INSERT. Rows of literals take a short way: from their tokens through the column's type into a prepared statement.
#include <algorithm>
#include <charconv>

#include "embedded/change/parts.h"
#include "embedded/run/interpreter.h"
#include "embedded/sqlite/quoting.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr std::int64_t firstVersion = 2000;

bool isVersionColumn(const TableInfo::Column& column) { return column.type.baseName == "timestamp"; }

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

int hexDigit(char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; }

Value binaryLiteral(std::string_view digits) {
  digits.remove_prefix(2);
  Value value = Value::ofText("");
  value.type = DataType::Binary;
  value.text.reserve((digits.size() + 1) / 2);
  std::size_t at = 0;
  if (digits.size() % 2 == 1) value.text += static_cast<char>(hexDigit(digits[at++]));
  for (; at < digits.size(); at += 2)
    value.text += static_cast<char>(hexDigit(digits[at]) * 16 + hexDigit(digits[at + 1]));
  return value;
}

Value decimalLiteral(std::string text) {
  Value value = Value::ofText(std::move(text));
  value.type = DataType::Decimal;
  return value;
}

Value numberLiteral(std::string_view digits, bool negative) {
  if (digits.find_first_of(".eE") == std::string_view::npos) {
    std::int64_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec == std::errc()) return Value::ofInteger(negative ? -number : number);
  }
  if (digits.find_first_of("eE") != std::string_view::npos) {
    double number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return Value::ofDouble(negative ? -number : number);
  }
  std::string text = negative ? "-" : "";
  if (digits.starts_with('.')) text += '0';
  text += digits;
  if (text.back() == '.') text.pop_back();
  return decimalLiteral(std::move(text));
}

Value moneyLiteral(std::string_view raw, bool negative) {
  std::string text = negative ? "-" : "";
  for (const char c : raw.substr(1))
    if (c != ',') text += c;
  return decimalLiteral(std::move(text));
}

// The value of a kept default that is one literal, such as ('x'), ((1)), ((-1)) or (NULL).
std::optional<Value> literalDefault(const std::string& text) {
  const auto tokens = lex(text);
  std::vector<const Token*> parts;
  for (const Token& token : tokens)
    if (!token.isSymbol("(") && !token.isSymbol(")") && token.kind != TokenKind::End) parts.push_back(&token);
  const bool negative = parts.size() == 2 && parts[0]->isSymbol("-");
  if (parts.size() != 1 && !negative) return std::nullopt;
  const Token& token = *parts.back();
  switch (token.kind) {
    case TokenKind::Number:
      return numberLiteral(token.raw, negative);
    case TokenKind::Money:
      return moneyLiteral(token.raw, negative);
    case TokenKind::String:
      return negative ? std::nullopt : std::optional(Value::ofText(token.text));
    case TokenKind::Binary:
      return negative ? std::nullopt : std::optional(binaryLiteral(token.raw));
    default:
      return token.is("NULL") && !negative ? std::optional(Value()) : std::nullopt;
  }
}

}  // namespace

// A literal in front of "," or ")"; the reader stays where it is when there is something else.
bool Interpreter::readLiteral(Value& value) {
  const std::size_t signs = reader_.peek().isSymbol("-") || reader_.peek().isSymbol("+") ? 1 : 0;
  const Token& token = reader_.peek(signs);
  const Token& behind = reader_.peek(signs + 1);
  if (!behind.isSymbol(",") && !behind.isSymbol(")")) return false;
  const bool negative = signs == 1 && reader_.peek().raw == "-";
  switch (token.kind) {
    case TokenKind::Number:
      value = numberLiteral(token.raw, negative);
      break;
    case TokenKind::Money:
      value = moneyLiteral(token.raw, negative);
      break;
    case TokenKind::String:
      if (signs == 1) return false;
      value = Value::ofText(token.text);
      break;
    case TokenKind::Binary:
      if (signs == 1) return false;
      value = binaryLiteral(token.raw);
      break;
    default:
      if (signs == 1 || !token.is("NULL")) return false;
      value = Value();
  }
  reader_.moveTo(reader_.position() + signs + 1);
  return true;
}

InsertPlan::Column Interpreter::defaultFor(const TableInfo::Column& column) {
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
    source.sequence = localName(readObjectName(reader));
    return source;
  }
  reader.moveTo(0);
  source.sql = Translator(context(), reader).expression();
  return source;
}

Value Interpreter::defaultOf(const InsertPlan::Column& source) {
  if (source.fixed) return *source.fixed;
  if (source.sequence)
    return convertTo(source.column->type, Value::ofInteger(changes().nextSequenceValue(*source.sequence)));
  if (source.sql.empty()) return {};
  const Value value = evaluate(source.sql);
  return value.null ? value : convertTo(source.column->type, value);
}

// The next number of an identity column, the next stamp of a timestamp column.
Value Interpreter::generated(const TableInfo& table, const TableInfo::Column& column) {
  const std::string highest = "select max(" + quoteColumn(column.name) + "), min(" + quoteColumn(column.name) +
                              ") from " + quoteName(table.storage);
  if (isVersionColumn(column)) {
    auto [kept, fresh] = state_.versions.try_emplace(table.id, firstVersion);
    if (fresh) {
      sqlite::Statement query(*database_, highest);
      if (query.step() && !query.isNull(0)) kept->second = numberOf(query.text(0));
    }
    Value value = Value::ofText(bytesOf(++kept->second));
    value.type = DataType::Binary;
    return value;
  }
  auto& seeds = database_->cached("select seed, increment from cat_columns where object_id = ?1 and colid = ?2");
  seeds.bind(1, table.id).bind(2, std::int64_t{column.colid});
  seeds.step();
  const std::int64_t seed = seeds.integer(0);
  const std::int64_t increment = seeds.integer(1);
  seeds.reset();
  auto [kept, fresh] = state_.identities.try_emplace(table.id, seed - increment);
  if (fresh) {
    sqlite::Statement query(*database_, highest);
    const int end = increment < 0 ? 1 : 0;
    if (query.step() && !query.isNull(end)) kept->second = query.integer(end);
  }
  kept->second += increment;
  setGlobal("@@identity", kept->second);
  return convertTo(column.type, Value::ofInteger(kept->second));
}

InsertPlan Interpreter::makePlan(std::shared_ptr<const TableInfo> table, const std::vector<std::string>* columns) {
  InsertPlan plan;
  const bool explicitIdentity = state_.identityInsert == table->storage;
  std::vector<const TableInfo::Column*> given;
  if (columns) {
    for (const std::string& name : *columns) {
      const auto* column = table->find(name);
      if (!column) refuse("Invalid column name '" + name + "'.");
      if (std::find(given.begin(), given.end(), column) != given.end())
        refuse("The column name '" + column->name + "' is specified more than once in the column list of an INSERT.");
      if (column->computed || isVersionColumn(*column))
        refuse("The column \"" + column->name + "\" cannot be modified because it is a computed or timestamp column.");
      if (column->identity && !explicitIdentity) {
        refuse("Cannot insert explicit value for identity column in table '" + table->name +
               "' when IDENTITY_INSERT is set to OFF.");
      }
      given.push_back(column);
    }
  } else {
    for (const auto& column : table->columns)
      if (!column.computed && !column.identity) given.push_back(&column);
  }
  for (const auto* column : given) {
    InsertPlan::Column& source = plan.columns.emplace_back();
    source.column = column;
    source.given = true;
  }
  plan.given = plan.columns.size();
  for (const auto& column : table->columns) {
    if (column.computed || std::find(given.begin(), given.end(), &column) != given.end()) continue;
    if (column.identity && explicitIdentity) {
      refuse("Explicit value must be specified for identity column in table '" + table->name +
             "' when IDENTITY_INSERT is set to ON.");
    }
    plan.columns.push_back(defaultFor(column));
  }
  std::string names, marks;
  for (const auto& source : plan.columns) {
    names += (names.empty() ? "" : ", ") + quoteColumn(source.column->name);
    marks += marks.empty() ? "?" : ", ?";
  }
  const std::string sql = "insert into " + quoteName(table->storage) +
                          (names.empty() ? " default values" : " (" + names + ") values (" + marks + ")");
  plan.insert = &database_->cached(sql);
  plan.table = std::move(table);
  return plan;
}

InsertPlan& Interpreter::planFor(std::size_t start, std::size_t end, const ObjectName& table,
                                 const std::vector<std::string>* columns) {
  const std::string_view key = reader_.sourceBetween(start, end);
  if (const auto kept = state_.plans.find(key); kept != state_.plans.end()) return kept->second;
  InsertPlan plan = makePlan(requireTable(localName(table)), columns);
  return state_.plans.insert_or_assign(std::string(key), std::move(plan)).first->second;
}

void Interpreter::insertStatement() {
  // A shape that was seen before needs no reading up to its VALUES.
  const std::size_t start = reader_.position();
  for (std::size_t i = 1; i < 200 && running(); ++i) {
    const Token& token = reader_.peek(i);
    if (token.isSymbol(";") || token.kind == TokenKind::End) break;
    if (!token.is("VALUES")) continue;
    const auto kept = state_.plans.find(reader_.sourceBetween(start, start + i));
    if (kept == state_.plans.end()) break;
    reader_.moveTo(start + i);
    return insertValues(kept->second);
  }
  reader_.next();
  reader_.acceptWord("INTO");
  if (reader_.peek().is("TOP")) notUnderstood("INSERT TOP");
  if (reader_.peek().kind == TokenKind::Variable) notUnderstood("table variables aren't kept");
  const ObjectName name = readObjectName(reader_);
  if (reader_.peek().is("WITH") && reader_.peek(1).isSymbol("(")) {
    reader_.next();
    reader_.skipParentheses();
  }
  std::vector<std::string> columns;
  const std::size_t afterBracket = reader_.position() + 1;
  bool listed = reader_.peek().isSymbol("(");
  if (listed) {
    reader_.next();
    listed = !translator().atSelect() && !reader_.peek().isSymbol("(");
    reader_.moveTo(listed ? afterBracket : afterBracket - 1);
  }
  if (listed) {
    do {
      ObjectName column = readObjectName(reader_);  // the table's name may stand in front
      columns.push_back(std::move(column.name));
    } while (reader_.acceptSymbol(","));
    reader_.expectSymbol(")");
  }
  if (reader_.peek().is("OUTPUT")) notUnderstood("OUTPUT isn't carried out");
  if (reader_.peek().is("EXEC") || reader_.peek().is("EXECUTE")) notUnderstood("INSERT of a procedure's rows");
  const bool values = reader_.peek().is("VALUES");
  const bool defaults = reader_.peek().is("DEFAULT") && reader_.peek(1).is("VALUES");
  if (!values && !defaults && !translator().atSelect()) notUnderstood("VALUES or a query is expected");
  if (!running()) {
    InsertPlan none;
    if (values) return insertValues(none);
    if (!defaults) translator().select();
    act();
    return;
  }
  const std::vector<std::string> nothing;
  const std::vector<std::string>* list = listed ? &columns : defaults ? &nothing : nullptr;
  const std::size_t end = reader_.position();
  if (!values) {
    // The same text in front of VALUES may mean other columns, so these plans aren't kept.
    InsertPlan plan = makePlan(requireTable(localName(name)), list);
    return defaults ? insertValues(plan) : insertQuery(plan);
  }
  insertValues(planFor(start, end, name, list));
}

// NEXT VALUE FOR a sequence.
bool Interpreter::readNextValue(Value& value) {
  if (!reader_.peek().is("NEXT") || !reader_.peek(1).is("VALUE") || !reader_.peek(2).is("FOR")) return false;
  reader_.moveTo(reader_.position() + 3);
  const ObjectName name = localName(readObjectName(reader_));
  if (running()) value = Value::ofInteger(changes().nextSequenceValue(name));
  return true;
}

// Reads "( ... )" into values of the columns' types.
void Interpreter::readRow(InsertPlan& plan, std::vector<Value>& values) {
  values.clear();
  reader_.expectSymbol("(");
  do {
    const std::size_t index = values.size();
    Value& value = values.emplace_back();
    if (!readLiteral(value)) {
      if (reader_.acceptWord("DEFAULT")) {
        if (running() && index < plan.given) value = defaultOf(defaultFor(*plan.columns[index].column));
      } else if (!readNextValue(value)) {
        const std::string sql = translator().expression();
        if (running()) value = evaluate(sql);
      }
    }
    if (running() && index < plan.given && !value.null) value = convertTo(plan.columns[index].column->type, value);
  } while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
  if (!running() || values.size() == plan.given) return;
  const bool few = values.size() > plan.given;
  refuse(
      "There are " + std::string(few ? "fewer" : "more") +
      " columns in the INSERT statement than values specified "
      "in the VALUES clause. The number of values in the VALUES clause must match the number of columns specified in "
      "the INSERT statement.");
}

void Interpreter::insertValues(InsertPlan& plan) {
  std::int64_t count = 0;
  const auto rows = [&] {
    do {
      readRow(plan, row_);
      if (!running()) continue;
      insertRow(plan, row_);
      ++count;
    } while (reader_.acceptSymbol(","));
  };
  if (reader_.acceptWord("DEFAULT")) {
    reader_.expectWord("VALUES");
    row_.clear();
    if (!act()) return;
    insertRow(plan, row_);
    count = 1;
  } else {
    reader_.expectWord("VALUES");
    const std::size_t first = reader_.position();
    readRow(plan, row_);
    if (reader_.peek().isSymbol(",")) {
      reader_.moveTo(first);
      if (running()) {
        atomically(rows);
      } else {
        rows();
      }
      if (!act()) return;
    } else {
      if (!act()) return;
      insertRow(plan, row_);
      count = 1;
    }
  }
  doing_.rows = count;
  state_.inserted += count;
  setGlobal("@@rowcount", count);
  result_.recordsAffected = count;
}

void Interpreter::insertQuery(InsertPlan& plan) {
  const std::string sql = translator().select();
  if (!act()) return;
  if (state_.rowLimit) notUnderstood("SET ROWCOUNT is in force");
  std::vector<std::vector<Value>> rows;  // all of them first: the query may read the table that grows
  {
    sqlite::Statement query(*database_, sql);
    bind(query);
    const auto count = static_cast<std::size_t>(sqlite3_column_count(query.get()));
    if (count != plan.given) {
      refuse("The select list for the INSERT statement contains " + std::string(count < plan.given ? "fewer" : "more") +
             " items than the insert list. The number of SELECT values must match the number of INSERT columns.");
    }
    while (query.step()) {
      auto& row = rows.emplace_back();
      for (std::size_t i = 0; i < count; ++i) row.push_back(sqlite::valueOf(query, static_cast<int>(i)));
    }
  }
  atomically([&] {
    for (auto& row : rows) {
      checkStop();
      for (std::size_t i = 0; i < row.size(); ++i)
        if (!row[i].null) row[i] = convertTo(plan.columns[i].column->type, row[i]);
      insertRow(plan, row);
    }
  });
  doing_.rows = static_cast<std::int64_t>(rows.size());
  state_.inserted += doing_.rows;
  setGlobal("@@rowcount", doing_.rows);
  result_.recordsAffected = doing_.rows;
}

// `values` holds the given columns' values in their stored form.
void Interpreter::insertRow(InsertPlan& plan, std::vector<Value>& values) {
  sqlite::Statement& insert = *plan.insert;
  for (std::size_t i = 0; i < plan.columns.size(); ++i) {
    const InsertPlan::Column& source = plan.columns[i];
    const TableInfo::Column& column = *source.column;
    const int at = static_cast<int>(i) + 1;
    if (isVersionColumn(column) || (!source.given && column.identity)) {
      insert.bind(at, generated(*plan.table, column));
      continue;
    }
    const bool fixed = !source.given && source.fixed;
    const Value computed = source.given || fixed ? Value() : defaultOf(source);
    const Value& value = source.given ? values[i] : fixed ? *source.fixed : computed;
    if (value.null && !column.nullable) {
      refuse("Cannot insert the value NULL into column '" + column.name + "', table '" +
             session_.open().facts.database + "." + plan.table->storage +
             "'; column does not allow nulls. INSERT fails.");
    }
    insert.bind(at, value);
    if (column.identity) {  // numbers go on behind the highest given one
      auto kept = state_.identities.find(plan.table->id);
      if (kept != state_.identities.end() && value.integer > kept->second) kept->second = value.integer;
    }
  }
  try {
    insert.run();
  } catch (const DataError& error) {
    refuseDuplicate(*plan.table, error);
  }
}

// Says in the server's words which key a row breaks, when that is what went wrong.
void Interpreter::refuseDuplicate(const TableInfo& table, const DataError& error) {
  constexpr std::string_view prefix = "UNIQUE constraint failed: ";
  if (!error.description.starts_with(prefix)) throw error;
  const std::string_view failed = std::string_view(error.description).substr(prefix.size());
  auto& query = database_->cached(
      "select i.name, i.kind, group_concat(?2 || '.' || c.name, ', ') from cat_indexes i join (select * from "
      "cat_indexkeys order by keyno) k on k.object_id = i.object_id and k.indid = i.indid and k.keyno > 0 join "
      "cat_columns c on c.object_id = i.object_id and c.colid = k.colid where i.object_id = ?1 and i.is_unique = 1 "
      "group by i.indid");
  query.bind(1, table.id).bind(2, table.storage);
  std::string name, kind;
  while (query.step()) {
    const std::string marked = "index '" + table.storage + "." + std::string(query.text(0)) + "'";
    if (failed != marked && failed != query.text(2)) continue;
    name = query.text(0);
    kind = query.text(1);
  }
  query.reset();
  if (kind == "IX")
    refuse("Cannot insert duplicate key row in object '" + table.storage + "' with unique index '" + name + "'.");
  refuse("Violation of " + std::string(kind == "PK" ? "PRIMARY KEY" : "UNIQUE KEY") + " constraint '" + name +
         "'. Cannot insert duplicate key in object '" + table.storage + "'.");
}

}  // namespace qrel::tsql
