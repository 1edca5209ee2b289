// Statements that miss something which a later file may make: they are tried again until nothing more can be made.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "embedded/session/session.h"

namespace qrel {

// What became of a statement that was tried again. `outcomes` are its own and, of an IF, those of what it has run.
using WaitingEnd = std::function<void(std::size_t place, const std::vector<tsql::StatementOutcome>& outcomes)>;

class WaitingStatements {
 public:
  // Whether a later file may have what a statement misses.
  static bool mayComeLater(const tsql::StatementOutcome& outcome);

  // `place` is for whoever is told; false: too much waits already, and it isn't kept.
  bool add(std::size_t place, const tsql::StatementOutcome& outcome, const tsql::SessionSettings& settings);

  // Tries them: first what makes something, each again when what it names has been made, tables whose foreign keys lead
  // to one another as well; then what changes rows, in order. Those that have been made are told to `made`, those that
  // still aren't to `refused` with their last outcome. None waits afterwards.
  void tryAll(tsql::Session& session, sqlite::Database& database, const std::function<bool()>& stop,
              const WaitingEnd& made, const WaitingEnd& refused);

 private:
  struct Statement {
    std::size_t place = 0;
    std::string text;
    std::vector<tsql::StatementVariable> variables;
    tsql::SessionSettings settings;
    std::string makes;  // the name that others may wait for; "*": any
    bool rows = false;
    bool changes = false;  // ALTER
    bool prepared = false;
    bool table = false;  // CREATE TABLE
    bool done = false;
    bool queued = false;
    std::vector<tsql::StatementOutcome> last;
  };
  struct Run;

  std::vector<Statement> statements_;
  std::size_t bytes_ = 0;
};

}  // namespace qrel
