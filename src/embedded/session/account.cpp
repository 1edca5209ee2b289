#include "embedded/session/account.h"

#include <algorithm>

namespace qrel::tsql {

namespace {

using Kind = StatementOutcome::Kind;

bool isBad(const StatementOutcome& outcome) { return outcome.kind == Kind::Skipped || outcome.kind == Kind::Failed; }

bool sameTrouble(const StatementOutcome& a, const StatementOutcome& b) {
  return a.kind == b.kind && a.what == b.what && a.firstWords == b.firstWords;
}

// The messages of a further turn behind those that are kept.
void addMessages(StatementOutcome& kept, StatementOutcome& fresh) {
  kept.messageCount += fresh.messageCount;
  for (std::string& each : fresh.messages)
    if (kept.messages.size() < StatementOutcome::mostMessages) kept.messages.push_back(std::move(each));
}

// The statement in the same place of a text that was run again, or another one.
void merge(std::vector<StatementOutcome>& kept, std::vector<StatementOutcome> fresh) {
  for (std::size_t i = 0; i < fresh.size(); ++i) {
    const bool again = i < kept.size() && !isBad(kept[i]) && !isBad(fresh[i]);
    if (again) {
      if (fresh[i].kind == Kind::Made) kept[i].kind = Kind::Made, kept[i].what = fresh[i].what;
      kept[i].rows += fresh[i].rows;
      addMessages(kept[i], fresh[i]);
    } else if (std::none_of(kept.begin(), kept.end(), [&](const auto& each) { return sameTrouble(each, fresh[i]); })) {
      kept.push_back(std::move(fresh[i]));
    }
  }
}

}  // namespace

void Account::open(std::size_t tokens) {
  entries_.clear();
  claimed_.assign(tokens, false);
}

void Account::add(std::size_t begin, std::size_t end, StatementOutcome outcome, std::vector<StatementOutcome> inside) {
  claim(begin, end);
  const auto [found, fresh] = entries_.try_emplace(begin);
  Entry& entry = found->second;
  if (isBad(outcome)) ++entry.failures;
  if (fresh) {
    entry.outcome = std::move(outcome);
    entry.inside = std::move(inside);
    return;
  }
  merge(entry.inside, std::move(inside));
  const std::int64_t rows = entry.outcome.rows + outcome.rows;
  addMessages(entry.outcome, outcome);
  if (outcome.kind > entry.outcome.kind) {
    outcome.firstWords = entry.outcome.firstWords;
    outcome.messages = std::move(entry.outcome.messages);
    outcome.messageCount = entry.outcome.messageCount;
    entry.outcome = std::move(outcome);
  }
  entry.outcome.rows = rows;
}

void Account::claim(std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < std::min(end, claimed_.size()); ++i) claimed_[i] = true;
}

void Account::forget(std::size_t begin, std::size_t end) {
  entries_.erase(entries_.lower_bound(begin), entries_.lower_bound(end));
}

std::pair<std::size_t, std::size_t> Account::unclaimed() const {
  const auto first = std::find(claimed_.begin(), claimed_.end(), false);
  const auto last = std::find(first, claimed_.end(), true);
  return {static_cast<std::size_t>(first - claimed_.begin()), static_cast<std::size_t>(last - claimed_.begin())};
}

std::vector<StatementOutcome> Account::take() {
  std::vector<StatementOutcome> outcomes;
  for (auto& [begin, entry] : entries_) {
    if (entry.failures > 1) entry.outcome.text.clear();
    if (entry.failures > 1) entry.outcome.what += " (" + std::to_string(entry.failures) + " times)";
    outcomes.push_back(std::move(entry.outcome));
    for (StatementOutcome& each : entry.inside) outcomes.push_back(std::move(each));
  }
  entries_.clear();
  return outcomes;
}

}  // namespace qrel::tsql
