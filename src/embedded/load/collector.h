// What becomes of the statements of a load, one file after the other, as its report has it.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "embedded/load/loader.h"
#include "embedded/load/scriptText.h"
#include "embedded/load/waiting.h"
#include "embedded/session/session.h"

namespace qrel {

class Collector : public tsql::BatchListener {
 public:
  // `tryAgain`: what a statement misses may come later.
  Collector(LoadReport& report, const LoadOptions& options, tsql::Session& session, bool tryAgain)
      : report_(report), options_(options), session_(session), tryAgain_(tryAgain) {}

  void statementDone(const tsql::StatementOutcome& outcome) override;
  bool useDatabase(const std::string&) override { return true; }
  bool stopRequested() override;

  // The text must stay until the next one or the end.
  void startScript(const ScriptText& text) { text_ = &text; }
  // `line` of the text, 1-based.
  void startBatch(std::size_t line);
  void skipped(SkippedStatement statement);
  // Tries what waits for something else; none waits afterwards.
  void tryAgain(sqlite::Database& database);

  bool raised = false;  // the batch has raised an error of its own

 private:
  struct Waiting {
    std::size_t entry = 0;  // its place in the list; behind the last one when it isn't listed
    bool failed = false;    // in which list
    std::int64_t times = 1;
    std::string file;
    std::size_t line = 1;
  };

  std::size_t note(std::vector<SkippedStatement>& list, const std::string& key, SkippedStatement statement);
  void tell(const tsql::StatementOutcome& outcome, const std::string& file, std::size_t line);
  void tellMessages(const tsql::StatementOutcome& outcome, const std::string& file, std::size_t line);
  void count(tsql::StatementOutcome::Kind kind);
  void made(const Waiting& waiting, const std::vector<tsql::StatementOutcome>& outcomes);
  void refused(const Waiting& waiting, const std::vector<tsql::StatementOutcome>& outcomes);
  void takeBack(const Waiting& waiting);

  LoadReport& report_;
  const LoadOptions& options_;
  tsql::Session& session_;
  bool tryAgain_;
  const ScriptText* text_ = nullptr;
  std::size_t firstLine_ = 1;
  std::int64_t order_ = 0;
  WaitingStatements statements_;
  std::vector<Waiting> waiting_;
  std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace qrel
