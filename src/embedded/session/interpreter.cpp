#include "embedded/session/interpreter.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "embedded/language/scan.h"
#include "embedded/language/words.h"
#include "embedded/statements/statementTable.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Batches longer than this are lexed piece by piece where they are rows of INSERTs.
constexpr std::size_t pieceSize = std::size_t{16} * 1024;
constexpr std::size_t firstWordsLength = 60;
// @@ERROR for errors that have no number of their own here.
constexpr std::int64_t otherError = 50000;
constexpr std::int64_t invalidNameError = 208;

std::string_view wordAt(std::string_view text, std::size_t at) {
  std::size_t end = at;
  while (end < text.size() && ((text[end] | 0x20) >= 'a' && (text[end] | 0x20) <= 'z')) ++end;
  return text.substr(at, end - at);
}

// Whether a batch is one CREATE or ALTER of a procedure, view, function or trigger.
bool isModuleBatch(std::string_view batch) {
  std::size_t at = 0;
  const auto next = [&] {
    at = skipBlanksAndComments(batch, at);
    const std::string_view word = wordAt(batch, at);
    at += word.size();
    return word;
  };
  std::string_view word = next();
  if (equalNoCase(word, "CREATE")) {
    word = next();
    if (equalNoCase(word, "OR")) next(), word = next();
  } else if (equalNoCase(word, "ALTER")) {
    word = next();
  }
  Token token;
  token.kind = TokenKind::Word;
  token.raw = word;
  return isModuleWord(token);
}

// A label is looked for in the whole batch.
bool mayJump(std::string_view batch) {
  for (std::size_t at = 0; (at = batch.find_first_of("gG", at)) != std::string_view::npos; ++at)
    if (equalNoCase(batch.substr(at, 4), "goto")) return true;
  return false;
}

std::size_t lineOf(std::string_view text, std::size_t offset) {
  std::size_t line = 1;
  for (std::size_t at = nextLine(text, 0); at <= offset && at < text.size(); at = nextLine(text, at)) ++line;
  return line;
}

// The server's words for what a batch leaves open.
std::string unclosedText(const OpenPart& open) {
  switch (open.mark) {
    case '*':
      return "Missing end comment mark '*/': the comment that begins here is never closed.";
    case '[':
      return "Unclosed bracket: the name that begins here is never closed.";
    default:
      return std::string("Unclosed quotation mark: the ") + (open.mark == '"' ? "name" : "text") +
             " that begins here is never closed.";
  }
}

constexpr std::string_view nothingRun = " Nothing of its batch is run.";

// `text` from its start as one line of limited length.
std::string shortened(std::string_view text) {
  std::string words;
  for (const char c : text) {
    const bool blank = static_cast<unsigned char>(c) <= 0x20;
    if (!blank) {
      words += c;
    } else if (!words.empty() && words.back() != ' ') {
      words += ' ';
    }
    if (words.size() > firstWordsLength + 4) break;
  }
  return std::string(trimRightBlanks(leftCharacters(words, firstWordsLength)));
}

}  // namespace

Interpreter::Interpreter(SessionState& session, BatchListener* listener, CommandResult& answer)
    : run_(session, listener, answer, *this) {}

void Interpreter::run(std::string_view batch) {
  text_.batch = batch;
  if (refuseOpenPart()) return;
  const bool whole = batch.size() <= pieceSize || isModuleBatch(batch) || mayJump(batch);
  for (std::size_t at = 0; at < batch.size() && run_.flow == Flow::Normal;) {
    const std::string_view rest = batch.substr(at);
    const std::string_view piece = whole ? rest : rest.substr(0, findCut(rest, pieceSize));
    text_.pieceStart = at;
    runPiece(piece);
    text_.linesBefore += text_.tokens.back().line - 1;
    at += piece.size();
  }
}

TextEnd Interpreter::runText(std::string_view text, std::size_t line, std::vector<StatementOutcome>& inside) {
  Interpreter inner(run_.session, run_.listener, run_.answer);
  inner.text_.fixedLine = line;
  inner.tellTo_ = &inside;
  inner.run(text);
  return {inner.run_.flow, inner.run_.caught};
}

// Of a text that leaves a quote, a bracket or a comment open nobody knows where its statements end.
bool Interpreter::refuseOpenPart() {
  const std::string_view batch = text_.batch;
  const OpenPart open = openPartAt(batch, 0, batch.size());
  if (open.mark == 0) return false;
  const std::string reason = unclosedText(open) + std::string(nothingRun);
  if (!run_.listener) throw DataError(errorNumber::badSql, reason, "42000", std::string(batch));
  StatementOutcome outcome;
  outcome.kind = Kind::Failed;
  outcome.what = reason;
  outcome.line = text_.fixedLine != 0 ? text_.fixedLine : lineOf(batch, open.at);
  outcome.firstWords = shortened(batch.substr(open.at));
  outcome.errorNumber = errorNumber::badSql;
  tell(std::move(outcome));
  return true;
}

void Interpreter::runPiece(std::string_view text) {
  text_.readPiece(text);
  account_.open(text_.end());
  ends_.clear();
  blocks_.clear();
  run_.limit = text_.end();
  deep_ = text_.structure.nestingOf(0, run_.limit) > mostNesting;
  runUntil(0, run_.limit);
  if (run_.flow != Flow::Normal) account_.claim(reader_.position(), run_.limit);
  tellUnread();
  tellAll();
}

// Runs the statement at the reader and leaves one outcome for it.
void Interpreter::statement() {
  if (run_.stopAsked()) run_.flow = Flow::Stop;
  if (run_.flow != Flow::Normal) return;
  const std::size_t start = reader_.position();
  if (reader_.acceptSymbol(";")) return account_.claim(start, start + 1);
  if (run_.memory.noExec && !atExecOn()) return suspended(start);
  StatementResult outer = std::exchange(run_.result, {});
  ++run_.depth;
  dispatch();
  --run_.depth;
  if (reader_.position() == start) reader_.next();
  record(start);
  run_.result = std::move(outer);
}

void Interpreter::dispatch() {
  const Token& first = reader_.peek();
  if (run_.depth > mostNesting) {
    run_.leaveRest(Kind::Skipped, "nested too deeply: the rest of the batch is left out");
  } else if (first.is("IF")) {
    ifStatement();
  } else if (first.is("WHILE")) {
    whileStatement();
  } else if (text_.structure.opensBlockAt(reader_.position())) {
    block();
  } else if (first.is("GOTO")) {
    gotoStatement();
  } else if (first.is("ELSE")) {
    elseStatement();
  } else if (first.label) {
    label();
  } else {
    simpleStatement();
  }
}

void Interpreter::checkNesting(std::size_t start) const {
  if (deep_ && text_.structure.nestingOf(start, text_.structure.guessEnd(start, run_.limit)) > mostNesting)
    run_.notUnderstood("nested too deeply");
}

void Interpreter::simpleStatement() {
  const std::size_t start = reader_.position();
  run_.start = start;
  run_.wasRead = false;
  try {
    perform(start);
  } catch (const NotUnderstood& error) {
    refused(start, Kind::Skipped, error.reason, errorNumber::badSql);
  } catch (const DataError& error) {
    refused(start, error);
  }
}

void Interpreter::perform(std::size_t start) {
  const StatementFunction function = statementAt(run_);
  if (!function) run_.notUnderstood("unknown statement");
  // A procedure that is called by its name alone is asked about where it runs.
  if (run_.running() && statementOf(reader_.peek()))
    requireStatement(run_.session.rights, reader_, run_.open->facts.database);
  checkNesting(start);
  function(run_);
}

void Interpreter::refused(std::size_t start, const DataError& error) {
  if (error.number == errorNumber::cancelled && run_.stopAsked()) {
    run_.flow = Flow::Stop;
    return;
  }
  if (error.number == errorNumber::cannotConnect || !run_.listener) {
    // The file itself is in trouble, or there is nobody to tell.
    throw DataError(error.number, error.description, error.sqlState,
                    error.sql.empty() ? std::string(text_.batch) : error.sql);
  }
  refused(start, Kind::Failed, error.description, error.number);
}

void Interpreter::refused(std::size_t start, Kind kind, const std::string& reason, std::int32_t number) {
  if (!run_.wasRead) reader_.moveTo(endOfRefused(start, kind));
  run_.fail(kind, reason, number);
  if (kind != Kind::Skipped || text_.structure.isModuleAt(start) || text_.fixedLine != 0) return;
  // Where its end had to be guessed, other statements may have gone with it.
  if (text_.structure.buriedChange(start, reader_.position()) != Structure::none)
    run_.result.what += "; left out up to line " +
                        std::to_string(text_.tokens[reader_.position() - 1].line + text_.linesBefore) + " of its batch";
}

// What was understood and refused is read once more, for its end alone; where that fails, its words must do.
std::size_t Interpreter::endOfRefused(std::size_t start, Kind kind) {
  reader_.moveTo(start);
  if (kind == Kind::Failed) {
    const bool was = std::exchange(run_.executing, false);
    try {
      perform(start);
    } catch (const NotUnderstood&) {
      run_.wasRead = false;
    } catch (const DataError&) {
      run_.wasRead = false;
    }
    run_.executing = was;
    if (run_.wasRead && reader_.position() > start) return reader_.position();
    reader_.moveTo(start);
  }
  std::size_t end = std::max(text_.structure.guessEnd(start, run_.limit), start + 1);
  // The block behind something unknown is its body.
  if (!statementAt(run_) && text_.structure.opensBlockAt(end) && text_.structure.endOf(end) < run_.limit)
    end = text_.structure.endOf(end) + 1;
  return end;
}

void Interpreter::record(std::size_t start) {
  if (!run_.listener) return;
  if (run_.flow == Flow::Stop) return account_.claim(start, reader_.position());
  takeEffect(start);
  if (run_.result.kind == Kind::Skipped && depths_.loops > 0) throw LoopRefused{firstWords(start), run_.result.what};
  std::vector<StatementOutcome> inside = std::move(run_.result.inside);
  account_.add(start, reader_.position(), outcomeOf(start), std::move(inside));
}

namespace {

// Statements that leave @@ROWCOUNT at 0, or at 1 when they assign to a variable. Those of rows set it themselves; EXEC,
// and what is nothing but flow, leaves it as it was.
bool countsNoRows(const Token& first) {
  if (first.is("INSERT")) return false;  // most statements of a script are
  for (const char* word : {"SET", "PRINT", "RAISERROR", "USE", "CREATE", "ALTER", "DROP", "TRUNCATE", "GRANT", "DENY",
                           "REVOKE", "COMMIT", "ROLLBACK", "SAVE", "CLOSE", "DEALLOCATE"})
    if (first.is(word)) return true;
  return false;
}

// Whether SET or DECLARE gives a variable a value.
bool assigns(const BatchText& text, std::size_t begin, std::size_t end) {
  if (text.tokens[begin].is("SET")) return text.tokens[begin + 1].kind == TokenKind::Variable;
  int depth = 0;  // what stands in parentheses belongs to a type
  for (std::size_t i = begin + 1; text.tokens[begin].is("DECLARE") && i < end; ++i) {
    if (text.tokens[i].isSymbol("(")) ++depth;
    if (text.tokens[i].isSymbol(")")) --depth;
    if (depth == 0 && text.tokens[i].isSymbol("=")) return true;
  }
  return false;
}

}  // namespace

// What a statement's outcome means for those behind it.
void Interpreter::takeEffect(std::size_t start) {
  const bool bad = run_.result.kind == Kind::Skipped || run_.result.kind == Kind::Failed;
  if (bad) markUnknown(start, reader_.position());
  const Token& first = text_.tokens[start];
  if (run_.result.kind == Kind::Failed) {
    run_.setGlobal("@@rowcount", 0);
    run_.setGlobal("@@error", run_.result.number == errorNumber::invalidObjectName ? invalidNameError : otherError);
    if (depths_.tries > 0 && run_.flow == Flow::Normal) {
      run_.caught = run_.result.what;
      run_.flow = Flow::Throw;
    }
  } else if (!first.is("IF") && !first.is("WHILE") && !first.is("BEGIN") && !first.is("DECLARE")) {
    run_.setGlobal("@@error", 0);
    if (!bad && countsNoRows(first)) run_.setGlobal("@@rowcount", assigns(text_, start, reader_.position()) ? 1 : 0);
  } else if (first.is("DECLARE") && assigns(text_, start, reader_.position())) {
    run_.setGlobal("@@rowcount", 1);
  }
}

StatementOutcome Interpreter::outcomeOf(std::size_t start) {
  StatementOutcome outcome;
  outcome.kind = run_.result.kind;
  outcome.what = run_.result.what;
  outcome.line = text_.lineOf(start);
  if (!account_.knows(start)) outcome.firstWords = firstWords(start);
  outcome.rows = run_.result.rows;
  outcome.errorNumber = run_.result.number;
  if (run_.result.hasMessage) {
    outcome.messages.push_back(std::move(run_.result.message));
    outcome.messageCount = 1;
  }
  if (run_.result.kind == Kind::Failed || run_.result.kind == Kind::Skipped) keepText(outcome, start);
  return outcome;
}

// What it takes to run a statement again. Those of a loop belong to their turn.
void Interpreter::keepText(StatementOutcome& outcome, std::size_t start) const {
  if (depths_.loops > 0) return;
  const bool module = start == 0 && text_.pieceStart == 0 && isModuleBatch(text_.batch);
  const std::size_t end = module ? start : reader_.position();
  outcome.text = module ? text_.batch : reader_.sourceBetween(start, end);
  const auto& session = run_.session;
  for (std::size_t i = start; i < end; ++i) {
    if (text_.tokens[i].kind != TokenKind::Variable) continue;
    const std::string name = lowerCase(text_.tokens[i].raw);
    const auto type = session.variableTypes.find(name);
    if (type == session.variableTypes.end()) continue;
    const auto value = session.variables.find(name);
    outcome.variables.push_back({name, type->second, value == session.variables.end() ? Value() : value->second});
    if (run_.memory.unknown.count(name) != 0) outcome.text.clear();
  }
}

void Interpreter::tell(StatementOutcome outcome) {
  if (tellTo_) {
    tellTo_->push_back(std::move(outcome));
  } else {
    run_.listener->statementDone(outcome);
  }
}

void Interpreter::tellAll() {
  if (!run_.listener) return;
  for (StatementOutcome& outcome : account_.take()) tell(std::move(outcome));
}

// Whatever way the statements were read: a token that is in none of them is told.
void Interpreter::tellUnread() {
  if (!run_.listener || run_.flow == Flow::Stop) return;
  for (auto [first, last] = account_.unclaimed(); first != last; std::tie(first, last) = account_.unclaimed()) {
    run_.result = {};
    run_.result.kind = Kind::Skipped;
    run_.result.what = "not read";
    reader_.moveTo(last);
    account_.add(first, last, outcomeOf(first), {});
  }
}

std::string Interpreter::firstWords(std::size_t start) const {
  return shortened(reader_.sourceBetween(start, std::max(reader_.position(), start + 1)));
}

// Of variables that a statement would have set nobody knows the value.
void Interpreter::markUnknown(std::size_t begin, std::size_t end) {
  for (std::string& name : assignedWithin(begin, end)) run_.memory.unknown.insert(std::move(name));
  for (const char* word : {"INSERT", "UPDATE", "DELETE", "MERGE", "SELECT", "WITH", "EXEC", "EXECUTE"})
    if (text_.tokens[begin].is(word) && run_.result.kind == Kind::Skipped) run_.memory.unknown.insert("@@rowcount");
}

// SET NOEXEC OFF and its like, which alone run while it is on.
bool Interpreter::atExecOn() const {
  const Token& option = reader_.peek(1);
  return reader_.peek().is("SET") && (option.is("NOEXEC") || option.is("PARSEONLY") || option.is("FMTONLY"));
}

void Interpreter::suspended(std::size_t start) {
  if (text_.structure.isModuleAt(start)) {
    reader_.moveTo(text_.end());
  } else {
    skipStatement();
  }
  if (reader_.position() == start) reader_.next();
  if (!run_.listener || std::exchange(suspensionTold_, true)) return account_.claim(start, reader_.position());
  StatementResult outer = std::exchange(run_.result, {});
  run_.result.kind = Kind::Skipped;
  run_.result.what = "SET NOEXEC is ON: nothing of the batch is run until it is OFF";
  account_.add(start, reader_.position(), outcomeOf(start), {});
  run_.result = std::move(outer);
}

}  // namespace qrel::tsql
