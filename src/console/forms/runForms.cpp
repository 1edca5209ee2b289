#include "console/forms/runForms.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <utility>

#include "db/mdlObjects.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

using Key = std::pair<long, std::string>;

const char* wordsOf(VerdictState state) {
  switch (state) {
    case VerdictState::Identical:
      return "identical";
    case VerdictState::Different:
      return "different";
    case VerdictState::SourceOnly:
      return "only in Source";
    case VerdictState::TargetOnly:
      return "only in Target";
    case VerdictState::NotCompared:
      break;
  }
  return "not compared";
}

std::string typeWord(long type) { return lowerCase(GetObjectTypeName(type, true)); }

// Without what XML can't hold: control characters and broken bytes are shown, as on a terminal.
std::string xmlText(const std::string& text) {
  std::string shown = visibleText(text);
  for (const auto& [from, to] : {std::pair("&", "&amp;"),
                                 {"<", "&lt;"},
                                 {">", "&gt;"},
                                 {"\"", "&quot;"},
                                 {"\xEF\xBF\xBE", "\\uFFFE"},
                                 {"\xEF\xBF\xBF", "\\uFFFF"}})
    shown = replaceAll(shown, from, to);
  return shown;
}

// What stands against the verdict of an object, by the object.
std::map<Key, std::string> doubtsOf(const modCompareAllState& state) {
  std::map<Key, std::string> doubts;
  for (const UnreadableObject& each : state.arrUnreadable)
    doubts.emplace(Key(each.lngType, each.strName), std::string("its text in ") +
                                                        (each.side == 0 ? "Source" : "Target") +
                                                        " can't be had: it is encrypted or unreadable");
  for (const auto* list : {&state.arrNotCompared, &state.arrWithoutDetails})
    for (const NotComparedObject& each : *list)
      doubts.emplace(Key(each.lngType, each.strName), each.strWhy.empty() ? "a read for it failed" : each.strWhy);
  return doubts;
}

struct Suite {
  std::string cases;
  long tests = 0, failures = 0, errors = 0;

  std::string counts() const {
    return " tests=\"" + std::to_string(tests) + "\" failures=\"" + std::to_string(failures) + "\" errors=\"" +
           std::to_string(errors) + "\"";
  }
};

void addCase(Suite& suite, const std::string& group, const std::string& name, const char* fault,
             const std::string& message) {
  ++suite.tests;
  suite.cases += "    <testcase classname=\"" + xmlText(group) + "\" name=\"" + xmlText(name) + "\"";
  suite.cases += *fault
                     ? std::string(">\n      <") + fault + " message=\"" + xmlText(message) + "\"/>\n    </testcase>\n"
                     : "/>\n";
}

}  // namespace

std::vector<ObjectVerdict> verdictsOf(const modCompareAllState& state) {
  std::vector<ObjectVerdict> verdicts;
  std::set<Key> met;
  for (const ObjectVerdict& each : state.arrVerdicts)
    if (met.emplace(each.lngType, each.strName).second) verdicts.push_back(each);
  return verdicts;
}

void printBrief(std::ostream& out, const modCompareAllState& state) {
  std::map<VerdictState, long> counts;
  for (const ObjectVerdict& each : verdictsOf(state)) {
    ++counts[each.state];
    if (each.state != VerdictState::Identical)
      out << wordsOf(each.state) << '\t' << typeWord(each.lngType) << '\t' << visibleText(each.strName) << '\n';
  }
  const char* separator = "";
  for (const VerdictState each : {VerdictState::Different, VerdictState::SourceOnly, VerdictState::TargetOnly,
                                  VerdictState::NotCompared, VerdictState::Identical})
    out << std::exchange(separator, ", ") << counts[each] << ' ' << wordsOf(each);
  out << '\n';
}

std::string junitOf(const modCompareAllState& state, const std::array<std::string, 2>& sides, bool complete) {
  std::vector<std::pair<std::string, Suite>> suites;
  const auto suiteOf = [&](const std::string& name) -> Suite& {
    const auto found = std::find_if(suites.begin(), suites.end(), [&](const auto& each) { return each.first == name; });
    return found != suites.end() ? found->second : suites.emplace_back(name, Suite()).second;
  };
  const std::map<Key, std::string> doubts = doubtsOf(state);
  for (const ObjectVerdict& each : verdictsOf(state)) {
    Suite& suite = suiteOf(GetObjectTypeName(each.lngType, false));
    const auto doubt = doubts.find({each.lngType, each.strName});
    const bool error = doubt != doubts.end() || each.state == VerdictState::NotCompared;
    const bool failure = !error && each.state != VerdictState::Identical;
    suite.errors += error ? 1 : 0;
    suite.failures += failure ? 1 : 0;
    addCase(suite, typeWord(each.lngType), each.strName,
            error     ? "error"
            : failure ? "failure"
                      : "",
            doubt != doubts.end() ? doubt->second : wordsOf(each.state));
  }
  if (!complete) {
    Suite& suite = suiteOf("run");
    ++suite.errors;
    addCase(suite, "run", "complete", "error", "something could not be read or was left out; standard error lists it");
  }
  Suite all;
  for (const auto& [name, suite] : suites) {
    all.tests += suite.tests;
    all.failures += suite.failures;
    all.errors += suite.errors;
    all.cases +=
        "  <testsuite name=\"" + xmlText(name) + "\"" + suite.counts() + ">\n" + suite.cases + "  </testsuite>\n";
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"" + xmlText(sides[0] + " and " + sides[1]) +
         "\"" + all.counts() + ">\n" + all.cases + "</testsuites>\n";
}

}  // namespace qrel
