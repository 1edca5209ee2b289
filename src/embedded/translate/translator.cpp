#include "embedded/translate/translator.h"

#include "embedded/translate/translation.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

std::string Translator::select(std::vector<std::string>* assigned) {
  if (assigned) assigned->clear();
  return Translation(context_, reader_).query(assigned).sql;
}

bool Translator::atSelect() const { return Translation(context_, reader_).atSelect(); }

std::string Translator::expression() { return Translation(context_, reader_).expression().sql; }

std::string Translator::condition() { return Translation(context_, reader_).condition(); }

std::string Translator::tableName() { return Translation(context_, reader_).tableName(); }

std::string Translator::fromList() { return Translation(context_, reader_).fromList(); }

void bindVariables(sqlite::Statement& statement, const std::map<std::string, Value>& variables) {
  const int count = sqlite3_bind_parameter_count(statement.get());
  for (int i = 1; i <= count; ++i) {
    const char* given = sqlite3_bind_parameter_name(statement.get(), i);
    std::string name = given ? given : "";
    const bool global = name.rfind("@__", 0) == 0;
    if (global) name.replace(0, 3, "@@");
    const auto found = variables.find(name);
    if (found != variables.end())
      statement.bind(i, found->second);
    else if (global)
      statement.bind(i, std::int64_t{0});
    else
      throw DataError(errorNumber::badSql, "Must declare the scalar variable \"" + name + "\".", "42000");
  }
}

}  // namespace qrel::tsql
