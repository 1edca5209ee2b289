// T-SQL queries and expressions in SQLite's words.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "embedded/language/lexer.h"
#include "embedded/sqlite/storageNames.h"
#include "embedded/types/expressionType.h"

namespace qrel::tsql {

struct CommonTables;

// What a translation needs to know of its surroundings.
struct TranslateContext {
  const Catalogue* catalogue = nullptr;
  std::string database;  // the current one
  // Gives the SQLite schema name ("db2") under which another database of the server is attached; raises
  // 0x80040E37 when there is none. "master" and the current database need no call.
  std::function<std::string(const std::string& database)> attach;
  // For a connection that only reads. Otherwise "text" that names no column is a text, as scripts want that were
  // written for SET QUOTED_IDENTIFIER OFF.
  bool readOnly = false;
  // The batch's variables by lower-case name with @; may be null. Their types decide what "+" means.
  const std::map<std::string, TypeRef>* variables = nullptr;
  // A table whose columns an expression or condition may name without a FROM: that of a computed column, a CHECK, an
  // index. May be null: then nothing is known of the types of columns.
  const TableInfo* table = nullptr;
  // What stands in front of the statement by WITH; may be null.
  std::shared_ptr<const CommonTables> common;
};

// A translated expression or column; `kind` is Empty where the type isn't known before it runs. SQLite gives an exact
// number as text: `as` makes it a number again.
struct TypedSql {
  std::string sql;
  DataType kind = DataType::Empty;
  ExpressionType type{};  // as the server derives it
};
Value as(DataType kind, Value value);

// What UPDATE and DELETE change.
struct RowChange {
  ObjectName table;                  // the target as written, or the table that FROM has under this name
  std::vector<std::string> columns;  // that SET names, without their table
  std::vector<DataType> kinds;       // of the values of these columns, as in TypedSql
  std::string rows;  // a query: a row's number and, behind it, the columns' values. A row may come twice.
};

// Reads exactly one query or expression at the reader, by grammar, and leaves the reader behind it: the text that
// follows belongs to the next statement even without a semicolon. What can't be translated raises NotUnderstood;
// an unknown table raises DataError 0x80040E37 "Invalid object name 'x'.".
// Variables become parameters that SQLite binds by name (parameterOfVariable; bindVariables binds them), a "?" the @p1,
// @p2, ... of its place among the question marks.
// A column of a query's result. Its name is empty where the query gives it none.
struct ResultColumn {
  std::string name;
  DataType kind = DataType::Empty;
  ExpressionType type{};
};

// SELECT ... INTO: the table that is to be made, empty without INTO, and what the query gives.
struct IntoTable {
  ObjectName table;
  ObjectName from{};  // the one table that it reads; empty where it reads others, or several
  std::vector<ResultColumn> columns{};
  bool complete = true;  // false: there may be more columns
};

class Translator {
 public:
  Translator(const TranslateContext& context, TokenReader& reader) : context_(context), reader_(reader) {}

  // SELECT ... (also WITH cte AS, UNION, ORDER BY, TOP, OFFSET/FETCH). `assigned` (may be null) receives the variables
  // of SELECT @a = x, @b = y in order of the result's columns; a query without assignments leaves it empty. `kinds`
  // (may be null) receives the columns' kinds, as many as are known.
  std::string select(std::vector<std::string>* assigned = nullptr, std::vector<DataType>* kinds = nullptr);
  // The same for a statement of its own, which may make a table.
  std::string select(std::vector<std::string>* assigned, IntoTable& into);
  // WITH and its queries, up to the statement's own word. They are in force where the context has them.
  std::shared_ptr<const CommonTables> commonTables();
  // True where a query begins: SELECT, WITH, or "(" that leads to SELECT.
  bool atSelect() const;
  std::string expression();
  TypedSql typedExpression();
  // A condition as in WHERE and IF.
  std::string condition();
  // UPDATE and DELETE from their target on. That it is no table is left to who carries them out.
  RowChange update();
  RowChange deletion();
  // What SET makes of the variable in front of the reader: "= 5", "+= 5".
  TypedSql newValue(const Token& variable);

 private:
  const TranslateContext& context_;
  TokenReader& reader_;
};

// What a variable, in lower case with its @, is called inside SQLite, which knows fewer letters in such names; and
// back.
std::string parameterOfVariable(std::string_view name);
std::string variableOfParameter(std::string_view parameter);

// Binds the variables of a translated text from a map by lower-case name with @ ("@x", "@@rowcount", "@p1"). Before any
// statement has run @@rowcount and @@error are 0 and @@identity is Null; whatever else the map lacks raises DataError
// 'Must declare the scalar variable "@x".', also a global one: its value isn't made up.
void bindVariables(sqlite::Statement& statement, const std::map<std::string, Value>& variables);

// The names of the columns that a view gives, told by its text; those without a name are empty. Raises NotUnderstood
// where they can't be told.
std::vector<std::string> columnsOfView(const std::string& text);

// An expression as the server stores it in defaults, checks and computed columns, in the form of the version:
// from version 9 on numbers in brackets, names in square brackets, built-in functions in lower case, the whole in
// brackets: 1 -> ((1)), 'x' -> ('x'), GetDate() -> (getdate()), (-1) -> ((-1)), a*b -> ([a]*[b]). Below version 9 the
// text as written in one pair of brackets. Outer brackets of the text don't double.
// From version 9 on the server also writes BETWEEN and IN as comparisons (IN with the last value first; not so in an
// index's filter), COALESCE and IIF as CASE, and drops brackets that change nothing.
std::string storedExpression(std::string_view text, int serverMajor, bool filter = false);

}  // namespace qrel::tsql
