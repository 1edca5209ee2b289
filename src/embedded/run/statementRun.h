// What one statement works with: the text that it is read from, the session, the database, and what becomes of it.
// Every statement is a function over it, in the room behind this one.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/change/changes.h"
#include "embedded/run/batchListener.h"
#include "embedded/run/batchText.h"
#include "embedded/run/sessionState.h"
#include "embedded/translate/translator.h"
#include "platform/data/provider.h"
#include "platform/error.h"

namespace qrel::tsql {

// How a text goes on behind a statement. Goto: at the label. Throw: at the CATCH. Return: the text ends; Abort: so do
// those that run it by EXEC. Stop: nothing more is run.
enum class Flow : std::uint8_t { Normal, Break, Continue, Goto, Throw, Return, Abort, Stop };

// How a text has ended that a statement has run.
struct TextEnd {
  Flow flow = Flow::Normal;
  std::string caught;  // with Throw: the error
};

// Runs a text as a batch within the batch: handed in by whoever runs statements, which know nothing of it.
class TextRunner {
 public:
  virtual ~TextRunner() = default;
  // All outcomes are told with `line` and go to the end of `inside`.
  virtual TextEnd runText(std::string_view text, std::size_t line, std::vector<StatementOutcome>& inside) = 0;
};

// What becomes of the statement that is being run.
struct StatementResult {
  StatementOutcome::Kind kind = StatementOutcome::Kind::Ran;
  std::string what;
  std::int32_t number = 0;
  std::int64_t rows = 0;
  std::vector<StatementOutcome> inside;  // of the text that it runs
  std::string message;                   // what it prints; hasMessage: also an empty line is one
  bool hasMessage = false;
};

// One per text that is run. Whoever runs it sets the place for each statement in turn; the statement reads itself,
// calls act() and, if that allows it, does its work and tells with made(), withoutEffect() or `result.rows` what has
// become of it. What isn't understood is raised as NotUnderstood, what the server would refuse as DataError.
class StatementRun {
 public:
  using Kind = StatementOutcome::Kind;

  // Without a listener the first error ends the batch.
  StatementRun(SessionState& ofSession, BatchListener* toTell, CommandResult& answer, TextRunner& runner);
  StatementRun(const StatementRun&) = delete;
  StatementRun& operator=(const StatementRun&) = delete;

  BatchText text;
  TokenReader& reader = text.reader;  // at the statement's first word when it begins

  SessionState& session;
  SessionMemory& memory = session.memory;
  BatchListener* const listener;
  CommandResult& answer;  // of the whole batch
  TextRunner& texts;
  // The database that this text is at; a text that it runs may be at another one, by USE.
  std::shared_ptr<OpenDatabase> open;
  Catalogue& catalogue() const { return open->catalogue; }
  sqlite::Database& database() const { return open->database; }

  // The place.
  std::size_t start = 0;  // the statement's first token
  std::size_t limit = 0;  // the token that ends the block around it
  int depth = 0;          // statements that hold each other, this one counted
  bool executing = true;  // false: it is only moved over
  Flow flow = Flow::Normal;
  std::string caught;  // the error that a CATCH was entered with
  bool atBatchStart() const { return text.pieceStart == 0 && start == 0; }
  bool insideAnother() const { return depth > 1; }
  // The token behind a statement that holds no other statement's words.
  std::size_t plainEnd() const { return text.structure.plainEnd(start, limit); }

  // What becomes of it.
  StatementResult result;
  bool wasRead = false;  // the reader stands behind it, whatever is raised

  // What every statement calls when it has read itself: whether it is to be carried out.
  bool act() {
    wasRead = true;
    return running();
  }
  bool running() const { return executing && flow == Flow::Normal; }
  // Tells the outcome Made with this word instead of Ran.
  void made(std::string what);
  // Tells that a server would do something that isn't kept here: an option, a message, a login.
  void withoutEffect() { result.kind = Kind::WithoutEffect; }
  // Tells a text that a server would send to whoever runs the script.
  void print(std::string text) {
    result.message = std::move(text);
    result.hasMessage = true;
  }
  // Tells beside its outcome that a part of it, from a token on, isn't kept.
  void notKept(const std::string& reason, std::size_t token);
  // The number of rows that it has changed.
  void countRows(std::int64_t rows);
  // It comes to nothing; raises the error when there is nobody to tell.
  void fail(Kind kind, const std::string& reason, std::int32_t number = errorNumber::badSql);
  // The same, with all that follows in the batch.
  void leaveRest(Kind kind, const std::string& reason);
  [[noreturn]] void notUnderstood(std::string reason) const;
  bool stopAsked() const { return listener && listener->stopRequested(); }
  // Ends a long run of rows when a stop is asked for.
  void checkStop() const;

  // Changing the database.
  CatalogueChanges changes() const { return CatalogueChanges(open->catalogue); }
  // Runs `work` so that an error leaves nothing of it behind.
  template <class Work>
  void atomically(Work&& work);
  // After any change of the catalogue that isn't new objects alone: what was kept of it is forgotten.
  void schemaChanged();
  void useDatabase(std::shared_ptr<OpenDatabase> other);

  // Expressions and variables.
  TranslateContext& context();
  // What WITH has put in front of the statement; it has an end with it.
  std::shared_ptr<const CommonTables> common;
  Translator translator() { return Translator(context(), reader); }
  // Of a translated expression.
  Value evaluate(const std::string& sql) const;
  Value evaluate(const TypedSql& value) const { return as(value.kind, evaluate(value.sql)); }
  // Binds a translated text's variables; refuses those whose value isn't known.
  void bind(sqlite::Statement& statement) const;
  void assign(const std::string& variable, const Value& value);
  // "@@rowcount" and its like, in lower case.
  void setGlobal(const char* name, std::int64_t value);

  // Names. An object of this database, without the database's name; refuses others.
  ObjectName localName(ObjectName name) const;
  // The same for what can't be temporary here: only tables can.
  ObjectName keptName(ObjectName name) const;
  std::shared_ptr<const TableInfo> requireTable(const ObjectName& name) const;

 private:
  TranslateContext context_;
};

template <class Work>
void StatementRun::atomically(Work&& work) {
  database().cached("savepoint q_statement").run();
  try {
    work();
  } catch (...) {
    sqlite3_exec(database().get(), "rollback to q_statement; release q_statement", nullptr, nullptr, nullptr);
    schemaChanged();
    throw;
  }
  database().cached("release q_statement").run();
}

}  // namespace qrel::tsql
