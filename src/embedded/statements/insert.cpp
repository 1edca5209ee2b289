#include "embedded/statements/insert.h"

#include <optional>
#include <string>
#include <vector>

#include "embedded/language/refusal.h"
#include "embedded/statements/columnValues.h"
#include "embedded/statements/insertPlan.h"
#include "embedded/statements/literals.h"

namespace qrel::tsql {

namespace {

// NEXT VALUE FOR a sequence.
bool readNextValue(StatementRun& run, Value& value) {
  TokenReader& reader = run.reader;
  if (!reader.peek().is("NEXT") || !reader.peek(1).is("VALUE") || !reader.peek(2).is("FOR")) return false;
  reader.moveTo(reader.position() + 3);
  const ObjectName name = run.localName(readObjectName(reader));
  if (run.running()) value = Value::ofInteger(run.changes().nextSequenceValue(name));
  return true;
}

// Reads "( ... )" into values of the columns' types.
void readRow(StatementRun& run, InsertPlan& plan) {
  TokenReader& reader = run.reader;
  std::vector<Value>& values = plan.row;
  values.clear();
  reader.expectSymbol("(");
  do {
    const std::size_t index = values.size();
    Value& value = values.emplace_back();
    if (!readLiteral(reader, value)) {
      if (reader.acceptWord("DEFAULT")) {
        if (run.running() && index < plan.given) value = defaultOf(run, defaultFor(run, *plan.columns[index].column));
      } else if (!readNextValue(run, value)) {
        const TypedSql written = run.translator().typedExpression();
        if (run.running()) value = run.evaluate(written);
      }
    }
    if (run.running() && index < plan.given && !value.null) value = convertTo(plan.columns[index].column->type, value);
  } while (reader.acceptSymbol(","));
  reader.expectSymbol(")");
  if (!run.running() || values.size() == plan.given) return;
  const bool few = values.size() > plan.given;
  refuse(
      "There are " + std::string(few ? "fewer" : "more") +
      " columns in the INSERT statement than values specified "
      "in the VALUES clause. The number of values in the VALUES clause must match the number of columns specified in "
      "the INSERT statement.");
}

// How many tokens of an INSERT are looked through for its VALUES; a longer one is read like one that is new.
constexpr std::size_t longestKnownHead = 200;

// Rows of temporary tables aren't the database's.
void countInserted(StatementRun& run, const InsertPlan& plan, std::int64_t rows) {
  const bool kept = !plan.table || !plan.table->temporary;
  run.result.rows = kept ? rows : 0;
  run.memory.inserted += kept ? rows : 0;
  run.countRows(rows);
}

void insertValues(StatementRun& run, InsertPlan& plan) {
  TokenReader& reader = run.reader;
  std::int64_t count = 0;
  const auto rows = [&] {
    do {
      readRow(run, plan);
      if (!run.running()) continue;
      insertRow(run, plan, plan.row);
      ++count;
    } while (reader.acceptSymbol(","));
  };
  if (reader.acceptWord("DEFAULT")) {
    reader.expectWord("VALUES");
    plan.row.clear();
    if (!run.act()) return;
    insertRow(run, plan, plan.row);
    count = 1;
  } else {
    reader.expectWord("VALUES");
    const std::size_t first = reader.position();
    readRow(run, plan);
    if (reader.peek().isSymbol(",")) {
      reader.moveTo(first);  // several rows: all or none, and that costs a savepoint
      if (run.running()) {
        run.atomically(rows);
      } else {
        rows();
      }
      if (!run.act()) return;
    } else {
      if (!run.act()) return;
      insertRow(run, plan, plan.row);
      count = 1;
    }
  }
  countInserted(run, plan, count);
}

void insertQuery(StatementRun& run, InsertPlan& plan) {
  std::vector<DataType> kinds;
  const std::string sql = run.translator().select(nullptr, &kinds);
  if (!run.act()) return;
  if (run.memory.rowLimit) run.notUnderstood("SET ROWCOUNT is in force");
  kinds.resize(plan.given);
  std::vector<std::vector<Value>> rows;  // all of them first: the query may read the table that grows
  {
    sqlite::Statement query(run.database(), sql);
    run.bind(query);
    const auto count = static_cast<std::size_t>(sqlite3_column_count(query.get()));
    if (count != plan.given) {
      refuse("The select list for the INSERT statement contains " + std::string(count < plan.given ? "fewer" : "more") +
             " items than the insert list. The number of SELECT values must match the number of INSERT columns.");
    }
    while (query.step()) {
      auto& row = rows.emplace_back();
      for (std::size_t i = 0; i < count; ++i) row.push_back(as(kinds[i], sqlite::valueOf(query, static_cast<int>(i))));
    }
  }
  run.atomically([&] {
    for (auto& row : rows) {
      run.checkStop();
      for (std::size_t i = 0; i < row.size(); ++i)
        if (!row[i].null) row[i] = convertTo(plan.columns[i].column->type, row[i]);
      insertRow(run, plan, row);
    }
  });
  countInserted(run, plan, static_cast<std::int64_t>(rows.size()));
}

// A shape that was seen before needs no reading up to its VALUES. False: it is new, and nothing has been read.
bool insertOfKnownShape(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::size_t start = reader.position();
  for (std::size_t i = 1; i < longestKnownHead && run.running(); ++i) {
    const Token& token = reader.peek(i);
    if (token.isSymbol(";") || token.kind == TokenKind::End) return false;
    if (!token.is("VALUES")) continue;
    const auto kept = run.memory.plans.find(reader.sourceBetween(start, start + i));
    if (kept == run.memory.plans.end()) return false;
    reader.moveTo(start + i);
    insertValues(run, kept->second);
    return true;
  }
  return false;
}

// The columns behind the table's name; nothing where none are listed. A bracket may also begin a query.
std::optional<std::vector<std::string>> listedColumns(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::size_t bracket = reader.position();
  if (!reader.acceptSymbol("(")) return std::nullopt;
  if (run.translator().atSelect() || reader.peek().isSymbol("(")) {
    reader.moveTo(bracket);
    return std::nullopt;
  }
  std::vector<std::string> columns;
  do {
    columns.push_back(readObjectName(reader).name);  // the table's name may stand in front
  } while (reader.acceptSymbol(","));
  reader.expectSymbol(")");
  return columns;
}

}  // namespace

void insertStatement(StatementRun& run) {
  if (insertOfKnownShape(run)) return;
  TokenReader& reader = run.reader;
  const std::size_t start = reader.position();
  reader.next();
  reader.acceptWord("INTO");
  if (reader.peek().is("TOP")) run.notUnderstood("INSERT TOP");
  const ObjectName name = readTableName(reader);
  if (reader.peek().is("WITH") && reader.peek(1).isSymbol("(")) {
    reader.next();
    reader.skipParentheses();
  }
  const std::optional<std::vector<std::string>> columns = listedColumns(run);
  if (reader.peek().is("OUTPUT")) run.notUnderstood("OUTPUT isn't carried out");
  if (reader.peek().is("EXEC") || reader.peek().is("EXECUTE")) run.notUnderstood("INSERT of a procedure's rows");
  const bool values = reader.peek().is("VALUES");
  const bool defaults = reader.peek().is("DEFAULT") && reader.peek(1).is("VALUES");
  if (!values && !defaults && !run.translator().atSelect()) run.notUnderstood("VALUES or a query is expected");
  if (!run.running()) {
    InsertPlan none;
    if (values) return insertValues(run, none);
    if (!defaults) run.translator().select();
    run.act();
    return;
  }
  const std::vector<std::string> nothing;
  const std::vector<std::string>* list = columns ? &*columns : defaults ? &nothing : nullptr;
  if (values) return insertValues(run, planFor(run, start, reader.position(), name, list));
  // The same text in front of a query or DEFAULT VALUES may mean other columns, so these plans aren't kept.
  InsertPlan plan = makePlan(run, run.requireTable(run.localName(name)), list);
  return defaults ? insertValues(run, plan) : insertQuery(run, plan);
}

}  // namespace qrel::tsql
