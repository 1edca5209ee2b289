#include "embedded/statements/with.h"

#include "embedded/language/statementRights.h"
#include "embedded/statements/insert.h"
#include "embedded/statements/query.h"
#include "embedded/statements/update.h"

namespace qrel::tsql {

namespace {

// The position of the word that the queries of WITH stand in front of.
std::size_t behindCommonTables(const TokenReader& from) {
  TokenReader reader = from;
  do {
    reader.next();  // WITH, or a comma
    reader.expectIdentifier();
    if (reader.peek().isSymbol("(")) reader.skipParentheses();
    reader.expectWord("AS");
    reader.skipParentheses();
  } while (reader.peek().isSymbol(","));
  return reader.position();
}

// The queries of WITH are in force for one statement.
class CommonScope {
 public:
  explicit CommonScope(StatementRun& run) : run_(run) { run.common = run.translator().commonTables(); }
  ~CommonScope() {
    run_.common = nullptr;
    run_.context();
  }
  CommonScope(const CommonScope&) = delete;
  CommonScope& operator=(const CommonScope&) = delete;

 private:
  StatementRun& run_;
};

}  // namespace

void withStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  TokenReader word = reader;
  word.moveTo(behindCommonTables(reader));
  const Token& first = word.peek();
  const auto function = first.is("INSERT")   ? insertStatement
                        : first.is("UPDATE") ? updateStatement
                        : first.is("DELETE") ? deleteStatement
                                             : nullptr;
  if (!function) return selectStatement(run);
  if (run.running()) requireStatement(run.session.rights, word, run.open->facts.database);
  const CommonScope scope(run);
  function(run);
}

}  // namespace qrel::tsql
