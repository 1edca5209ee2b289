#include "embedded/statements/statementTable.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "embedded/language/words.h"
#include "embedded/statements/bulkInsert.h"
#include "embedded/statements/create.h"
#include "embedded/statements/cursors.h"
#include "embedded/statements/databases.h"
#include "embedded/statements/drop.h"
#include "embedded/statements/exec.h"
#include "embedded/statements/insert.h"
#include "embedded/statements/leaving.h"
#include "embedded/statements/messages.h"
#include "embedded/statements/noEffect.h"
#include "embedded/statements/permissions.h"
#include "embedded/statements/query.h"
#include "embedded/statements/tables.h"
#include "embedded/statements/transactions.h"
#include "embedded/statements/update.h"
#include "embedded/statements/variables.h"
#include "embedded/statements/with.h"

namespace qrel::tsql {

namespace {

struct Statement {
  std::string_view word;
  StatementFunction function;
};

// In the order of how often they stand in scripts: the search goes through it for every statement.
constexpr std::array statements = std::to_array<Statement>({
    {"INSERT", insertStatement},
    {"SELECT", selectStatement},
    {"CREATE", createStatement},
    {"ALTER", alterStatement},
    {"DROP", dropStatement},
    {"UPDATE", updateStatement},
    {"DELETE", deleteStatement},
    {"TRUNCATE", truncateStatement},
    {"WITH", withStatement},
    {"EXEC", execStatement},
    {"EXECUTE", execStatement},
    {"SET", setStatement},
    {"DECLARE", declareStatement},
    {"PRINT", printStatement},
    {"RAISERROR", raiserrorStatement},
    {"THROW", throwStatement},
    {"GRANT", permissionStatement},
    {"DENY", permissionStatement},
    {"REVOKE", permissionStatement},
    {"USE", useStatement},
    {"BEGIN", beginTransaction},
    {"COMMIT", transactionStatement},
    {"ROLLBACK", transactionStatement},
    {"SAVE", transactionStatement},
    {"CHECKPOINT", skipWithoutEffect},
    {"DBCC", dbccStatement},
    {"BACKUP", skipWithoutEffect},
    {"RECONFIGURE", skipWithoutEffect},
    {"REVERT", skipWithoutEffect},
    {"WAITFOR", skipWithoutEffect},
    {"ENABLE", switchTrigger},
    {"DISABLE", switchTrigger},
    {"RETURN", leaveStatement},
    {"BREAK", leaveStatement},
    {"CONTINUE", leaveStatement},
    {"OPEN", openCursor},
    {"FETCH", fetchCursor},
    {"CLOSE", closeCursor},
    {"DEALLOCATE", closeCursor},
    {"MERGE", notCarriedOut},
    {"RESTORE", notCarriedOut},
    {"BULK", bulkInsertStatement},
    {"KILL", notCarriedOut},
    {"SHUTDOWN", notCarriedOut},
    {"END", strayEnd},
});

constexpr bool hasRow(const StatementWord& word) {
  return std::any_of(statements.begin(), statements.end(), [&](const auto& each) { return each.word == word.word; });
}
constexpr bool hasWord(const Statement& statement) {
  return std::any_of(statementWords.begin(), statementWords.end(),
                     [&](const auto& each) { return each.word == statement.word; });
}
// Where a statement ends is told by the words that begin one: a word that stood in one list alone would be read into
// the statement before it, or be refused where it begins one.
static_assert(std::all_of(statementWords.begin(), statementWords.end(),
                          [](const auto& word) { return word.steers != hasRow(word); }),
              "a word of language/words.h has no row here, or one too many");
static_assert(std::all_of(statements.begin(), statements.end(), hasWord),
              "a row's word is missing in language/words.h");

}  // namespace

StatementFunction statementOf(const Token& first) {
  for (const Statement& each : statements)
    if (first.is(each.word)) return each.function;
  return first.isSymbol("(") ? selectStatement : nullptr;
}

StatementFunction statementAt(const StatementRun& run) {
  const StatementFunction function = statementOf(run.reader.peek());
  if (!function && run.reader.peek().isIdentifier() && run.atBatchStart()) return execStatement;
  return function;
}

}  // namespace qrel::tsql
