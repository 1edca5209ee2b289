// Moving over what isn't run: branches that aren't taken, the bodies of loops for their end.
#include <utility>

#include "embedded/language/words.h"
#include "embedded/session/interpreter.h"
#include "embedded/statements/variables.h"

namespace qrel::tsql {

// Moves over the statement at the reader, which is not run. What can't be moved over leaves out the rest of the batch.
void Interpreter::skipStatement() {
  const std::size_t start = reader_.position();
  if (const auto known = ends_.find(start); known != ends_.end()) return reader_.moveTo(known->second);
  const bool was = std::exchange(run_.executing, false);
  ++run_.depth;
  skipWhole();
  --run_.depth;
  run_.executing = was;
  if (run_.flow != Flow::Normal) return;
  if (reader_.position() == start && start < run_.limit) reader_.next();
  ends_[start] = reader_.position();
  declareWithin(start, reader_.position());
}

void Interpreter::skipWhole() {
  const Token& first = reader_.peek();
  if (run_.depth > mostNesting) {
    run_.leaveRest(Kind::Skipped, "nested too deeply: the rest of the batch is left out");
  } else if (reader_.position() >= run_.limit || first.is("END") || first.is("ELSE")) {
    run_.fail(Kind::Failed, "Incorrect syntax near '" + std::string(first.raw) + "': a statement is expected.");
  } else if (first.isSymbol(";")) {
    body();  // tells it
  } else if (first.is("IF") || first.is("WHILE")) {
    skipBranches();
  } else if (text_.structure.opensBlockAt(reader_.position())) {
    skipBlock();
  } else if (text_.structure.isModuleAt(reader_.position())) {
    run_.leaveRest(Kind::Failed,
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
    if (loop || run_.flow != Flow::Normal) return;
    const std::size_t behind = reader_.position();
    while (reader_.acceptSymbol(";")) {
    }
    if (reader_.position() >= run_.limit || !reader_.acceptWord("ELSE")) return reader_.moveTo(behind);
    if (!reader_.peek().is("IF")) return skipStatement();
  }
}

// A block ends at its END, whatever stands in it.
void Interpreter::skipBlock() {
  const std::size_t start = reader_.position();
  std::size_t close = text_.structure.endOf(start);
  if (close != Structure::none && text_.tokens[start + 1].is("TRY")) {
    const std::size_t opening = text_.structure.catchBehind(close);
    close = opening == Structure::none ? opening : text_.structure.endOf(opening) + 1;  // the word CATCH
  }
  if (close == Structure::none)
    return run_.leaveRest(Kind::Failed, "BEGIN without END: the rest of the batch is left out.");
  reader_.moveTo(close + 1);
}

void Interpreter::skipSimple() {
  const std::size_t start = reader_.position();
  const std::size_t outer = std::exchange(run_.start, start);
  StatementResult doing = std::exchange(run_.result, {});
  run_.wasRead = false;
  try {
    perform(start);
  } catch (const NotUnderstood&) {
    run_.wasRead = run_.wasRead && reader_.position() > start;
    if (!run_.wasRead) reader_.moveTo(endOfRefused(start, Kind::Skipped));
  } catch (const DataError&) {
    reader_.moveTo(endOfRefused(start, Kind::Skipped));
  }
  run_.wasRead = true;
  run_.result = std::move(doing);
  run_.start = outer;
}

void Interpreter::skipCondition() {
  const std::size_t start = reader_.position();
  try {
    checkNesting(start);
    reader_.next();
    run_.translator().condition();
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
    if (i < text_.tokens.size() && text_.tokens[i].is("CASE") && text_.structure.endOf(i) != Structure::none) {
      i = text_.structure.endOf(i);
      continue;
    }
    reader_.moveTo(i);
    const Token& token = reader_.peek();
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) --brackets;
    const bool ends = startsStatement(token) || token.isSymbol(";");
    if (token.kind == TokenKind::End || i >= run_.limit || (brackets <= 0 && ends)) return;
  }
}

// Variables are declared by being written, also where nothing is run.
void Interpreter::declareWithin(std::size_t begin, std::size_t end) {
  const std::size_t behind = reader_.position();
  const bool was = std::exchange(run_.executing, false);
  for (std::size_t i = begin; i < end; ++i) {
    if (!text_.tokens[i].is("DECLARE") || text_.tokens[i + 1].kind != TokenKind::Variable) continue;
    reader_.moveTo(i);
    try {
      declareStatement(run_);
    } catch (const NotUnderstood&) {  // whoever uses it will tell
    } catch (const DataError&) {
    }
  }
  run_.executing = was;
  reader_.moveTo(behind);
}

}  // namespace qrel::tsql
