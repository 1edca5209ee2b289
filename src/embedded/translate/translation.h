// The recursive descent behind Translator.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/functions/registry.h"
#include "embedded/translate/textWidth.h"
#include "embedded/translate/translator.h"
#include "embedded/types/expressionType.h"

namespace qrel::tsql {

// A translated expression. `kind` is Empty where the type isn't known before the query runs.
struct Expression {
  std::string sql;
  DataType kind = DataType::Empty;
  bool column = false;   // a column whose own collation decides comparisons
  bool literal = false;  // a text literal; `name` is its value
  std::string name;      // a column's name as written
  TextWidth width{};
  bool isCase = false;    // "case when ... end" and nothing around it
  bool enclosed = false;  // in brackets
  ExpressionType type{};
  std::string origin{};  // as in OutputColumn
  std::string exact{};   // of a number that is written with a point: its digits, which `sql` may not hold all of
};

// A column that a table, a view or a query gives.
struct OutputColumn {
  std::string name;
  DataType kind = DataType::Empty;
  bool column = false;  // keeps the collation of a stored column
  TextWidth width{};
  ExpressionType type{};
  std::string origin{};  // the column of a stored table that it is and nothing else
};

struct Columns {
  std::vector<OutputColumn> list;
  bool complete = true;  // false: there are more than the list knows
  const OutputColumn* find(std::string_view name) const;
};

// A table in FROM under the name by which columns refer to it.
struct Source {
  std::string schema;   // of the table, empty for derived tables and those with an alias
  std::string exposed;  // alias or table name
  std::string alias;    // as SQLite knows it
  ObjectName table{};   // as written; empty for derived tables
  Columns columns;
  // Whether a name of two parts, the first of which may be empty, means it.
  bool isCalled(std::string_view bySchema, std::string_view name) const;
};

struct Scope {
  std::vector<Source> sources;
  Scope* outer = nullptr;
};

// Puts another scope in force and brings the one before back.
class ScopeGuard {
 public:
  ScopeGuard(Scope*& current, Scope* next) : current_(current), before_(std::exchange(current, next)) {}
  ~ScopeGuard() { current_ = before_; }
  ScopeGuard(const ScopeGuard&) = delete;
  ScopeGuard& operator=(const ScopeGuard&) = delete;

 private:
  Scope*& current_;
  Scope* before_;
};

struct Query {
  std::string sql;
  Columns columns;
  bool single = false;  // gives one row at most
};

// A column of a query's own tables that is named in it outside aggregates.
struct ColumnUse {
  std::string table;  // its exposed name
  std::string column;
};

// What a query with groups may name: columns used in its list and behind HAVING must be those of GROUP BY.
struct Grouping {
  Scope* scope = nullptr;  // the query's own
  std::vector<ColumnUse> used;
  bool aggregates = false;
};

// A query of WITH, under its name. `body` is the position of its bracket.
struct CommonTable {
  std::string name;
  Columns columns;
  std::vector<std::string> names;  // that stand behind its own
  std::size_t body = 0;
};

struct CommonTables {
  std::string sql;
  std::vector<CommonTable> tables;
};

class Translation {
 public:
  Translation(const TranslateContext& context, TokenReader& reader);

  Query query(std::vector<std::string>* assigned = nullptr, IntoTable* into = nullptr);
  std::shared_ptr<const CommonTables> prefix();
  bool atSelect() const;
  Expression expression();
  std::string condition();
  RowChange rowChange(bool update);
  Expression newValue(const Token& variable);

 private:
  struct SelectItem {
    std::string sql;
    std::string assigned;
    std::vector<OutputColumn> columns;
    bool complete = true;
  };
  struct Top {
    bool distinct = false;
    std::string limit;
  };
  struct Table {
    std::string sql;
    Source source;
  };

  // select.cpp
  Query compoundQuery(std::vector<std::string>* assigned);
  // Queries joined by one kind of words, INTERSECT or UNION and EXCEPT.
  Query intersection(std::vector<std::string>* assigned, std::string& limit, bool& compound);
  void append(Query& out, std::string_view operation, const Query& next);
  Query simpleQuery(std::vector<std::string>* assigned, std::string& limit);
  Query parenthesizedQuery();
  void commonTables(std::string& sql);
  Top readTop();
  std::string selectList(Columns& columns, std::vector<std::string>* assigned);
  SelectItem selectItem();
  SelectItem starItem(const Source* only);
  std::string columnAlias();
  std::size_t findFrom() const;
  std::string groupBy();
  std::string orderBy(const Columns& columns, bool compound);
  std::string orderItem(const Columns& columns, bool compound);
  void readLimit(std::string& limit);
  void refuseForClause();
  std::string fromList();
  std::string joined();
  std::string joinTail(std::string left);
  std::string joinKind();
  std::string tablePrimary();
  Table namedTable();
  Table resolve(const ObjectName& name, const Token& token);
  static Table stored(const TableInfo& info, const ObjectName& name);
  std::string derivedTable();
  std::string valuesRows(Columns& columns);
  std::vector<std::string> columnNames();
  void skipHints();
  std::string readAlias();
  std::string addSource(Source source);

  // rowChange.cpp
  std::string target(const ObjectName& name);
  bool changesCommonTable(ObjectName& name, std::string& tables);
  std::string changedRow(ObjectName& table) const;
  std::string newValues(RowChange& change);
  std::string_view assignmentOperator();
  Expression operated(Expression left, std::string_view operation);
  void refuseOutput() const;

  // expression.cpp
  Expression additive();
  Expression multiplicative();
  Expression unary();
  Expression primary();
  Expression collated(Expression expression);
  Expression number(const Token& token);
  Expression variable(const Token& token);
  Expression columnReference();
  Expression caseExpression();
  Expression parenthesized();
  static Expression enclosed(Expression expression);
  std::string orCondition();
  std::string andCondition();
  std::string notCondition();
  std::string predicate();
  std::string comparisonTail(const Expression& left);
  std::string quantified(const Expression& left, std::string_view symbol);
  std::string inList(const Expression& left);
  std::string like(const Expression& left);
  bool parenthesesHoldCondition() const;
  bool parenthesesHoldQuery() const;

  void refuseUngrouped(const std::vector<ColumnUse>& used, const std::vector<ColumnUse>& grouped,
                       std::string_view place) const;

  // functions.cpp
  Expression functionCall();
  Expression call(const Function& function);
  Expression callWithPart(const Function& function);
  bool atBareFunction() const;
  Expression bareFunction();
  Expression aggregate(const std::string& name);
  std::string over();
  Expression cast(bool cast, bool attempt);
  Expression conversion(Expression value, const TypeRef& type, bool sized, const std::string* style, bool attempt);
  Expression specialFunction(const std::string& name, bool& found);
  std::vector<Expression> arguments();
  TypeRef castType(bool& sized);

  [[noreturn]] void refuse(const std::string& reason) const;
  [[noreturn]] static void refuseNesting();

  // Counts how deep expressions, conditions and queries are nested; refuses what would exhaust the stack.
  class Nesting {
   public:
    explicit Nesting(Translation& of) : of_(of) {
      if (++of_.depth_ > mostNested) refuseNesting();
    }
    ~Nesting() { --of_.depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    Translation& of_;
  };
  static constexpr int mostNested = 300;

  const TranslateContext& context_;
  TokenReader& reader_;
  Scope ofTable_;  // what the context's table gives
  Scope* scope_ = nullptr;
  std::vector<CommonTable> commonTables_;
  ObjectName* changed_ = nullptr;  // where the query that comes next gives its table's row numbers: that table
  IntoTable* into_ = nullptr;      // where the query that comes next may make a table
  Grouping* grouping_ = nullptr;   // of the query whose list, GROUP BY or HAVING is being read
  int depth_ = 0;
  bool enclosed_ = false;  // the condition that was read last stands in brackets as a whole
};

// Words that end an expression, a table or a query, and so are no alias.
bool isReserved(const Token& token);
// A token that may stand as an alias without AS.
bool isAlias(const Token& token);
bool isNumericKind(DataType kind);
// "a op b" in the way the server compares: without case, by value, with texts read as numbers beside numbers.
std::string compared(Expression left, std::string_view symbol, Expression right);
// The SQL of what decides which of two such values of a query are the same and which comes first, with a blank in
// front.
std::string_view collationOf(DataType kind);
// A value as the exact number of this type.
std::string asExact(const Expression& value, const ExpressionType& type);
// The kind of a result that may come from either.
DataType commonKind(DataType a, DataType b);
// Built-in functions by lower-case name, for the stored form of expressions.
bool isBuiltInFunction(std::string_view lowerName);

}  // namespace qrel::tsql
