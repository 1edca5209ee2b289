// What became of the statements of one text: one outcome for each, however often a loop has run it, and every token in
// one of them.
#pragma once

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "embedded/run/batchListener.h"

namespace qrel::tsql {

class Account {
 public:
  // A new text of so many tokens; what was kept of the one before is forgotten.
  void open(std::size_t tokens);

  // Whether the statement that begins at a token has an outcome already.
  bool knows(std::size_t begin) const { return entries_.count(begin) != 0; }
  // The statement of the tokens [begin, end) has been run; `inside` are the outcomes of the text that it ran. Of a
  // statement that was run before, the worse outcome stays and the rows add up.
  void add(std::size_t begin, std::size_t end, StatementOutcome outcome, std::vector<StatementOutcome> inside);
  // These tokens belong to a statement that has its outcome elsewhere, or to none.
  void claim(std::size_t begin, std::size_t end);
  // Takes back the outcomes of statements that begin in [begin, end).
  void forget(std::size_t begin, std::size_t end);

  // The first run of tokens that belong to no statement, [first, last); empty when each has its own.
  std::pair<std::size_t, std::size_t> unclaimed() const;
  // All outcomes in the order of the text.
  std::vector<StatementOutcome> take();

 private:
  struct Entry {
    StatementOutcome outcome;
    std::int64_t failures = 0;
    std::vector<StatementOutcome> inside;
  };

  std::map<std::size_t, Entry> entries_;
  std::vector<bool> claimed_;
};

}  // namespace qrel::tsql
