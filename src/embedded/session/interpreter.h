// Runs the statements of a text: a batch, or a text that a batch runs by EXEC. What a statement does stands in
// statements/; here is in which order they run, and what becomes of each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/run/statementRun.h"
#include "embedded/session/account.h"

namespace qrel::tsql {

// Raised out of a loop that meets something which can't be run; the outermost loop takes back what it has done.
struct LoopRefused {
  std::string statement;  // its first words
  std::string reason;
};

// One object per text.
class Interpreter : private TextRunner {
 public:
  Interpreter(SessionState& session, BatchListener* listener, CommandResult& answer);

  void run(std::string_view batch);

 private:
  static constexpr int mostTurns = 1000000;
  // Statements within statements, and brackets within brackets, beyond which nothing is read: both are read by
  // recursion.
  static constexpr int mostNesting = 200;

  using Kind = StatementOutcome::Kind;

  // interpreter.cpp: the run of statements, what becomes of them
  TextEnd runText(std::string_view text, std::size_t line, std::vector<StatementOutcome>& inside) override;
  bool refuseOpenPart();
  void runPiece(std::string_view text);
  void statement();
  void dispatch();
  void simpleStatement();
  void perform(std::size_t start);
  void checkNesting(std::size_t start) const;
  bool atExecOn() const;
  void suspended(std::size_t start);
  void refused(std::size_t start, Kind kind, const std::string& reason, std::int32_t number);
  void refused(std::size_t start, const DataError& error);
  std::size_t endOfRefused(std::size_t start, Kind kind);
  void record(std::size_t start);
  void takeEffect(std::size_t start);
  StatementOutcome outcomeOf(std::size_t start);
  void keepText(StatementOutcome& outcome, std::size_t start) const;
  void tell(StatementOutcome outcome);
  void tellAll();
  void tellUnread();
  std::string firstWords(std::size_t start) const;
  void markUnknown(std::size_t begin, std::size_t end);

  // flow.cpp: blocks, branches, loops, jumps
  void block();
  void tryBlock(std::size_t close);
  void runUntil(std::size_t begin, std::size_t close);
  bool catchGoto(std::size_t block);
  void gotoStatement();
  void label();
  void ifStatement();
  void elseStatement();
  void body();
  void whileStatement();
  void turns(std::size_t start, std::size_t end);
  void undoLoop(std::size_t start, std::size_t end, const SessionMemory& before,
                const std::map<std::string, Value>& variables, const LoopRefused& refusal);
  std::optional<bool> condition(std::size_t start);
  bool evaluateCondition(const std::string& sql);
  bool neverEnds(std::size_t condition, std::size_t body, std::size_t end) const;
  std::vector<std::string> assignedWithin(std::size_t begin, std::size_t end) const;
  std::int64_t changesSoFar() const;

  // skipping.cpp: moving over what isn't run
  void skipStatement();
  void skipWhole();
  void skipSimple();
  void skipBranches();
  void skipBlock();
  void skipCondition();
  void skipToBody(std::size_t start);
  void declareWithin(std::size_t begin, std::size_t end);

  StatementRun run_;
  BatchText& text_ = run_.text;
  TokenReader& reader_ = run_.reader;
  SessionDepths& depths_ = run_.session.depths;
  Account account_;
  std::vector<StatementOutcome>* tellTo_ = nullptr;  // where an inner text's outcomes go instead of to the listener
  std::map<std::size_t, std::size_t> ends_;          // of statements that were skipped, by their begin
  std::vector<std::size_t> blocks_;                  // the BEGINs around the current statement
  std::map<std::size_t, std::int64_t> jumps_;        // the state of things at a GOTO's last jump, by its token
  std::string target_;                               // of GOTO, in lower case
  int turnsByGoto_ = 0;
  bool suspensionTold_ = false;
  bool deep_ = false;  // something in the piece is nested deeper than can be read
};

}  // namespace qrel::tsql
