// What whoever has a batch run is told of its statements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "embedded/types/types.h"
#include "platform/data/value.h"

namespace qrel::tsql {

// A variable as a statement has met it.
struct StatementVariable {
  std::string name;  // in lower case, with @
  TypeRef type;
  Value value;
};

// What became of one statement.
struct StatementOutcome {
  // From good to bad. WithoutEffect: what it would do on a server isn't kept here (options, messages, logins).
  enum class Kind : std::uint8_t { WithoutEffect, Ran, Made, Skipped, Failed };
  Kind kind = Kind::Ran;
  std::string what;        // "table", "procedure", ... for Made; the reason for Skipped and Failed
  std::size_t line = 1;    // 1-based in the batch
  std::string firstWords;  // the statement's first words, one line, at most 60 characters
  std::int64_t rows = 0;   // inserted (positive)
  std::int32_t errorNumber = 0;
  // Of a statement that failed or was skipped and could be run again by itself: the whole of it, and the variables in
  // it. Empty where it has failed more than once, in a loop.
  std::string text;
  std::vector<StatementVariable> variables;
  std::vector<std::string> messages;  // what it has printed; of many the first mostMessages
  std::int64_t messageCount = 0;
  static constexpr std::size_t mostMessages = 100;
};

// How a batch is run. A provider's command stops at the first error and raises it; the loader goes on with the next
// statement and is told of each: every statement that a text holds has one outcome, in the order of the text, however
// often a loop runs it. What a branch holds that isn't taken belongs to the IF or WHILE around it. `stopRequested` is
// asked between statements and every few milliseconds while one runs.
class BatchListener {
 public:
  virtual ~BatchListener() = default;
  virtual void statementDone(const StatementOutcome& outcome) = 0;
  // USE name / CREATE DATABASE name / DROP DATABASE name: true when the listener has taken care of it.
  virtual bool useDatabase(const std::string& name) = 0;
  virtual bool stopRequested() { return false; }
};

}  // namespace qrel::tsql
