// What whoever has a batch run is told of its statements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace qrel::tsql {

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
  std::string text;  // of a failed statement, the whole of it
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
