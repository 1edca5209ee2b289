#include "platform/data/embedded/interpreter.h"

#include <algorithm>
#include <array>

#include "platform/data/embedded/scan.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Batches longer than this are lexed piece by piece where they are rows of INSERTs.
constexpr std::size_t pieceSize = 16 * 1024;
constexpr std::size_t firstWordsLength = 60;
constexpr int mostTurns = 1000000;
// Statements within statements, and brackets within brackets, beyond which nothing is read: both are read by recursion.
constexpr int mostNesting = 200;

bool isModuleWord(const Token& token) {
  return token.is("PROC") || token.is("PROCEDURE") || token.is("VIEW") || token.is("FUNCTION") || token.is("TRIGGER");
}

// Whether a batch is one CREATE or ALTER of a procedure, view, function or trigger.
bool isModuleBatch(std::string_view batch) {
  const std::string_view head = batch.substr(skipBlanksAndComments(batch, 0), 400);
  const auto tokens = lex(head);
  TokenReader reader(head, tokens);
  if (!reader.acceptWord("ALTER")) {
    if (!reader.acceptWord("CREATE")) return false;
    if (reader.acceptWord("OR")) reader.acceptWord("ALTER");
  }
  return isModuleWord(reader.peek());
}

// How deep brackets, CASE and runs of signs and NOTs go between two tokens.
int nestingOf(const std::vector<Token>& tokens, std::size_t begin, std::size_t end) {
  int deepest = 0;
  int open = 0;
  int run = 0;
  for (std::size_t i = begin; i < end; ++i) {
    const Token& token = tokens[i];
    const bool prefix = token.isSymbol("-") || token.isSymbol("+") || token.isSymbol("~") || token.is("NOT");
    run = prefix ? run + 1 : 0;
    if (token.isSymbol("(") || token.is("CASE")) ++open;
    if ((token.isSymbol(")") || token.is("END")) && open > 0) --open;
    deepest = std::max(deepest, open + run);
  }
  return deepest;
}

bool beginsTransaction(const Token& behindBegin) {
  return behindBegin.is("TRAN") || behindBegin.is("TRANSACTION") || behindBegin.is("DISTRIBUTED") ||
         behindBegin.is("DIALOG") || behindBegin.is("CONVERSATION");
}

bool isOneOf(const Token& token, std::initializer_list<std::string_view> words) {
  return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return token.is(word); });
}

// Whether a word that may start a statement goes on with the one that `first` starts.
class Continuation {
 public:
  explicit Continuation(const Token& first)
      : merge_(first.is("MERGE")),
        wantsSet_(first.is("UPDATE") || first.is("ALTER")),
        wantsQuery_(first.is("INSERT")),
        wantsStatement_(first.is("WITH")),
        alter_(first.is("ALTER")) {}

  // Tells of each token in turn that stands in no brackets.
  void pass(const Token& token) {
    if (token.is("VALUES")) wantsQuery_ = false;
  }

  bool continues(const Token& previous, const Token& token) {
    if (merge_) return true;  // a MERGE ends with its semicolon alone
    if (previous.isSymbol(",") || previous.isSymbol("=") ||
        isOneOf(previous, {"UNION", "ALL", "EXCEPT", "INTERSECT", "AS", "THEN", "FOR", "ON", "AFTER", "OF", "GRANT",
                           "DENY", "REVOKE", "AND", "OR", "NOT"}))
      return true;
    if (token.is("SET") && take(wantsSet_)) return true;
    if (isOneOf(token, {"SELECT", "EXEC", "EXECUTE"}) && take(wantsQuery_)) return true;
    if (alter_ && isOneOf(token, {"DROP", "ALTER"}) && take(alter_)) return true;
    if (isOneOf(token, {"SELECT", "INSERT", "UPDATE", "DELETE", "MERGE"}) && take(wantsStatement_)) {
      wantsSet_ = token.is("UPDATE");
      wantsQuery_ = token.is("INSERT");
      merge_ = token.is("MERGE");
      return true;
    }
    return false;
  }

 private:
  static bool take(bool& flag) {
    const bool was = flag;
    flag = false;
    return was;
  }

  bool merge_, wantsSet_, wantsQuery_, wantsStatement_, alter_;
};

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
  const bool whole = batch.size() <= pieceSize || isModuleBatch(batch);
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
  deep_ = nestingOf(tokens_, 0, tokens_.size()) > mostNesting;
  while (!reader_.atEnd() && flow_ == Flow::Normal) {
    const std::size_t before = reader_.position();
    statement();
    if (reader_.position() == before) reader_.next();
  }
}

void Interpreter::statement() {
  if (listener_ && listener_->stopRequested()) flow_ = Flow::Stop;
  const Token& first = reader_.peek();
  if (first.isSymbol(";")) {
    reader_.next();
    return;
  }
  if (++statementDepth_ > mostNesting) {
    parsed_ = true;
    const std::size_t start = reader_.position();
    reader_.moveTo(tokens_.size() - 1);
    statementFailed(start, Kind::Skipped, "nested too deeply", errorNumber::badSql);
  } else if (first.is("IF")) {
    ifStatement();
  } else if (first.is("WHILE")) {
    whileStatement();
  } else if (first.is("BEGIN") && !beginsTransaction(reader_.peek(1))) {
    block();
  } else {
    simpleStatement();
  }
  --statementDepth_;
}

void Interpreter::checkNesting(std::size_t start) const {
  if (deep_ && nestingOf(tokens_, start, likelyEnd(start)) > mostNesting) notUnderstood("nested too deeply");
}

Interpreter::Handler Interpreter::handlerOf(const Token& token) const {
  static constexpr std::array<Entry, 45> entries{{
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
      {"THROW", &Interpreter::skipWithoutEffect},
      {"GRANT", &Interpreter::permissionStatement},
      {"DENY", &Interpreter::permissionStatement},
      {"REVOKE", &Interpreter::permissionStatement},
      {"USE", &Interpreter::useStatement},
      {"BEGIN", &Interpreter::beginTransaction},
      {"COMMIT", &Interpreter::transactionStatement},
      {"ROLLBACK", &Interpreter::transactionStatement},
      {"SAVE", &Interpreter::transactionStatement},
      {"CHECKPOINT", &Interpreter::skipWithoutEffect},
      {"DBCC", &Interpreter::skipWithoutEffect},
      {"BACKUP", &Interpreter::skipWithoutEffect},
      {"RECONFIGURE", &Interpreter::skipWithoutEffect},
      {"WAITFOR", &Interpreter::skipWithoutEffect},
      {"ENABLE", &Interpreter::skipWithoutEffect},
      {"DISABLE", &Interpreter::skipWithoutEffect},
      {"RETURN", &Interpreter::flowStatement},
      {"BREAK", &Interpreter::flowStatement},
      {"CONTINUE", &Interpreter::flowStatement},
      {"MERGE", &Interpreter::notKept},
      {"GOTO", &Interpreter::notKept},
      {"RESTORE", &Interpreter::notKept},
      {"BULK", &Interpreter::notKept},
      {"OPEN", &Interpreter::notKept},
      {"FETCH", &Interpreter::notKept},
      {"CLOSE", &Interpreter::notKept},
      {"DEALLOCATE", &Interpreter::notKept},
      {"KILL", &Interpreter::notKept},
      {"END", &Interpreter::notKept},
      {"ELSE", &Interpreter::notKept},
  }};
  for (const Entry& entry : entries)
    if (token.is(entry.word)) return entry.handler;
  if (token.isSymbol("(")) return &Interpreter::selectStatement;
  return nullptr;
}

void Interpreter::simpleStatement() {
  const std::size_t start = reader_.position();
  statementStart_ = start;
  parsed_ = silent_ = false;
  made_.clear();
  rows_ = 0;
  try {
    Handler handler = handlerOf(reader_.peek());
    if (handler && running()) requireStatement(session_.rights(), reader_, session_.open().facts.database);
    if (!handler && reader_.peek().isIdentifier() && atBatchStart()) handler = &Interpreter::execStatement;
    if (!handler && reader_.peek(1).isSymbol(":")) {  // a label
      reader_.next();
      reader_.next();
      return;
    }
    if (!handler) notUnderstood("unknown statement");
    checkNesting(start);
    const bool told = running();
    (this->*handler)();
    if (told && !silent_) tell(start, made_.empty() ? Kind::Ran : Kind::Made, made_, rows_);
  } catch (const NotUnderstood& error) {
    statementFailed(start, Kind::Skipped, error.reason, errorNumber::badSql);
  } catch (const DataError& error) {
    if (error.number == errorNumber::cannotConnect || !listener_) {
      // The file itself is in trouble, or there is nobody to tell.
      if (running())
        throw DataError(error.number, error.description, error.sqlState,
                        error.sql.empty() ? std::string(batch_) : error.sql);
    }
    statementFailed(start, Kind::Failed, error.description, error.number);
  }
}

void Interpreter::statementFailed(std::size_t start, Kind kind, const std::string& reason, std::int32_t number) {
  statementStart_ = start;
  if (!parsed_) reader_.moveTo(std::max(likelyEnd(start), start + 1));
  if (!running()) return;
  if (!listener_) throw DataError(number, reason, "42000", std::string(batch_));
  tell(start, kind, reason, 0, number);
}

void Interpreter::tell(std::size_t start, Kind kind, std::string what, std::int64_t rows, std::int32_t number) {
  if (!listener_) return;
  StatementOutcome outcome;
  outcome.kind = kind;
  outcome.what = std::move(what);
  outcome.line = fixedLine_ != 0 ? fixedLine_ : tokens_[start].line + lineOffset_;
  outcome.firstWords = firstWords(start);
  outcome.rows = rows;
  outcome.errorNumber = number;
  if (kind == Kind::Failed) {
    const bool module = start == 0 && pieceStart_ == 0 && isModuleBatch(batch_);
    outcome.text = module ? batch_ : reader_.sourceBetween(start, reader_.position());
  }
  listener_->statementDone(outcome);
}

std::string Interpreter::firstWords(std::size_t start) const {
  const std::size_t end = std::max(reader_.position(), start + 1);
  std::string words;
  for (const char c : reader_.sourceBetween(start, end)) {
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

std::size_t Interpreter::likelyEnd(std::size_t start) const {
  Continuation continuation(tokens_[start]);
  int brackets = 0;
  int blocks = 0;
  for (std::size_t i = start + 1; i < tokens_.size(); ++i) {
    const Token& token = tokens_[i];
    if (token.kind == TokenKind::End) return i;
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) brackets = std::max(0, brackets - 1);
    if (brackets > 0) continue;
    continuation.pass(token);
    if (token.is("CASE")) ++blocks;
    if (token.is("END") && blocks-- == 0) return i;
    if (blocks > 0) continue;
    if (token.isSymbol(";") || token.is("ELSE")) return i;
    if (token.firstOnLine && (startsStatement(token) || token.is("FETCH")) &&
        !continuation.continues(tokens_[i - 1], token))
      return i;
  }
  return tokens_.size() - 1;
}

bool Interpreter::act() {
  parsed_ = true;
  return running();
}

void Interpreter::schemaChanged() {
  catalogue_->forget();
  state_.plans.clear();
  state_.identities.clear();
  state_.versions.clear();
}

void Interpreter::notUnderstood(std::string reason) const {
  throw NotUnderstood{std::move(reason), reader_.peek().line};
}

void Interpreter::skipWithoutEffect() {
  reader_.moveTo(likelyEnd(statementStart_));
  act();
}

void Interpreter::notKept() {
  const std::string word = upperCase(reader_.peek().raw);
  if (word == "END" || word == "ELSE") {
    reader_.next();
    parsed_ = true;
    notUnderstood(word + " without its beginning");
  }
  notUnderstood(word + " isn't carried out");
}

void Interpreter::statementsUntilEnd() {
  ++blockDepth_;
  while (!reader_.atEnd() && !reader_.peek().is("END")) {
    const std::size_t before = reader_.position();
    statement();
    if (reader_.position() == before) reader_.next();
  }
  --blockDepth_;
}

void Interpreter::block() {
  const std::size_t start = reader_.position();
  reader_.next();
  if (reader_.acceptWord("TRY")) return tryBlock();
  statementsUntilEnd();
  if (!reader_.acceptWord("END")) {
    parsed_ = true;
    statementFailed(start, Kind::Skipped, "BEGIN without END: its statements have been run", errorNumber::badSql);
  }
}

void Interpreter::tryBlock() {
  statementsUntilEnd();
  reader_.acceptWord("END");
  reader_.acceptWord("TRY");
  reader_.acceptSymbol(";");
  if (!reader_.peek().is("BEGIN") || !reader_.peek(1).is("CATCH")) return;
  reader_.next();
  reader_.next();
  const bool was = executing_;
  executing_ = false;
  statementsUntilEnd();
  executing_ = was;
  reader_.acceptWord("END");
  reader_.acceptWord("CATCH");
}

bool Interpreter::evaluateCondition(const std::string& sql) {
  const Value value = evaluate("(" + sql + ")");
  return !value.null && value.integer != 0;
}

// Moves to the statement behind a condition that can't be read.
void Interpreter::skipToBody(std::size_t start) {
  int brackets = 0;
  for (std::size_t i = start + 1;; ++i) {
    reader_.moveTo(i);
    const Token& token = reader_.peek();
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) --brackets;
    if (token.kind == TokenKind::End || (brackets <= 0 && startsStatement(token))) return;
  }
}

void Interpreter::ifStatement() {
  const std::size_t start = reader_.position();
  const bool was = executing_;
  bool first = false;
  bool second = false;
  parsed_ = false;
  try {
    checkNesting(start);
    reader_.next();
    const std::string sql = translator().condition();
    parsed_ = true;
    if (running()) first = evaluateCondition(sql), second = !first;
  } catch (const NotUnderstood& error) {
    if (!std::exchange(parsed_, true)) skipToBody(start);
    statementFailed(start, Kind::Skipped, error.reason, errorNumber::badSql);
  } catch (const DataError& error) {
    if (running() && (!listener_ || error.number == errorNumber::cannotConnect)) throw;
    if (!std::exchange(parsed_, true)) skipToBody(start);
    statementFailed(start, Kind::Failed, error.description, error.number);
  }
  executing_ = was && first;
  statement();
  const std::size_t behind = reader_.position();
  while (reader_.acceptSymbol(";")) {
  }
  if (reader_.acceptWord("ELSE")) {
    executing_ = was && second;
    statement();
  } else {
    reader_.moveTo(behind);
  }
  executing_ = was;
}

void Interpreter::whileStatement() {
  const std::size_t start = reader_.position();
  const bool was = executing_;
  for (int turn = 0;; ++turn) {
    reader_.moveTo(start + 1);
    bool goesOn = false;
    parsed_ = false;
    try {
      checkNesting(start);
      const std::string sql = translator().condition();
      parsed_ = true;
      goesOn = running() && evaluateCondition(sql);
      if (goesOn && turn >= mostTurns) refuseLoop();
    } catch (const NotUnderstood& error) {
      if (!std::exchange(parsed_, true)) skipToBody(start);
      statementFailed(start, Kind::Skipped, error.reason, errorNumber::badSql);
      goesOn = false;
    } catch (const DataError& error) {
      if (running() && (!listener_ || error.number == errorNumber::cannotConnect)) throw;
      if (!std::exchange(parsed_, true)) skipToBody(start);
      statementFailed(start, Kind::Failed, error.description, error.number);
      goesOn = false;
    }
    executing_ = was && goesOn;
    statement();
    executing_ = was;
    if (flow_ == Flow::Continue) flow_ = Flow::Normal;
    if (!goesOn || flow_ != Flow::Normal) break;
  }
  if (flow_ == Flow::Break) flow_ = Flow::Normal;
}

void Interpreter::refuseLoop() {
  throw DataError(errorNumber::badSql, "The loop has been ended after " + std::to_string(mostTurns) + " turns.");
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
  if (!value.empty()) result_.returnValue = static_cast<std::int32_t>(evaluate(value).integer);
  flow_ = flow;
}

}  // namespace qrel::tsql
