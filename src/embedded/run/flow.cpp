// Control flow of the interpreter: blocks, branches, loops and jumps, and moving over what isn't run.
#include <algorithm>

#include "embedded/change/parts.h"
#include "embedded/language/words.h"
#include "embedded/run/interpreter.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isAssignment(const Token& token) {
  return token.kind == TokenKind::Symbol && token.raw.back() == '=' && token.raw != "<=" && token.raw != ">=" &&
         token.raw != "!=";
}

}  // namespace

// Blocks --------------------------------------------------------------------------------------------------------------

// Runs statements from the token `begin` to `close`, the end of the block that begins at `blocks_.back()` or of the
// text.
void Interpreter::runUntil(std::size_t begin, std::size_t close) {
  const std::size_t outerLimit = std::exchange(limit_, close);
  const std::size_t block = blocks_.empty() ? Structure::none : blocks_.back();
  reader_.moveTo(begin);
  while (reader_.position() < close && flow_ == Flow::Normal) {
    const std::size_t before = reader_.position();
    statement();
    if (flow_ == Flow::Goto && catchGoto(block)) continue;
    if (flow_ == Flow::Normal && reader_.position() == before) reader_.next();
  }
  limit_ = outerLimit;
}

void Interpreter::block() {
  const std::size_t start = reader_.position();
  const std::size_t close = structure_.endOf(start);
  if (close == Structure::none) return leaveRest(Kind::Failed, "BEGIN without END: the rest of the batch is left out.");
  blocks_.push_back(start);
  if (tokens_[start + 1].is("TRY")) {
    tryBlock(close);
  } else {
    runUntil(start + 1, close);
    if (flow_ == Flow::Normal) reader_.moveTo(close + 1);
  }
  blocks_.pop_back();
}

// BEGIN TRY ... END TRY BEGIN CATCH ... END CATCH, with the END of the first at `close`.
void Interpreter::tryBlock(std::size_t close) {
  const std::size_t start = blocks_.back();
  std::size_t opening = close + 2;
  while (opening < tokens_.size() && tokens_[opening].isSymbol(";")) ++opening;
  const bool whole = tokens_[close + 1].is("TRY") && opening + 1 < tokens_.size() && structure_.opensBlockAt(opening) &&
                     tokens_[opening + 1].is("CATCH") && structure_.endOf(opening) != Structure::none;
  if (!whole) return leaveRest(Kind::Failed, "BEGIN TRY without BEGIN CATCH: the rest of the batch is left out.");
  const std::size_t end = structure_.endOf(opening);
  ++state_.tries;
  try {
    runUntil(start + 2, close);
  } catch (...) {
    --state_.tries;
    throw;
  }
  --state_.tries;
  if (flow_ == Flow::Throw) {
    flow_ = Flow::Normal;
    blocks_.back() = opening;
    runUntil(opening + 2, end);
  }
  if (flow_ != Flow::Normal) return;
  reader_.moveTo(end + 1);
  reader_.acceptWord("CATCH");
}

// Branches ------------------------------------------------------------------------------------------------------------

bool Interpreter::evaluateCondition(const std::string& sql) {
  const Value value = evaluate("(" + sql + ")");
  return !value.null && value.integer != 0;
}

// The condition behind the word at `start`; nothing when it can't be had, which the statement then tells. The reader
// stands at the body afterwards.
std::optional<bool> Interpreter::condition(std::size_t start) {
  parsed_ = false;
  statementStart_ = start;
  try {
    reader_.moveTo(start);
    checkNesting(start);
    reader_.next();
    const std::string sql = translator().condition();
    parsed_ = true;
    const bool truth = evaluateCondition(sql);
    setGlobal("@@error", 0);
    return truth;
  } catch (const NotUnderstood& error) {
    if (!std::exchange(parsed_, true)) skipToBody(start);
    refused(start, Kind::Skipped, error.reason, errorNumber::badSql);
  } catch (const DataError& error) {
    if (!std::exchange(parsed_, true)) skipToBody(start);
    refused(start, error);
  }
  return std::nullopt;
}

// Runs the statement that a condition allows.
void Interpreter::body() {
  const Token& first = reader_.peek();
  const bool missing = reader_.position() >= limit_ || first.isSymbol(";") || first.is("END") || first.is("ELSE");
  if (!missing) return statement();
  fail(Kind::Failed, "Incorrect syntax near '" + std::string(first.raw) + "': a statement is expected.");
  while (reader_.acceptSymbol(";")) {
  }
  if (reader_.position() < limit_ && first.isSymbol(";")) skipStatement();
}

void Interpreter::ifStatement() {
  for (;;) {
    const std::optional<bool> truth = condition(reader_.position());
    if (flow_ != Flow::Normal) return;
    if (truth.value_or(false)) {
      body();
    } else {
      skipStatement();
    }
    if (flow_ != Flow::Normal) return;
    const std::size_t behind = reader_.position();
    while (reader_.acceptSymbol(";")) {
    }
    if (reader_.position() >= limit_ || !reader_.acceptWord("ELSE")) return reader_.moveTo(behind);
    if (truth.value_or(true)) return skipStatement();
    if (!reader_.peek().is("IF")) return body();
  }
}

// An ELSE that no IF is open for: what follows it is no statement of its own either.
void Interpreter::elseStatement() {
  fail(Kind::Skipped, "ELSE without its beginning");
  reader_.next();
  if (reader_.position() < limit_) skipStatement();
}

// Loops ---------------------------------------------------------------------------------------------------------------

// Tells whether two moments differ by anything that a statement could have changed.
std::int64_t Interpreter::changesSoFar() const { return state_.changes + sqlite3_total_changes64(database_->get()); }

// The variables that statements between two tokens set, as far as their words tell.
std::vector<std::string> Interpreter::assignedWithin(std::size_t begin, std::size_t end) const {
  std::vector<std::string> names;
  bool into = false;
  for (std::size_t i = begin; i < end; ++i) {
    const Token& token = tokens_[i];
    if (token.is("FETCH")) names.emplace_back("@@fetch_status");
    if (token.is("INTO")) into = true;
    if (token.kind == TokenKind::Variable) {
      const Token& next = tokens_[i + 1];
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
    const Token& token = tokens_[i];
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
      if (tokens_[i].is(word)) return false;
  return true;
}

void Interpreter::turns(std::size_t start, std::size_t end) {
  for (int turn = 0; flow_ == Flow::Normal; ++turn) {
    const std::optional<bool> truth = condition(start);
    if (flow_ != Flow::Normal || !truth.value_or(false)) return;
    if (turn == 0 && neverEnds(start + 1, reader_.position(), end))
      return fail(Kind::Failed, "The loop isn't run: nothing in it changes what its condition reads.");
    if (turn >= mostTurns)
      return fail(Kind::Failed, "The loop has been ended after " + std::to_string(mostTurns) + " turns.");
    const auto things = [&] {
      return std::tuple(changesSoFar(), session_.variables["@@rowcount"].integer,
                        session_.variables["@@error"].integer);
    };
    const auto before = things();
    body();
    if (flow_ == Flow::Continue) flow_ = Flow::Normal;
    if (flow_ == Flow::Normal && things() == before)
      return fail(Kind::Failed, "The loop has been ended: a turn changes nothing, so that it would never end.");
  }
  if (flow_ == Flow::Break) flow_ = Flow::Normal;
}

void Interpreter::whileStatement() {
  const std::size_t start = reader_.position();
  skipStatement();  // for its end
  if (flow_ != Flow::Normal || doing_.kind == Kind::Failed) return;
  const std::size_t end = reader_.position();
  if (!listener_) {  // the first error ends everything
    turns(start, end);
  } else {
    const SessionState before = state_.loops == 0 ? state_ : SessionState();
    const auto variables = session_.variables;
    const auto blocks = blocks_;
    const auto place = std::tuple(limit_, statementDepth_);
    if (state_.loops == 0) database_->execute("savepoint q_loop");
    ++state_.loops;
    try {
      turns(start, end);
      --state_.loops;
      // Releasing would end a transaction that the loop has left open.
      if (state_.loops == 0 && state_.transactions == before.transactions)
        sqlite3_exec(database_->get(), "release q_loop", nullptr, nullptr, nullptr);
    } catch (const LoopRefused& refusal) {
      if (--state_.loops > 0) throw;
      std::tie(limit_, statementDepth_) = place;
      blocks_ = blocks;
      undoLoop(start, end, before, variables, refusal);
    }
  }
  if (flow_ == Flow::Normal) reader_.moveTo(end);
}

// Leaves things as if the loop had not begun. When it has ended a transaction that stood around it, what it has done
// stays.
void Interpreter::undoLoop(std::size_t start, std::size_t end, const SessionState& before,
                           const std::map<std::string, Value>& variables, const LoopRefused& refusal) {
  std::string reason = "the loop isn't run, because of \"" + refusal.statement + "\": " + refusal.reason;
  if (sqlite3_exec(database_->get(), "rollback to q_loop; release q_loop", nullptr, nullptr, nullptr) == SQLITE_OK) {
    state_ = before;
    session_.variables = variables;
    account_.forget(start + 1, end);
  } else {
    reason += "; what it had done before stays";
  }
  schemaChanged();
  flow_ = Flow::Normal;
  executing_ = true;
  reader_.moveTo(end);
  doing_ = {};
  fail(Kind::Skipped, reason);
}

// Jumps ---------------------------------------------------------------------------------------------------------------

void Interpreter::label() {
  reader_.next();
  reader_.next();
}

void Interpreter::gotoStatement() {
  const std::size_t start = reader_.position();
  statementStart_ = start;
  reader_.next();
  const std::string name = lowerCase(reader_.peek().raw);
  const Structure::Label* found = reader_.peek().isIdentifier() ? structure_.label(name) : nullptr;
  if (!found) {
    return leaveRest(Kind::Failed, "A GOTO statement references the label '" + name +
                                       "' but the label has not been declared. The rest of the batch is left out.");
  }
  reader_.next();
  const bool open =
      found->block == Structure::none || std::find(blocks_.begin(), blocks_.end(), found->block) != blocks_.end();
  if (!open) return leaveRest(Kind::Skipped, "GOTO into a block: the rest of the batch is left out");
  const auto [last, fresh] = jumps_.try_emplace(start, 0);
  if (!fresh && found->at < start && last->second == changesSoFar())
    return leaveRest(Kind::Failed, "The jumps have been ended: they change nothing, so that they would never end.");
  if (++turnsByGoto_ > mostTurns)
    return leaveRest(Kind::Failed, "The jumps have been ended after " + std::to_string(mostTurns) + " times.");
  last->second = changesSoFar();
  target_ = name;
  flow_ = Flow::Goto;
}

// Goes on at the label when it stands in this very block.
bool Interpreter::catchGoto(std::size_t block) {
  const Structure::Label* found = structure_.label(target_);
  if (found->block != block) return false;
  // What is jumped over belongs to the jump.
  account_.claim(std::min(reader_.position(), found->at), found->at);
  reader_.moveTo(found->at);
  flow_ = Flow::Normal;
  return true;
}

void Interpreter::flowStatement() {
  const Token& word = reader_.next();
  Flow flow = word.is("BREAK") ? Flow::Break : word.is("CONTINUE") ? Flow::Continue : Flow::Return;
  std::string value;
  const Token& next = reader_.peek();
  const bool expression = next.kind == TokenKind::Number || next.kind == TokenKind::Variable || next.isSymbol("-") ||
                          (next.isSymbol("(") && !next.firstOnLine);
  if (flow == Flow::Return && expression) value = translator().expression();
  if (!act()) return;
  if (flow != Flow::Return && state_.loops == 0 && listener_)
    refuse("Cannot use a " + upperCase(word.raw) + " statement outside the scope of a WHILE statement.");
  if (!value.empty()) result_.returnValue = static_cast<std::int32_t>(evaluate(value).integer);
  flow_ = flow;
}

// THROW [number, text, state]: the text ends, or its CATCH takes over.
void Interpreter::throwStatement() {
  reader_.next();
  std::string text;
  const Token& next = reader_.peek();
  if (next.kind == TokenKind::Number || next.kind == TokenKind::Variable) {
    translator().expression();
    reader_.expectSymbol(",");
    text = translator().expression();
    reader_.expectSymbol(",");
    translator().expression();
  }
  if (!act()) return;
  std::string message = text.empty() ? caught_ : evaluate(text).text;
  flow_ = state_.tries > 0 ? Flow::Throw : Flow::Abort;
  if (state_.tries > 0) caught_ = message;
  fail(Kind::Failed, "THROW: " + message);
}

// Moving over statements ----------------------------------------------------------------------------------------------

// Moves over the statement at the reader, which is not run. What can't be moved over leaves out the rest of the batch.
void Interpreter::skipStatement() {
  const std::size_t start = reader_.position();
  if (const auto known = ends_.find(start); known != ends_.end()) return reader_.moveTo(known->second);
  const bool was = std::exchange(executing_, false);
  ++statementDepth_;
  skipWhole();
  --statementDepth_;
  executing_ = was;
  if (flow_ != Flow::Normal) return;
  if (reader_.position() == start && start < limit_) reader_.next();
  ends_[start] = reader_.position();
  declareWithin(start, reader_.position());
}

void Interpreter::skipWhole() {
  const Token& first = reader_.peek();
  if (statementDepth_ > mostNesting) {
    leaveRest(Kind::Skipped, "nested too deeply: the rest of the batch is left out");
  } else if (reader_.position() >= limit_ || first.is("END") || first.is("ELSE")) {
    fail(Kind::Failed, "Incorrect syntax near '" + std::string(first.raw) + "': a statement is expected.");
  } else if (first.isSymbol(";")) {
    body();  // tells it
  } else if (first.is("IF") || first.is("WHILE")) {
    skipBranches();
  } else if (structure_.opensBlockAt(reader_.position())) {
    skipBlock();
  } else if (isModuleAt(reader_.position())) {
    leaveRest(Kind::Failed,
              "'CREATE/ALTER' of a procedure, view, function or trigger must be the first statement in "
              "a query batch. The rest of the batch is left out.");
  } else if (first.is("GOTO") || first.label) {
    label();  // two words as well
  } else {
    skipSimple();
  }
}

void Interpreter::skipBranches() {
  for (;;) {
    const bool loop = reader_.peek().is("WHILE");
    skipCondition();
    skipStatement();
    if (loop || flow_ != Flow::Normal) return;
    const std::size_t behind = reader_.position();
    while (reader_.acceptSymbol(";")) {
    }
    if (reader_.position() >= limit_ || !reader_.acceptWord("ELSE")) return reader_.moveTo(behind);
    if (!reader_.peek().is("IF")) return skipStatement();
  }
}

// A block ends at its END, whatever stands in it.
void Interpreter::skipBlock() {
  const std::size_t start = reader_.position();
  std::size_t close = structure_.endOf(start);
  if (close != Structure::none && tokens_[start + 1].is("TRY")) {
    std::size_t opening = close + 2;
    while (opening < tokens_.size() && tokens_[opening].isSymbol(";")) ++opening;
    const bool caught = structure_.opensBlockAt(opening) && tokens_[opening + 1].is("CATCH");
    close = caught ? structure_.endOf(opening) : Structure::none;
    if (close != Structure::none) ++close;
  }
  if (close == Structure::none) return leaveRest(Kind::Failed, "BEGIN without END: the rest of the batch is left out.");
  reader_.moveTo(close + 1);
}

void Interpreter::skipSimple() {
  const std::size_t start = reader_.position();
  const std::size_t outer = std::exchange(statementStart_, start);
  Doing doing = std::exchange(doing_, {});
  parsed_ = false;
  try {
    perform(start);
  } catch (const NotUnderstood&) {
    parsed_ = parsed_ && reader_.position() > start;
    if (!parsed_) reader_.moveTo(endOfRefused(start, Kind::Skipped));
  } catch (const DataError&) {
    reader_.moveTo(endOfRefused(start, Kind::Skipped));
  }
  parsed_ = true;
  doing_ = std::move(doing);
  statementStart_ = outer;
}

void Interpreter::skipCondition() {
  const std::size_t start = reader_.position();
  try {
    checkNesting(start);
    reader_.next();
    translator().condition();
  } catch (const NotUnderstood&) {
    skipToBody(start);
  } catch (const DataError&) {
    skipToBody(start);
  }
}

// Moves to the statement behind a condition that can't be read.
void Interpreter::skipToBody(std::size_t start) {
  int brackets = 0;
  for (std::size_t i = start + 1;; ++i) {
    if (i < tokens_.size() && tokens_[i].is("CASE") && structure_.endOf(i) != Structure::none) {
      i = structure_.endOf(i);
      continue;
    }
    reader_.moveTo(i);
    const Token& token = reader_.peek();
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) --brackets;
    const bool ends = startsStatement(token) || token.isSymbol(";");
    if (token.kind == TokenKind::End || i >= limit_ || (brackets <= 0 && ends)) return;
  }
}

// Variables are declared by being written, also where nothing is run.
void Interpreter::declareWithin(std::size_t begin, std::size_t end) {
  const std::size_t behind = reader_.position();
  const bool was = std::exchange(executing_, false);
  for (std::size_t i = begin; i < end; ++i) {
    if (!tokens_[i].is("DECLARE") || tokens_[i + 1].kind != TokenKind::Variable) continue;
    reader_.moveTo(i);
    try {
      declareStatement();
    } catch (const NotUnderstood&) {  // whoever uses it will tell
    } catch (const DataError&) {
    }
  }
  executing_ = was;
  reader_.moveTo(behind);
}

}  // namespace qrel::tsql
