#include "embedded/load/collector.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/text.h"

namespace qrel {

using tsql::StatementOutcome;
using Kind = StatementOutcome::Kind;

namespace {

constexpr std::int64_t statementsBetweenProgress = 64;

// Statements that make nothing which has a name: of those that aren't run for one reason, one line says enough.
constexpr std::array<std::string_view, 21> nameless{
    "insert", "update", "delete", "merge", "select", "with",  "exec",      "execute", "declare", "open",      "fetch",
    "close",  "if",     "while",  "begin", "set",    "print", "raiserror", "throw",   "bulk",    "deallocate"};

std::string lowerFirstWord(std::string_view words) { return lowerCase(words.substr(0, words.find_first_of(" \t([;"))); }

bool isRaised(const StatementOutcome& outcome) {
  const std::string word = lowerFirstWord(outcome.firstWords);
  return outcome.kind == Kind::Failed && (word == "raiserror" || word == "throw");
}

std::string placeKey(const char* kind, const SkippedStatement& statement) {
  std::string key = kind;
  for (const std::string& part : {statement.file, std::to_string(statement.line), statement.firstWords})
    key.append(part) += '\0';
  return key + statement.reason;
}

// What skipped statements have in common that are told in one line: what begins them and why; rows of different tables
// are told apart.
std::string skippedKey(const SkippedStatement& statement) {
  const std::string word = lowerFirstWord(statement.firstWords);
  if (std::find(nameless.begin(), nameless.end(), word) == nameless.end()) return placeKey("s", statement);
  std::string key = "k" + word + '\0';
  if (word == "insert" || word == "update" || word == "delete") {
    std::string_view target = statement.firstWords;
    for (int blanks = 0; blanks < 2 && !target.empty(); ++blanks)
      target.remove_prefix(std::min(target.find(' ') + 1, target.size()));
    const std::string_view head =
        std::string_view(statement.firstWords).substr(0, statement.firstWords.size() - target.size());
    const bool into =
        lowerCase(head).find(" into ") != std::string::npos || lowerCase(head).find(" from ") != std::string::npos;
    key += lowerCase(head);
    if (into) key += lowerCase(target.substr(0, target.find_first_of(" (")));
    key += '\0';
  }
  // A loop's reason names the statement that it is refused for.
  const std::size_t cause = statement.reason.starts_with("the loop isn't run") ? statement.reason.find("\": ") : 0;
  return key + statement.reason.substr(cause == std::string::npos ? 0 : cause);
}

}  // namespace

void Collector::statementDone(const StatementOutcome& outcome) {
  const bool shown = options_.progress && report_.statements() % statementsBetweenProgress == 0;
  const bool good = outcome.kind != Kind::Skipped && outcome.kind != Kind::Failed;
  if (good && outcome.messageCount == 0 && !shown) return count(outcome.kind);  // most are, and a place takes time
  const ScriptText::Place place = text_->placeOf(firstLine_ + outcome.line - 1);
  const std::string file = place.file.string();
  if (shown) options_.progress(file, place.line);
  raised = raised || isRaised(outcome);
  tell(outcome, file, place.line);
}

void Collector::tell(const StatementOutcome& outcome, const std::string& file, std::size_t line) {
  if (outcome.messageCount > 0) tellMessages(outcome, file, line);
  if (outcome.kind != Kind::Skipped && outcome.kind != Kind::Failed) return count(outcome.kind);
  const bool failed = outcome.kind == Kind::Failed;
  SkippedStatement statement{file, line, outcome.firstWords, outcome.what};
  const bool waits = tryAgain_ && WaitingStatements::mayComeLater(outcome);
  ++(failed ? report_.statementsFailed : report_.statementsSkipped);
  // What waits has its own line, so that it can be taken back.
  const std::string key = failed || waits ? placeKey(failed ? "f" : "s", statement) : skippedKey(statement);
  const std::size_t entry = note(failed ? report_.failed : report_.skipped, key, std::move(statement));
  if (!waits) return;
  if (statements_.add(waiting_.size(), outcome, session_.settings()))
    waiting_.push_back({entry, failed, 1, file, line});
}

void Collector::tellMessages(const StatementOutcome& outcome, const std::string& file, std::size_t line) {
  report_.messageCount += outcome.messageCount;
  for (const std::string& text : outcome.messages) {
    if (!report_.messages.empty()) {
      SkippedStatement& last = report_.messages.back();
      if (last.file == file && last.line == line && last.firstWords == text) {
        ++last.times;
        continue;
      }
    }
    if (report_.messages.size() >= LoadReport::mostMessages) return;
    report_.messages.push_back({file, line, text, "", 1, ++order_});
  }
}

bool Collector::stopRequested() {
  if (!report_.stopped && options_.stop && options_.stop()) report_.stopped = true;
  return report_.stopped;
}

void Collector::count(Kind kind) {
  ++(kind == Kind::Made  ? report_.statementsMade
     : kind == Kind::Ran ? report_.statementsRan
                         : report_.statementsWithoutEffect);
}

void Collector::startBatch(std::size_t line) {
  firstLine_ = line;
  raised = false;
  if (!options_.progress) return;
  const ScriptText::Place place = text_->placeOf(line);
  options_.progress(place.file.string(), place.line);
}

void Collector::skipped(SkippedStatement statement) {
  report_.statementsSkipped += statement.times;
  const std::string key = placeKey("s", statement);
  note(report_.skipped, key, std::move(statement));
}

// Counts the statement with its likes, or lists it; its place in the list.
std::size_t Collector::note(std::vector<SkippedStatement>& list, const std::string& key, SkippedStatement statement) {
  if (const auto found = places_.find(key); found != places_.end()) {
    list[found->second].times += statement.times;
    return found->second;
  }
  const std::size_t place = list.size();
  if (place >= LoadReport::mostListed) return place;
  statement.order = ++order_;
  list.push_back(std::move(statement));
  places_.emplace(key, place);
  return place;
}

// Waiting -------------------------------------------------------------------------------------------------------------

void Collector::takeBack(const Waiting& waiting) {
  --(waiting.failed ? report_.statementsFailed : report_.statementsSkipped);
  auto& list = waiting.failed ? report_.failed : report_.skipped;
  if (waiting.entry < list.size()) --list[waiting.entry].times;
}

void Collector::made(const Waiting& waiting, const std::vector<StatementOutcome>& outcomes) {
  takeBack(waiting);
  for (const StatementOutcome& each : outcomes) tell(each, waiting.file, waiting.line + each.line - 1);
}

// The last reason is the true one: what was missing at first may be there by now.
void Collector::refused(const Waiting& waiting, const std::vector<StatementOutcome>& outcomes) {
  auto& list = waiting.failed ? report_.failed : report_.skipped;
  if (waiting.entry >= list.size()) return;
  SkippedStatement& entry = list[waiting.entry];
  const StatementOutcome& last = outcomes.front();
  if ((last.kind == Kind::Failed) == waiting.failed) {
    entry.reason = last.what;
    return;
  }
  SkippedStatement moved = entry;
  takeBack(waiting);
  moved.times = 1;
  moved.reason = last.what;
  ++(last.kind == Kind::Failed ? report_.statementsFailed : report_.statementsSkipped);
  auto& other = last.kind == Kind::Failed ? report_.failed : report_.skipped;
  if (other.size() < LoadReport::mostListed) other.push_back(std::move(moved));
}

void Collector::tryAgain(sqlite::Database& database) {
  if (waiting_.empty()) return;
  const std::vector<Waiting> waiting = std::exchange(waiting_, {});
  const bool again = std::exchange(tryAgain_, false);  // what an IF runs now has had its time
  statements_.tryAll(
      session_, database, [this] { return stopRequested(); },
      [&](std::size_t place, const auto& outcomes) { made(waiting[place], outcomes); },
      [&](std::size_t place, const auto& outcomes) { refused(waiting[place], outcomes); });
  tryAgain_ = again;
  for (auto* list : {&report_.skipped, &report_.failed})
    std::erase_if(*list, [](const SkippedStatement& each) { return each.times == 0; });
  places_.clear();  // the places have moved
}

}  // namespace qrel
