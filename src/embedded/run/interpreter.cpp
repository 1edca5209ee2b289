#include "embedded/run/interpreter.h"

#include <algorithm>
#include <array>

#include "embedded/language/scan.h"
#include "embedded/language/words.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Batches longer than this are lexed piece by piece where they are rows of INSERTs.
constexpr std::size_t pieceSize = 16 * 1024;
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

Interpreter::Interpreter(Session& session, SessionState& state, BatchListener* listener, CommandResult& result)
    : session_(session),
      state_(state),
      listener_(listener),
      result_(result),
      catalogue_(&session.open().catalogue),
      database_(&session.open().database),
      tokens_(1),
      reader_({}, tokens_) {}

void Interpreter::run(std::string_view batch) {
  batch_ = batch;
  if (const OpenPart open = openPartAt(batch, 0, batch.size()); open.mark != 0) {
    const std::string reason = unclosedText(open) + std::string(nothingRun);
    if (!listener_) throw DataError(errorNumber::badSql, reason, "42000", std::string(batch));
    StatementOutcome outcome;
    outcome.kind = Kind::Failed;
    outcome.what = reason;
    outcome.line = fixedLine_ != 0 ? fixedLine_ : lineOf(batch, open.at);
    outcome.firstWords = shortened(batch.substr(open.at));
    outcome.errorNumber = errorNumber::badSql;
    if (tellTo_) {
      tellTo_->push_back(std::move(outcome));
    } else {
      listener_->statementDone(outcome);
    }
    return;
  }
  const bool whole = batch.size() <= pieceSize || isModuleBatch(batch) || mayJump(batch);
  for (std::size_t at = 0; at < batch.size() && flow_ == Flow::Normal;) {
    const std::string_view rest = batch.substr(at);
    const std::string_view piece = whole ? rest : rest.substr(0, findCut(rest, pieceSize));
    pieceStart_ = at;
    runPiece(piece);
    lineOffset_ += tokens_.back().line - 1;
    at += piece.size();
  }
}

void Interpreter::runPiece(std::string_view text) {
  tokens_ = lex(text);
  reader_ = TokenReader(text, tokens_);
  structure_ = Structure(tokens_);
  account_.open(tokens_.size() - 1);
  ends_.clear();
  blocks_.clear();
  limit_ = tokens_.size() - 1;
  deep_ = structure_.nestingOf(0, limit_) > mostNesting;
  runUntil(0, limit_);
  if (flow_ != Flow::Normal) account_.claim(reader_.position(), limit_);
  tellUnread();
  tellAll();
}

// Runs the statement at the reader and leaves one outcome for it.
void Interpreter::statement() {
  if (stopAsked()) flow_ = Flow::Stop;
  if (flow_ != Flow::Normal) return;
  const std::size_t start = reader_.position();
  if (reader_.acceptSymbol(";")) return account_.claim(start, start + 1);
  if (state_.noExec && !atExecOn()) return suspended(start);
  Doing outer = std::exchange(doing_, {});
  ++statementDepth_;
  dispatch();
  --statementDepth_;
  if (reader_.position() == start) reader_.next();
  record(start);
  doing_ = std::move(outer);
}

void Interpreter::dispatch() {
  const Token& first = reader_.peek();
  if (statementDepth_ > mostNesting) {
    leaveRest(Kind::Skipped, "nested too deeply: the rest of the batch is left out");
  } else if (first.is("IF")) {
    ifStatement();
  } else if (first.is("WHILE")) {
    whileStatement();
  } else if (structure_.opensBlockAt(reader_.position())) {
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
  if (deep_ && structure_.nestingOf(start, structure_.guessEnd(start, limit_)) > mostNesting)
    notUnderstood("nested too deeply");
}

Interpreter::Handler Interpreter::handlerOf(const Token& token) {
  static constexpr std::array<Entry, 46> entries{{
      {"INSERT", &Interpreter::insertStatement},
      {"SELECT", &Interpreter::selectStatement},
      {"CREATE", &Interpreter::createStatement},
      {"ALTER", &Interpreter::alterStatement},
      {"DROP", &Interpreter::dropStatement},
      {"UPDATE", &Interpreter::updateStatement},
      {"DELETE", &Interpreter::deleteStatement},
      {"TRUNCATE", &Interpreter::truncateStatement},
      {"WITH", &Interpreter::selectStatement},
      {"EXEC", &Interpreter::execStatement},
      {"EXECUTE", &Interpreter::execStatement},
      {"SET", &Interpreter::setStatement},
      {"DECLARE", &Interpreter::declareStatement},
      {"PRINT", &Interpreter::expressionStatement},
      {"RAISERROR", &Interpreter::raiserrorStatement},
      {"THROW", &Interpreter::throwStatement},
      {"GRANT", &Interpreter::permissionStatement},
      {"DENY", &Interpreter::permissionStatement},
      {"REVOKE", &Interpreter::permissionStatement},
      {"USE", &Interpreter::useStatement},
      {"BEGIN", &Interpreter::beginTransaction},
      {"COMMIT", &Interpreter::transactionStatement},
      {"ROLLBACK", &Interpreter::transactionStatement},
      {"SAVE", &Interpreter::transactionStatement},
      {"CHECKPOINT", &Interpreter::skipWithoutEffect},
      {"DBCC", &Interpreter::dbccStatement},
      {"BACKUP", &Interpreter::skipWithoutEffect},
      {"RECONFIGURE", &Interpreter::skipWithoutEffect},
      {"REVERT", &Interpreter::skipWithoutEffect},
      {"WAITFOR", &Interpreter::skipWithoutEffect},
      {"ENABLE", &Interpreter::skipWithoutEffect},
      {"DISABLE", &Interpreter::skipWithoutEffect},
      {"RETURN", &Interpreter::flowStatement},
      {"BREAK", &Interpreter::flowStatement},
      {"CONTINUE", &Interpreter::flowStatement},
      {"OPEN", &Interpreter::openCursor},
      {"FETCH", &Interpreter::fetchCursor},
      {"CLOSE", &Interpreter::closeCursor},
      {"DEALLOCATE", &Interpreter::closeCursor},
      {"MERGE", &Interpreter::notKept},
      {"GOTO", &Interpreter::notKept},
      {"RESTORE", &Interpreter::notKept},
      {"BULK", &Interpreter::notKept},
      {"KILL", &Interpreter::notKept},
      {"SHUTDOWN", &Interpreter::notKept},
      {"END", &Interpreter::notKept},
  }};
  for (const Entry& entry : entries)
    if (token.is(entry.word)) return entry.handler;
  if (token.isSymbol("(")) return &Interpreter::selectStatement;
  return nullptr;
}

// A batch may begin with a procedure's name alone.
Interpreter::Handler Interpreter::handlerAt() const {
  const Handler handler = handlerOf(reader_.peek());
  if (!handler && reader_.peek().isIdentifier() && atBatchStart()) return &Interpreter::execStatement;
  return handler;
}

bool Interpreter::isModuleAt(std::size_t at) const {
  const auto token = [&](std::size_t ahead) -> const Token& { return tokens_[std::min(at + ahead, limit_)]; };
  if (token(0).is("ALTER")) return isModuleWord(token(1));
  return token(0).is("CREATE") && isModuleWord(token(token(1).is("OR") ? 3 : 1));
}

void Interpreter::simpleStatement() {
  const std::size_t start = reader_.position();
  statementStart_ = start;
  parsed_ = false;
  try {
    perform(start);
  } catch (const NotUnderstood& error) {
    refused(start, Kind::Skipped, error.reason, errorNumber::badSql);
  } catch (const DataError& error) {
    refused(start, error);
  }
}

void Interpreter::perform(std::size_t start) {
  const Handler handler = handlerAt();
  if (!handler) notUnderstood("unknown statement");
  // A procedure that is called by its name alone is asked about where it runs.
  if (running() && handlerOf(reader_.peek()))
    requireStatement(session_.rights(), reader_, session_.open().facts.database);
  checkNesting(start);
  (this->*handler)();
}

void Interpreter::refused(std::size_t start, const DataError& error) {
  if (error.number == errorNumber::cancelled && stopAsked()) {
    flow_ = Flow::Stop;
    return;
  }
  if (error.number == errorNumber::cannotConnect || !listener_) {
    // The file itself is in trouble, or there is nobody to tell.
    throw DataError(error.number, error.description, error.sqlState,
                    error.sql.empty() ? std::string(batch_) : error.sql);
  }
  refused(start, Kind::Failed, error.description, error.number);
}

void Interpreter::refused(std::size_t start, Kind kind, const std::string& reason, std::int32_t number) {
  if (!parsed_) reader_.moveTo(endOfRefused(start, kind));
  fail(kind, reason, number);
  if (kind != Kind::Skipped || isModuleAt(start) || fixedLine_ != 0) return;
  // Where its end had to be guessed, other statements may have gone with it.
  if (structure_.buriedChange(start, reader_.position()) != Structure::none)
    doing_.what +=
        "; left out up to line " + std::to_string(tokens_[reader_.position() - 1].line + lineOffset_) + " of its batch";
}

// What was understood and refused is read once more, for its end alone; where that fails, its words must do.
std::size_t Interpreter::endOfRefused(std::size_t start, Kind kind) {
  reader_.moveTo(start);
  if (kind == Kind::Failed) {
    const bool was = std::exchange(executing_, false);
    try {
      perform(start);
    } catch (const NotUnderstood&) {
      parsed_ = false;
    } catch (const DataError&) {
      parsed_ = false;
    }
    executing_ = was;
    if (parsed_ && reader_.position() > start) return reader_.position();
    reader_.moveTo(start);
  }
  std::size_t end = std::max(structure_.guessEnd(start, limit_), start + 1);
  // The block behind something unknown is its body.
  if (!handlerAt() && structure_.opensBlockAt(end) && structure_.endOf(end) < limit_) end = structure_.endOf(end) + 1;
  return end;
}

// The current statement has come to nothing.
void Interpreter::fail(Kind kind, const std::string& reason, std::int32_t number) {
  if (!listener_) throw DataError(number, reason, "42000", std::string(batch_));
  doing_.kind = kind;
  doing_.what = reason;
  doing_.number = number;
}

void Interpreter::leaveRest(Kind kind, const std::string& reason) {
  fail(kind, reason);
  reader_.moveTo(tokens_.size() - 1);
  parsed_ = true;
  flow_ = Flow::Return;
}

void Interpreter::record(std::size_t start) {
  if (!listener_) return;
  if (flow_ == Flow::Stop) return account_.claim(start, reader_.position());
  takeEffect(start);
  if (doing_.kind == Kind::Skipped && state_.loops > 0) throw LoopRefused{firstWords(start), doing_.what};
  std::vector<StatementOutcome> inside = std::move(doing_.inside);
  account_.add(start, reader_.position(), outcomeOf(start), std::move(inside));
}

// What a statement's outcome means for those behind it.
void Interpreter::takeEffect(std::size_t start) {
  const bool bad = doing_.kind == Kind::Skipped || doing_.kind == Kind::Failed;
  if (bad) markUnknown(start, reader_.position());
  const Token& first = tokens_[start];
  if (doing_.kind == Kind::Failed) {
    setGlobal("@@error", doing_.number == errorNumber::invalidObjectName ? invalidNameError : otherError);
    if (state_.tries > 0 && flow_ == Flow::Normal) {
      caught_ = doing_.what;
      flow_ = Flow::Throw;
    }
  } else if (!first.is("IF") && !first.is("WHILE") && !first.is("BEGIN") && !first.is("DECLARE")) {
    setGlobal("@@error", 0);
  }
}

StatementOutcome Interpreter::outcomeOf(std::size_t start) {
  StatementOutcome outcome;
  outcome.kind = doing_.kind;
  outcome.what = doing_.what;
  outcome.line = fixedLine_ != 0 ? fixedLine_ : tokens_[start].line + lineOffset_;
  if (!account_.knows(start)) outcome.firstWords = firstWords(start);
  outcome.rows = doing_.rows;
  outcome.errorNumber = doing_.number;
  if (doing_.kind == Kind::Failed) {
    const bool module = start == 0 && pieceStart_ == 0 && isModuleBatch(batch_);
    outcome.text = module ? batch_ : reader_.sourceBetween(start, reader_.position());
  }
  return outcome;
}

void Interpreter::tellAll() {
  if (!listener_) return;
  for (StatementOutcome& outcome : account_.take()) {
    if (tellTo_) {
      tellTo_->push_back(std::move(outcome));
    } else {
      listener_->statementDone(outcome);
    }
  }
}

// Whatever way the statements were read: a token that is in none of them is told.
void Interpreter::tellUnread() {
  if (!listener_ || flow_ == Flow::Stop) return;
  for (auto [first, last] = account_.unclaimed(); first != last; std::tie(first, last) = account_.unclaimed()) {
    doing_ = {};
    doing_.kind = Kind::Skipped;
    doing_.what = "not read";
    reader_.moveTo(last);
    account_.add(first, last, outcomeOf(first), {});
  }
}

std::string Interpreter::firstWords(std::size_t start) const {
  return shortened(reader_.sourceBetween(start, std::max(reader_.position(), start + 1)));
}

// Of variables that a statement would have set nobody knows the value.
void Interpreter::markUnknown(std::size_t begin, std::size_t end) {
  for (std::string& name : assignedWithin(begin, end)) state_.unknown.insert(std::move(name));
  for (const char* word : {"INSERT", "UPDATE", "DELETE", "MERGE", "SELECT", "WITH", "EXEC", "EXECUTE"})
    if (tokens_[begin].is(word) && doing_.kind == Kind::Skipped) state_.unknown.insert("@@rowcount");
}

void Interpreter::checkStop() const {
  if (stopAsked()) throw DataError(errorNumber::cancelled, "Operation canceled.", "HY008");
}

// SET NOEXEC OFF and its like, which alone run while it is on.
bool Interpreter::atExecOn() const {
  const Token& option = reader_.peek(1);
  return reader_.peek().is("SET") && (option.is("NOEXEC") || option.is("PARSEONLY") || option.is("FMTONLY"));
}

void Interpreter::suspended(std::size_t start) {
  if (isModuleAt(start)) {
    reader_.moveTo(tokens_.size() - 1);
  } else {
    skipStatement();
  }
  if (reader_.position() == start) reader_.next();
  if (!listener_ || std::exchange(suspensionTold_, true)) return account_.claim(start, reader_.position());
  Doing outer = std::exchange(doing_, {});
  doing_.kind = Kind::Skipped;
  doing_.what = "SET NOEXEC is ON: nothing of the batch is run until it is OFF";
  account_.add(start, reader_.position(), outcomeOf(start), {});
  doing_ = std::move(outer);
}

bool Interpreter::act() {
  parsed_ = true;
  return running();
}

void Interpreter::schemaChanged() {
  ++state_.changes;
  catalogue_->forget();
  state_.plans.clear();
  state_.identities.clear();
  state_.versions.clear();
}

void Interpreter::notUnderstood(std::string reason) const {
  throw NotUnderstood{std::move(reason), reader_.peek().line};
}

void Interpreter::skipWithoutEffect() {
  const Token& first = tokens_[statementStart_];
  // Names that are none of the server's reserved words begin a statement only in front of TRIGGER.
  if ((first.is("ENABLE") || first.is("DISABLE")) && !tokens_[statementStart_ + 1].is("TRIGGER"))
    notUnderstood("unknown statement");
  reader_.moveTo(structure_.plainEnd(statementStart_, limit_));
  withoutEffect();
  act();
}

void Interpreter::notKept() {
  const std::string word = upperCase(reader_.peek().raw);
  if (word == "END") {
    reader_.next();
    parsed_ = true;
    notUnderstood("END without its beginning");
  }
  notUnderstood(word + " isn't carried out");
}

}  // namespace qrel::tsql
