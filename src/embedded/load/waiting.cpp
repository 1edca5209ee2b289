#include "embedded/load/waiting.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string_view>
#include <utility>

#include "embedded/language/lexer.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

using tsql::StatementOutcome;
using tsql::Token;

namespace {

// Texts of statements that wait, in bytes; those beyond stay refused.
constexpr std::size_t mostWaitingBytes = std::size_t{256} << 20;
// How many tokens of a statement are looked through for names that it may wait for.
constexpr std::size_t mostTokensForNames = 20000;
constexpr int mostCircleRuns = 10;
constexpr const char* anything = "*";

// How the server begins to say that something isn't there.
constexpr std::array<std::string_view, 9> missing{"Invalid object name '",
                                                  "Cannot find the ",
                                                  "The specified schema name \"",
                                                  "There are no primary or candidate keys",
                                                  "unknown type ",
                                                  "Invalid column name '",
                                                  "Column name '",
                                                  "Object is invalid. Extended properties",
                                                  "Cannot find index '"};
constexpr std::array<std::string_view, 5> missingWithin{"references invalid table", "references invalid column",
                                                        "does not exist or is invalid for this operation",
                                                        "Cannot find data type", "because it does not exist"};
constexpr std::array<std::string_view, 7> makers{"create", "alter", "grant", "deny", "revoke", "exec", "execute"};
constexpr std::array<std::string_view, 5> changers{"insert", "update", "delete", "if", "set"};

std::string firstWord(std::string_view words) { return lowerCase(words.substr(0, words.find_first_of(" \t(["))); }

template <std::size_t n>
bool isOneOf(const std::array<std::string_view, n>& list, std::string_view word) {
  return std::find(list.begin(), list.end(), word) != list.end();
}

std::string nameOf(const Token& token) { return collationKey(token.name()); }

// The last part of the name at a token.
std::string lastPart(const std::vector<Token>& tokens, std::size_t at) {
  while (at + 2 < tokens.size() && tokens[at + 1].isSymbol(".")) at += 2;
  return nameOf(tokens[at]);
}

// What others may wait for of a statement: the name of what it makes or changes; "*" where that can't be told, empty
// where it makes nothing.
std::string madeBy(const std::vector<Token>& tokens) {
  static constexpr std::array<std::string_view, 13> kinds{"TABLE",   "VIEW", "PROC",   "PROCEDURE", "FUNCTION",
                                                          "TRIGGER", "TYPE", "SCHEMA", "SEQUENCE",  "SYNONYM",
                                                          "ROLE",    "USER", "DEFAULT"};
  if (tokens[0].is("EXEC") || tokens[0].is("EXECUTE")) {
    const std::string procedure = lowerCase(lastPart(tokens, 1));
    return procedure == "sp_addtype" || procedure == "sp_rename" ? anything : "";
  }
  if (!tokens[0].is("CREATE") && !tokens[0].is("ALTER")) return {};
  bool index = false;
  for (std::size_t i = 1; i + 1 < tokens.size(); ++i) {
    index = index || tokens[i].is("INDEX");
    if (index ? tokens[i].is("ON")
              : std::any_of(kinds.begin(), kinds.end(), [&](auto kind) { return tokens[i].is(kind); }))
      return tokens[i + 1].is("AUTHORIZATION") ? anything : lastPart(tokens, i + 1);
  }
  return anything;
}

}  // namespace

bool WaitingStatements::mayComeLater(const StatementOutcome& outcome) {
  if (outcome.text.empty()) return false;
  const std::string word = firstWord(outcome.firstWords);
  if (!isOneOf(makers, word) && !isOneOf(changers, word)) return false;
  if (outcome.kind == StatementOutcome::Kind::Skipped && word != "create" && word != "alter") return false;
  if (word == "set" && lowerCase(outcome.firstWords).find("identity_insert") == std::string::npos) return false;
  const std::string_view reason = outcome.what;
  return std::any_of(missing.begin(), missing.end(), [&](auto each) { return reason.starts_with(each); }) ||
         std::any_of(missingWithin.begin(), missingWithin.end(),
                     [&](auto each) { return reason.find(each) != std::string_view::npos; });
}

bool WaitingStatements::add(std::size_t place, const StatementOutcome& outcome, const tsql::SessionSettings& settings) {
  if (bytes_ + outcome.text.size() > mostWaitingBytes) return false;
  bytes_ += outcome.text.size() + sizeof(Statement);
  Statement& fresh = statements_.emplace_back();
  fresh.place = place;
  fresh.text = outcome.text;
  fresh.variables = outcome.variables;
  fresh.settings = settings;
  const std::string word = firstWord(outcome.firstWords);
  fresh.rows = !isOneOf(makers, word);
  fresh.changes = word == "alter";
  return true;
}

namespace {

// Collects what becomes of a statement that is tried.
class Trial : public tsql::BatchListener {
 public:
  explicit Trial(const std::function<bool()>& stop) : stop_(stop) {}
  void statementDone(const StatementOutcome& outcome) override { outcomes.push_back(outcome); }
  bool useDatabase(const std::string&) override { return true; }
  bool stopRequested() override { return stop_(); }
  // Of an IF that has found what it asks for, the outcome is good, whatever has become of what it runs.
  bool good() const {
    if (outcomes.empty()) return false;
    const auto kind = outcomes.front().kind;
    return kind != StatementOutcome::Kind::Failed && kind != StatementOutcome::Kind::Skipped;
  }
  std::vector<StatementOutcome> outcomes;

 private:
  const std::function<bool()>& stop_;
};

}  // namespace

struct WaitingStatements::Run {
  Run(std::vector<Statement>& all, tsql::Session& in, sqlite::Database& of, const std::function<bool()>& stopAsked,
      const WaitingEnd& told)
      : statements(all), session(in), database(of), stop(stopAsked), made(told) {}

  std::vector<Statement>& statements;
  tsql::Session& session;
  sqlite::Database& database;
  const std::function<bool()>& stop;
  const WaitingEnd& made;
  std::map<std::string, std::vector<std::size_t>> mentions;  // who names what
  std::deque<std::size_t> queue;

  // Without `changing` what makes something new alone.
  void makeAll(bool changing) {
    changing_ = changing;
    for (std::size_t i = 0; i < statements.size(); ++i) {
      if (!statements[i].rows && !statements[i].prepared) prepare(i);
      enqueue(i);
    }
    do {
      while (!queue.empty() && !stop()) {
        const std::size_t next = queue.front();
        queue.pop_front();
        statements[next].queued = false;
        if (!statements[next].done && attempt(next)) wake(next);
      }
    } while (!stop() && makeCircles());
  }

  // Rows in their order, each once: none of them makes what another one misses but rows. With `untilOneFails` those
  // behind it wait on, too.
  void changeRows(bool untilOneFails) {
    for (std::size_t i = 0; i < statements.size() && !stop(); ++i)
      if (statements[i].rows && !statements[i].done && !attempt(i) && untilOneFails) return;
  }

 private:
  void prepare(std::size_t at) {
    Statement& each = statements[at];
    each.prepared = true;
    const auto tokens = tsql::lex(each.text);
    each.makes = madeBy(tokens);
    each.table = tokens[0].is("CREATE") && tokens.size() > 2 && tokens[1].is("TABLE");
    std::set<std::string> names;
    for (std::size_t i = 0; i < std::min(tokens.size(), mostTokensForNames); ++i)
      if (tokens[i].isIdentifier() || tokens[i].kind == tsql::TokenKind::String) names.insert(nameOf(tokens[i]));
    for (const std::string& name : names) mentions[name].push_back(at);
  }

  void enqueue(std::size_t at) {
    Statement& each = statements[at];
    if (each.done || each.rows || (each.changes && !changing_) || std::exchange(each.queued, true)) return;
    queue.push_back(at);
  }

  void wake(std::size_t at) {
    const std::string& name = statements[at].makes;
    if (name.empty()) return;
    if (name == anything) {
      for (std::size_t i = 0; i < statements.size(); ++i) enqueue(i);
    } else if (const auto found = mentions.find(name); found != mentions.end()) {
      for (const std::size_t each : found->second) enqueue(each);
    }
  }

  bool attempt(std::size_t at) {
    Statement& each = statements[at];
    Trial trial(stop);
    session.runAgain(each.text, each.variables, each.settings, &trial);
    if (stop()) return false;
    each.done = trial.good();
    each.last = std::move(trial.outcomes);
    if (each.done) made(each.place, each.last);
    return each.done;
  }

  bool changing_ = false;

  // Tables
  // --------------------------------------------------------------------------------------------------------------

  struct Circle {
    std::size_t at = 0;
    std::vector<tsql::LaterKey> keys;
    std::vector<StatementOutcome> outcomes;
  };

  // Makes tables whose foreign keys lead to one another: first the tables, then these keys. All that are made have all
  // of theirs. True when there were any.
  bool makeCircles() {
    std::vector<std::size_t> tables;
    for (std::size_t i = 0; i < statements.size(); ++i)
      if (statements[i].table && !statements[i].done) tables.push_back(i);
    for (int run = 0; run < mostCircleRuns && !tables.empty() && !stop(); ++run) {
      database.execute("savepoint q_circle");
      std::vector<Circle> circles = makeTables(tables);
      const std::size_t had = tables.size();
      tables = closed(circles);
      const bool whole = tables.size() == had && addKeys(circles, tables);
      if (!whole || stop()) {
        database.execute("rollback to q_circle; release q_circle");
        session.forgetSchema();
        continue;
      }
      database.execute("release q_circle");
      for (const Circle& each : circles) {
        statements[each.at].done = true;
        made(statements[each.at].place, each.outcomes);
      }
      for (const Circle& each : circles) wake(each.at);
      return true;
    }
    return false;
  }

  std::vector<Circle> makeTables(const std::vector<std::size_t>& tables) {
    std::vector<Circle> circles;
    for (const std::size_t at : tables) {
      if (stop()) break;
      Circle circle{at, {}, {}};
      Trial trial(stop);
      session.runAgain(statements[at].text, statements[at].variables, statements[at].settings, &trial, &circle.keys);
      if (!trial.good()) continue;
      circle.outcomes = std::move(trial.outcomes);
      circles.push_back(std::move(circle));
    }
    return circles;
  }

  // Those of which every key leads to one of them.
  std::vector<std::size_t> closed(const std::vector<Circle>& circles) const {
    std::set<std::size_t> alive;
    for (std::size_t i = 0; i < circles.size(); ++i) alive.insert(i);
    for (bool changes = true; changes;) {
      changes = false;
      std::set<std::string> names;
      for (const std::size_t each : alive) names.insert(statements[circles[each].at].makes);
      changes = std::erase_if(alive, [&](std::size_t each) {
                  const auto& keys = circles[each].keys;
                  return std::any_of(keys.begin(), keys.end(), [&](const tsql::LaterKey& key) {
                    return names.count(collationKey(key.key.referenced.name)) == 0;
                  });
                }) > 0;
    }
    std::vector<std::size_t> tables;
    tables.reserve(alive.size());
    for (const std::size_t each : alive) tables.push_back(circles[each].at);
    return tables;
  }

  // False when a key is refused; its table is no longer among `tables` then.
  bool addKeys(const std::vector<Circle>& circles, std::vector<std::size_t>& tables) {
    bool all = true;
    for (const Circle& each : circles) {
      try {
        session.addKeys(each.keys);
      } catch (const DataError& error) {
        if (error.number == errorNumber::cannotConnect) throw;
        std::erase(tables, each.at);
        all = false;
      }
    }
    return all;
  }
};

void WaitingStatements::tryAll(tsql::Session& session, sqlite::Database& database, const std::function<bool()>& stop,
                               const WaitingEnd& made, const WaitingEnd& refused) {
  Run run(statements_, session, database, stop, made);
  // Rows go into tables as they were made, as far as that is possible: a row without a list of columns would not fit
  // any longer when a later file has added one.
  run.makeAll(false);
  run.changeRows(true);
  run.makeAll(true);
  run.changeRows(false);
  if (!stop())
    for (const Statement& each : statements_)
      if (!each.done && !each.last.empty()) refused(each.place, each.last);
  statements_.clear();
  bytes_ = 0;
}

}  // namespace qrel
