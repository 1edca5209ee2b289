#include "embedded/run/rows.h"

// The rows of a translated query.
#include <map>
#include <string>
#include <vector>

#include "embedded/translate/translator.h"
#include "embedded/types/types.h"
#include "platform/data/columnStore.h"
#include "platform/error.h"

namespace qrel::tsql {

namespace {

// Of a text or a blob; valid until the next row.
std::string_view bytesOf(sqlite3_value* value) {
  const auto* data = static_cast<const char*>(sqlite3_value_blob(value));
  const int size = sqlite3_value_bytes(value);
  return data ? std::string_view(data, static_cast<std::size_t>(size)) : std::string_view();
}

class StatementRows : public RowSource {
 public:
  StatementRows(std::shared_ptr<OpenDatabase> open, LiftedQuery query, std::map<std::string, Value> variables,
                std::string_view originalSql)
      : open_(std::move(open)),
        sql_(std::move(query.sql)),
        reusable_(query.reusable),
        original_(originalSql),
        variables_(std::move(variables)) {
    for (std::size_t i = 0; i < query.literals.size(); ++i)
      variables_[":q" + std::to_string(i + 1)] = std::move(query.literals[i]);
    statement_ = withSql([&] {
      return reusable_ ? open_->statements.take(open_->database, sql_) : sqlite::Statement(open_->database, sql_);
    });
    withSql([&] {
      bindVariables(statement_, variables_);
      return true;
    });
    // The first row is looked for at once: an error belongs to the command, not to its first fetch. Only then a kept
    // statement knows what has become of the columns meanwhile.
    pending_ = withSql([&] { return statement_.step(); });
    ended_ = !pending_;
    readColumns();
    typeExpressions();
  }

  ~StatementRows() override {
    if (reusable_) open_->statements.giveBack(sql_, std::move(statement_));
  }

  const std::vector<ColumnInfo>& columns() const override { return columns_; }

  std::size_t fetch(ColumnStore& store, std::size_t most) override {
    std::size_t count = 0;
    withSql([&] {
      while (count < most && advance()) {
        for (std::size_t i = 0; i < columns_.size(); ++i) append(store, i);
        ++count;
      }
      return true;
    });
    return count;
  }

  void rewind() override {
    statement_.reset();
    pending_ = ended_ = false;
  }

  std::int64_t count() override {
    return withSql([&] {
      sqlite::Statement counting(open_->database, "select count(*) from (" + sql_ + ")");
      bindVariables(counting, variables_);
      counting.step();
      return counting.integer(0);
    });
  }

 private:
  // An error tells the SQL that the caller sent, not its translation.
  template <typename Body>
  auto withSql(Body body) -> decltype(body()) {
    try {
      return body();
    } catch (DataError& error) {
      error.sql = original_;
      throw;
    }
  }

  bool advance() {
    if (pending_) {
      pending_ = false;
      return true;
    }
    if (ended_) return false;
    ended_ = !statement_.step();
    if (ended_) statement_.reset();  // lets go of the file's read lock
    return !ended_;
  }

  void readColumns() {
    const int count = sqlite3_column_count(statement_.get());
    columns_.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
      const char* name = sqlite3_column_name(statement_.get(), i);
      const char* declared = sqlite3_column_decltype(statement_.get(), i);
      columns_.push_back(columnFromDeclaration(shownColumn(name ? name : ""), declared ? declared : ""));
    }
  }

  // Columns without a declaration are typed by the first row's value.
  void typeExpressions() {
    if (!pending_) return;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (columns_[i].type != DataType::Empty) continue;
      switch (sqlite3_column_type(statement_.get(), static_cast<int>(i))) {
        case SQLITE_INTEGER:
          columns_[i].type = DataType::Integer;
          break;
        case SQLITE_FLOAT:
          columns_[i].type = DataType::Double;
          break;
        case SQLITE_TEXT:
          columns_[i].type = DataType::Text;
          break;
        case SQLITE_BLOB:
          columns_[i].type = DataType::Binary;
          break;
        default:
          break;
      }
    }
  }

  void append(ColumnStore& store, std::size_t column) {
    // The value itself, once: each sqlite3_column_ call would look it up again. The handle is of one thread only.
    sqlite3_value* value = sqlite3_column_value(statement_.get(), static_cast<int>(column));
    const DataType declared = columns_[column].type;
    switch (sqlite3_value_type(value)) {
      case SQLITE_NULL:
        return store.appendNull(column);
      case SQLITE_INTEGER:
        if (declared == DataType::Double) return store.appendDouble(column, sqlite3_value_double(value));
        return store.appendInteger(column, sqlite3_value_int64(value),
                                   declared == DataType::Boolean ? DataType::Boolean : DataType::Integer);
      case SQLITE_FLOAT:
        return store.appendDouble(column, sqlite3_value_double(value));
      case SQLITE_BLOB:
        return store.appendText(column, DataType::Binary, bytesOf(value));
      default: {
        const bool kept = declared == DataType::Decimal || declared == DataType::Date || declared == DataType::Guid;
        return store.appendText(column, kept ? declared : DataType::Text, bytesOf(value));
      }
    }
  }

  std::shared_ptr<OpenDatabase> open_;
  std::string sql_;
  bool reusable_;
  std::string original_;
  std::map<std::string, Value> variables_;
  sqlite::Statement statement_;
  std::vector<ColumnInfo> columns_;
  bool pending_ = false;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<RowSource> queryRows(std::shared_ptr<OpenDatabase> open, const std::string& sqliteSql,
                                     const std::map<std::string, Value>& variables, std::string_view originalSql) {
  return std::make_unique<StatementRows>(std::move(open), liftLiterals(sqliteSql), variables, originalSql);
}

}  // namespace qrel::tsql
