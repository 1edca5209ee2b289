// Control flow of the interpreter: blocks, branches, loops and jumps.
#include <algorithm>
#include <tuple>
#include <utility>

#include "embedded/session/interpreter.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isAssignment(const Token& token) {
  return token.kind == TokenKind::Symbol && token.raw.back() == '=' && token.raw != "<=" && token.raw != ">=" &&
         token.raw != "!=";
}

// Counts one more that is running, however it ends.
class Within {
 public:
  explicit Within(int& depth) : depth_(++depth) {}
  ~Within() { --depth_; }
  Within(const Within&) = delete;
  Within& operator=(const Within&) = delete;

 private:
  int& depth_;
};

}  // namespace

// Blocks --------------------------------------------------------------------------------------------------------------

// Runs statements from the token `begin` to `close`, the end of the block that begins at `blocks_.back()` or of the
// text.
void Interpreter::runUntil(std::size_t begin, std::size_t close) {
  const std::size_t outerLimit = std::exchange(run_.limit, close);
  const std::size_t block = blocks_.empty() ? Structure::none : blocks_.back();
  reader_.moveTo(begin);
  while (reader_.position() < close && run_.flow == Flow::Normal) {
    const std::size_t before = reader_.position();
    statement();
    if (run_.flow == Flow::Goto && catchGoto(block)) continue;
    if (run_.flow == Flow::Normal && reader_.position() == before) reader_.next();
  }
  run_.limit = outerLimit;
}

void Interpreter::block() {
  const std::size_t start = reader_.position();
  const std::size_t close = text_.structure.endOf(start);
  if (close == Structure::none)
    return run_.leaveRest(Kind::Failed, "BEGIN without END: the rest of the batch is left out.");
  blocks_.push_back(start);
  if (text_.tokens[start + 1].is("TRY")) {
    tryBlock(close);
  } else {
    runUntil(start + 1, close);
    if (run_.flow == Flow::Normal) reader_.moveTo(close + 1);
  }
  blocks_.pop_back();
}

// BEGIN TRY ... END TRY BEGIN CATCH ... END CATCH, with the END of the first at `close`.
void Interpreter::tryBlock(std::size_t close) {
  const std::size_t start = blocks_.back();
  const std::size_t opening = text_.structure.catchBehind(close);
  if (!text_.tokens[close + 1].is("TRY") || opening == Structure::none)
    return run_.leaveRest(Kind::Failed, "BEGIN TRY without BEGIN CATCH: the rest of the batch is left out.");
  const std::size_t end = text_.structure.endOf(opening);
  {
    const Within inside(depths_.tries);
    runUntil(start + 2, close);
  }
  if (run_.flow == Flow::Throw) {
    run_.flow = Flow::Normal;
    blocks_.back() = opening;
    runUntil(opening + 2, end);
  }
  if (run_.flow != Flow::Normal) return;
  reader_.moveTo(end + 1);
  reader_.acceptWord("CATCH");
}

// Branches ------------------------------------------------------------------------------------------------------------

bool Interpreter::evaluateCondition(const std::string& sql) {
  const Value value = run_.evaluate("(" + sql + ")");
  return !value.null && value.integer != 0;
}

// The condition behind the word at `start`; nothing when it can't be had, which the statement then tells. The reader
// stands at the body afterwards.
std::optional<bool> Interpreter::condition(std::size_t start) {
  run_.wasRead = false;
  run_.start = start;
  try {
    reader_.moveTo(start);
    checkNesting(start);
    reader_.next();
    const std::string sql = run_.translator().condition();
    run_.wasRead = true;
    const bool truth = evaluateCondition(sql);
    run_.setGlobal("@@error", 0);
    run_.setGlobal("@@rowcount", 0);
    return truth;
  } catch (const NotUnderstood& error) {
    if (!std::exchange(run_.wasRead, true)) skipToBody(start);
    refused(start, Kind::Skipped, error.reason, errorNumber::badSql);
  } catch (const DataError& error) {
    if (!std::exchange(run_.wasRead, true)) skipToBody(start);
    refused(start, error);
  }
  return std::nullopt;
}

// Runs the statement that a condition allows.
void Interpreter::body() {
  const Token& first = reader_.peek();
  const bool missing = reader_.position() >= run_.limit || first.isSymbol(";") || first.is("END") || first.is("ELSE");
  if (!missing) return statement();
  run_.fail(Kind::Failed, "Incorrect syntax near '" + std::string(first.raw) + "': a statement is expected.");
  while (reader_.acceptSymbol(";")) {
  }
  if (reader_.position() < run_.limit && first.isSymbol(";")) skipStatement();
}

void Interpreter::ifStatement() {
  for (;;) {
    const std::optional<bool> truth = condition(reader_.position());
    if (run_.flow != Flow::Normal) return;
    if (truth.value_or(false)) {
      body();
    } else {
      skipStatement();
    }
    if (run_.flow != Flow::Normal) return;
    const std::size_t behind = reader_.position();
    while (reader_.acceptSymbol(";")) {
    }
    if (reader_.position() >= run_.limit || !reader_.acceptWord("ELSE")) return reader_.moveTo(behind);
    if (truth.value_or(true)) return skipStatement();
    if (!reader_.peek().is("IF")) return body();
  }
}

// An ELSE that no IF is open for: what follows it is no statement of its own either.
void Interpreter::elseStatement() {
  run_.fail(Kind::Skipped, "ELSE without its beginning");
  reader_.next();
  if (reader_.position() < run_.limit) skipStatement();
}

// Loops ---------------------------------------------------------------------------------------------------------------

// Tells whether two moments differ by anything that a statement could have changed.
std::int64_t Interpreter::changesSoFar() const {
  return run_.memory.changes + sqlite3_total_changes64(run_.database().get());
}

// The variables that statements between two tokens set, as far as their words tell.
std::vector<std::string> Interpreter::assignedWithin(std::size_t begin, std::size_t end) const {
  std::vector<std::string> names;
  bool into = false;
  for (std::size_t i = begin; i < end; ++i) {
    const Token& token = text_.tokens[i];
    if (token.is("FETCH")) names.emplace_back("@@fetch_status");
    if (token.is("INTO")) into = true;
    if (token.kind == TokenKind::Variable) {
      const Token& next = text_.tokens[i + 1];
      if (into || isAssignment(next) || next.is("OUTPUT") || next.is("OUT")) names.push_back(lowerCase(token.raw));
    } else if (!token.isSymbol(",") && !token.is("INTO")) {
      into = false;
    }
  }
  return names;
}

// Whether a loop's body can't change what its condition reads, nor leave the loop otherwise.
bool Interpreter::neverEnds(std::size_t condition, std::size_t body, std::size_t end) const {
  const std::vector<std::string> assigned = assignedWithin(body, end);
  for (std::size_t i = condition; i < body; ++i) {
    const Token& token = text_.tokens[i];
    const bool name = token.isIdentifier() && !token.is("AND") && !token.is("OR") && !token.is("NOT") &&
                      !token.is("IS") && !token.is("NULL") && !token.is("BETWEEN") && !token.is("IN");
    if (name) return false;  // a query or a function
    if (token.kind != TokenKind::Variable) continue;
    const std::string variable = lowerCase(token.raw);
    if (variable.starts_with("@@") && variable != "@@fetch_status") return false;
    if (std::find(assigned.begin(), assigned.end(), variable) != assigned.end()) return false;
  }
  for (std::size_t i = body; i < end; ++i)
    for (const char* word : {"BREAK", "RETURN", "GOTO", "THROW"})
      if (text_.tokens[i].is(word)) return false;
  return true;
}

void Interpreter::turns(std::size_t start, std::size_t end) {
  for (int turn = 0; run_.flow == Flow::Normal; ++turn) {
    const std::optional<bool> truth = condition(start);
    if (run_.flow != Flow::Normal || !truth.value_or(false)) return;
    if (turn == 0 && neverEnds(start + 1, reader_.position(), end))
      return run_.fail(Kind::Failed, "The loop isn't run: nothing in it changes what its condition reads.");
    if (turn >= mostTurns)
      return run_.fail(Kind::Failed, "The loop has been ended after " + std::to_string(mostTurns) + " turns.");
    const auto things = [&] {
      return std::tuple(changesSoFar(), run_.session.variables["@@rowcount"].integer,
                        run_.session.variables["@@error"].integer);
    };
    const auto before = things();
    body();
    if (run_.flow == Flow::Continue) run_.flow = Flow::Normal;
    if (run_.flow == Flow::Normal && things() == before)
      return run_.fail(Kind::Failed, "The loop has been ended: a turn changes nothing, so that it would never end.");
  }
  if (run_.flow == Flow::Break) run_.flow = Flow::Normal;
}

void Interpreter::whileStatement() {
  const std::size_t start = reader_.position();
  skipStatement();  // for its end
  if (run_.flow != Flow::Normal || run_.result.kind == Kind::Failed) return;
  const std::size_t end = reader_.position();
  if (!run_.listener) {  // the first error ends everything
    turns(start, end);
  } else {
    const SessionMemory before = depths_.loops == 0 ? run_.memory : SessionMemory();
    const auto variables = run_.session.variables;
    const auto blocks = blocks_;
    const auto place = std::tuple(run_.limit, run_.depth);
    if (depths_.loops == 0) run_.database().execute("savepoint q_loop");
    try {
      {
        const Within inside(depths_.loops);
        turns(start, end);
      }
      // Releasing would end a transaction that the loop has left open.
      if (depths_.loops == 0 && run_.memory.transactions == before.transactions)
        sqlite3_exec(run_.database().get(), "release q_loop", nullptr, nullptr, nullptr);
    } catch (const LoopRefused& refusal) {
      if (depths_.loops > 0) throw;
      std::tie(run_.limit, run_.depth) = place;
      blocks_ = blocks;
      undoLoop(start, end, before, variables, refusal);
    }
  }
  if (run_.flow == Flow::Normal) reader_.moveTo(end);
}

// Leaves things as if the loop had not begun. When it has ended a transaction that stood around it, what it has done
// stays.
void Interpreter::undoLoop(std::size_t start, std::size_t end, const SessionMemory& before,
                           const std::map<std::string, Value>& variables, const LoopRefused& refusal) {
  std::string reason = "the loop isn't run, because of \"" + refusal.statement + "\": " + refusal.reason;
  if (sqlite3_exec(run_.database().get(), "rollback to q_loop; release q_loop", nullptr, nullptr, nullptr) ==
      SQLITE_OK) {
    run_.memory = before;
    run_.session.variables = variables;
    account_.forget(start + 1, end);
  } else {
    reason += "; what it had done before stays";
  }
  run_.schemaChanged();
  run_.flow = Flow::Normal;
  run_.executing = true;
  reader_.moveTo(end);
  run_.result = {};
  run_.fail(Kind::Skipped, reason);
}

// Jumps ---------------------------------------------------------------------------------------------------------------

void Interpreter::label() {
  reader_.next();
  reader_.next();
}

void Interpreter::gotoStatement() {
  const std::size_t start = reader_.position();
  run_.start = start;
  reader_.next();
  const std::string name = lowerCase(reader_.peek().raw);
  const Structure::Label* found = reader_.peek().isIdentifier() ? text_.structure.label(name) : nullptr;
  if (!found) {
    return run_.leaveRest(Kind::Failed,
                          "A GOTO statement references the label '" + name +
                              "' but the label has not been declared. The rest of the batch is left out.");
  }
  reader_.next();
  const bool open =
      found->block == Structure::none || std::find(blocks_.begin(), blocks_.end(), found->block) != blocks_.end();
  if (!open) return run_.leaveRest(Kind::Skipped, "GOTO into a block: the rest of the batch is left out");
  const auto [last, fresh] = jumps_.try_emplace(start, 0);
  if (!fresh && found->at < start && last->second == changesSoFar())
    return run_.leaveRest(Kind::Failed,
                          "The jumps have been ended: they change nothing, so that they would never end.");
  if (++turnsByGoto_ > mostTurns)
    return run_.leaveRest(Kind::Failed, "The jumps have been ended after " + std::to_string(mostTurns) + " times.");
  last->second = changesSoFar();
  target_ = name;
  run_.flow = Flow::Goto;
}

// Goes on at the label when it stands in this very block.
bool Interpreter::catchGoto(std::size_t block) {
  const Structure::Label* found = text_.structure.label(target_);
  if (found->block != block) return false;
  // What is jumped over belongs to the jump.
  account_.claim(std::min(reader_.position(), found->at), found->at);
  reader_.moveTo(found->at);
  run_.flow = Flow::Normal;
  return true;
}

}  // namespace qrel::tsql
