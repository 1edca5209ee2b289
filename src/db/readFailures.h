// The reads that failed: what was shown or concluded since may rest on less than there is.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/Program.h"

namespace qrel {

struct ReadFailure {
  std::string strServer;
  std::string strDb;      // empty: the login's default database
  std::string strObject;  // what was being read, such as "table Orders"; empty when nobody said so
  std::string strDescription;
};

struct ReadFailuresState {
  std::vector<ReadFailure> arrFailures;  // in the order in which they came, since the program's start
  std::string strObject;                 // what is being read; ReadingScope sets it
  int asked = 0;                         // above 0: failures are answers (AskedScope)
};

// Notes a failed read, unless it was asked for. The query layer does so for every query that fails, shown or silent,
// and for rows that don't come although their query worked. A command that was stopped is no failure.
void NoteReadFailure(Program& program, const std::string& strServer, const std::string& strDb,
                     const std::string& strDescription);

// Says for a scope what is being read.
class ReadingScope {
 public:
  ReadingScope(Program& program, std::string strObject);
  ~ReadingScope() { state_.strObject = std::move(before_); }
  ReadingScope(const ReadingScope&) = delete;
  ReadingScope& operator=(const ReadingScope&) = delete;

 private:
  ReadFailuresState& state_;
  std::string before_;
};

// A scope in which a failed query is an answer that was asked for ("can it be opened?") and not noted. Whoever then
// goes on without what the query would have given notes that.
class AskedScope {
 public:
  explicit AskedScope(Program& program) : state_(program.state<ReadFailuresState>()) { ++state_.asked; }
  ~AskedScope() { --state_.asked; }
  AskedScope(const AskedScope&) = delete;
  AskedScope& operator=(const AskedScope&) = delete;

 private:
  ReadFailuresState& state_;
};

// Whether reads failed since it was made.
class ReadWatch {
 public:
  explicit ReadWatch(Program& program)
      : state_(program.state<ReadFailuresState>()), before_(state_.arrFailures.size()) {}
  bool failed() const { return state_.arrFailures.size() > before_; }

 private:
  const ReadFailuresState& state_;
  std::size_t before_;
};

}  // namespace qrel
