// Other forms of what a run over whole databases has found than its report.
#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "compare/all/modCompareAll.h"

namespace qrel {

struct RunForms {
  bool brief = false;   // differences and counts in the place of the report
  bool noTime = false;  // the report without its line about the time
  std::string junit;    // file; empty: none
};

// The verdict on each object of the last run, once, in the order in which they were met.
std::vector<ObjectVerdict> verdictsOf(const modCompareAllState& state);

// A line per object that isn't identical: verdict, type, name, with tabs between. Then a line of counts.
void printBrief(std::ostream& out, const modCompareAllState& state);

// A JUnit document: a suite per type, a case per object; what differs or is on one side only is a failure, what has no
// verdict an error. `complete` false: one more case says so, for a run must not look better than it was.
std::string junitOf(const modCompareAllState& state, const std::array<std::string, 2>& sides, bool complete);

}  // namespace qrel
