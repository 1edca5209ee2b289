#include "embedded/translate/translator.h"

#include "embedded/translate/translation.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

Value as(DataType kind, Value value) {
  if (kind == DataType::Decimal && value.type == DataType::Text) value.type = kind;
  return value;
}

std::string Translator::select(std::vector<std::string>* assigned, std::vector<DataType>* kinds) {
  if (assigned) assigned->clear();
  Query query = Translation(context_, reader_).query(assigned);
  if (kinds && query.columns.complete)
    for (const OutputColumn& column : query.columns.list) kinds->push_back(column.kind);
  return std::move(query.sql);
}

std::string Translator::select(std::vector<std::string>* assigned, IntoTable& into) {
  if (assigned) assigned->clear();
  Query query = Translation(context_, reader_).query(assigned, &into);
  into.complete = query.columns.complete;
  std::size_t counting = 0;
  for (const OutputColumn& column : query.columns.list) {
    into.columns.push_back({column.name, column.kind, column.type});
    counting += column.type.identity ? 1 : 0;
  }
  // A column that counts goes on counting where it stands once.
  if (counting > 1)
    for (ResultColumn& column : into.columns) column.type.identity = false;
  return std::move(query.sql);
}

std::shared_ptr<const CommonTables> Translator::commonTables() { return Translation(context_, reader_).prefix(); }

bool Translator::atSelect() const { return Translation(context_, reader_).atSelect(); }

std::string Translator::expression() { return typedExpression().sql; }

std::string Translator::condition() { return Translation(context_, reader_).condition(); }

RowChange Translator::update() { return Translation(context_, reader_).rowChange(true); }

RowChange Translator::deletion() { return Translation(context_, reader_).rowChange(false); }

TypedSql Translator::typedExpression() {
  Expression expression = Translation(context_, reader_).expression();
  return {std::move(expression.sql), expression.kind, expression.type};
}

TypedSql Translator::newValue(const Token& variable) {
  Expression value = Translation(context_, reader_).newValue(variable);
  return {std::move(value.sql), value.kind, value.type};
}

namespace {

constexpr std::string_view ownMark = "@v_";  // names of the program's own parameters begin otherwise
constexpr std::string_view hexDigits = "0123456789abcdef";

bool isPlain(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c >= 0x80; }

}  // namespace

std::string variableOfParameter(std::string_view parameter) {
  if (!parameter.starts_with(ownMark)) return std::string(parameter);
  std::string name = "@";
  for (std::size_t i = ownMark.size(); i < parameter.size(); ++i) {
    if (parameter[i] != '$' || i + 2 >= parameter.size()) {
      name += parameter[i];
      continue;
    }
    name += static_cast<char>(hexDigits.find(parameter[i + 1]) * 16 + hexDigits.find(parameter[i + 2]));
    i += 2;
  }
  return name;
}

std::string parameterOfVariable(std::string_view name) {
  std::string out(ownMark);
  for (const char c : name.substr(1)) {
    const auto byte = static_cast<unsigned char>(c);
    if (isPlain(byte)) {
      out += c;
      continue;
    }
    out += '$';
    out += hexDigits[byte >> 4];
    out += hexDigits[byte & 15];
  }
  return out;
}

void bindVariables(sqlite::Statement& statement, const std::map<std::string, Value>& variables) {
  const int count = sqlite3_bind_parameter_count(statement.get());
  for (int i = 1; i <= count; ++i) {
    const char* given = sqlite3_bind_parameter_name(statement.get(), i);
    const std::string name = variableOfParameter(given ? given : "");
    const auto found = variables.find(name);
    if (found != variables.end())
      statement.bind(i, found->second);
    else if (name == "@@rowcount" || name == "@@error")
      statement.bind(i, std::int64_t{0});
    else if (name == "@@identity")
      statement.bindNull(i);
    else
      throw DataError(errorNumber::badSql, "Must declare the scalar variable \"" + name + "\".", "42000");
  }
}

}  // namespace qrel::tsql
