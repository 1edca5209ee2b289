#include "embedded/statements/transactions.h"

#include "embedded/language/refusal.h"
#include "embedded/language/words.h"
#include "embedded/sqlite/quoting.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// A transaction's name stands on the line of its statement: a word on the next one begins another.
bool isTransactionName(const Token& token) {
  return (token.isIdentifier() || token.kind == TokenKind::Variable) && !token.firstOnLine && !startsStatement(token);
}

}  // namespace

void beginTransaction(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  reader.acceptWord("DISTRIBUTED");
  if (!reader.acceptWord("TRAN")) reader.expectWord("TRANSACTION");
  if (isTransactionName(reader.peek())) reader.next();
  if (reader.peek().is("WITH") && reader.peek(1).is("MARK")) {
    reader.next();
    reader.next();
    if (reader.peek().kind == TokenKind::String) reader.next();
  }
  if (!run.act()) return;
  ++run.memory.changes;
  if (run.memory.transactions++ == 0) {
    // A savepoint and no BEGIN: a loop may have its own around it, and statements theirs within.
    run.database().execute("savepoint q_transaction");
    run.memory.insertedAtBegin = run.memory.inserted;
  }
  run.setGlobal("@@trancount", run.memory.transactions);
  run.setGlobal("@@rowcount", 0);
}

void transactionStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  const Token& verb = reader.next();
  if (!reader.acceptWord("TRAN") && !reader.acceptWord("TRANSACTION")) reader.acceptWord("WORK");
  std::string name;
  if (isTransactionName(reader.peek())) name = reader.next().name();
  if (reader.peek().is("WITH") && reader.peek(1).isSymbol("(")) {
    reader.next();
    reader.skipParentheses();
  }
  if (!run.act()) return;
  const std::string saved = quoteName("q_saved_" + lowerCase(name));
  if (verb.is("SAVE")) {
    if (run.memory.transactions == 0) refuse("Cannot issue SAVE TRANSACTION when there is no active transaction.");
    run.database().execute("savepoint " + saved);
    run.memory.saved.insert(lowerCase(name));
    return;
  }
  if (verb.is("ROLLBACK") && run.memory.saved.count(lowerCase(name)) != 0) {
    run.database().execute("rollback to " + saved);
    run.schemaChanged();  // tables may have gone with it, and identity values
    return;
  }
  if (run.memory.transactions == 0) {
    refuse("The " + upperCase(verb.raw) + " TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  }
  if (verb.is("ROLLBACK")) {
    run.database().execute("rollback to q_transaction; release q_transaction");
    run.memory.inserted = run.memory.insertedAtBegin;
    run.memory.transactions = 0;
    run.schemaChanged();
  } else if (--run.memory.transactions == 0) {
    run.database().execute("release q_transaction");
  }
  if (run.memory.transactions == 0) run.memory.saved.clear();
  run.setGlobal("@@trancount", run.memory.transactions);
}

}  // namespace qrel::tsql
