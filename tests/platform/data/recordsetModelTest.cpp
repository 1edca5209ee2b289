// Record sets against a plain walk over the same rows: random moves, filters, orders, searches, clones and deletions.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/data/recordset.h"
#include "platform/error.h"
#include "tests/platform/data/fakeRows.h"

namespace qrel {
namespace {

// A column's possible values in ascending order, each with spellings that are equal; the first spelling of a class
// whose number is 0 stands for Null.
struct Domain {
  ColumnInfo column;
  std::vector<std::vector<std::string>> cells;     // as they stand in a row
  std::vector<std::vector<std::string>> literals;  // as a condition writes them
};

std::vector<Domain> domains() {
  return {{fakeColumn("N", DataType::Integer),
           {{}, {"-5"}, {"0"}, {"12"}, {"1000"}},
           {{"NULL"}, {"-5", "'-5.0'"}, {"0", "'-0'"}, {"'12'", "1.2e1"}, {"'1,000'", "1000"}}},
          {fakeColumn("My Text", DataType::Text),
           {{}, {"", "  "}, {"Ab", "aB", "AB  "}, {"ac"}, {"null", "Null"}, {"É", "é "}},
           {{"NULL"}, {"''", "' '"}, {"'ab'", "'AB '"}, {"'AC'"}, {"'Null'"}, {"'é'", "'É  '"}}},
          {fakeColumn("D", DataType::Decimal),
           {{}, {"-1.50", "-1.5"}, {"0.00"}, {"2.00", "2"}},
           {{"NULL"}, {"-1.5", "'-1.500'"}, {"0"}, {"'2.0'", "2"}}}};
}

struct ModelCondition {
  std::size_t column;
  std::string op;
  int value;
};

// Rows as classes of values, one entry per column; 0 is Null.
struct ModelRows {
  std::vector<std::vector<int>> classes;
  std::vector<bool> deleted;
};

class Model {
 public:
  explicit Model(std::shared_ptr<ModelRows> shared) : rows(std::move(shared)) { moveFirst(); }

  std::shared_ptr<ModelRows> rows;
  std::vector<ModelCondition> filter;
  std::optional<std::size_t> sortColumn;
  bool descending = false;
  std::size_t row = 0;
  bool bof = false;
  bool eof = false;

  bool hasCurrent() const { return !bof && !eof && !rows->deleted[row]; }
  bool passes(std::size_t at, const ModelCondition& c) const {
    const int value = rows->classes[at][c.column];
    if (c.value == 0) return (value == 0) == (c.op == "=");
    if (value == 0) return false;
    return c.op == "="    ? value == c.value
           : c.op == "<>" ? value != c.value
           : c.op == "<"  ? value < c.value
                          : value >= c.value;
  }
  bool before(std::size_t a, std::size_t b) const {
    const int left = sortColumn ? rows->classes[a][*sortColumn] : 0;
    const int right = sortColumn ? rows->classes[b][*sortColumn] : 0;
    return left != right ? (left < right) != descending : a < b;
  }
  // The rows that are shown, in order.
  std::vector<std::size_t> shown() const {
    std::vector<std::size_t> list;
    for (std::size_t at = 0; at < rows->classes.size(); ++at) {
      const bool all = std::all_of(filter.begin(), filter.end(), [&](const auto& c) { return passes(at, c); });
      if (all && !rows->deleted[at]) list.push_back(at);
    }
    std::sort(list.begin(), list.end(), [this](std::size_t a, std::size_t b) { return before(a, b); });
    return list;
  }
  template <typename Wanted>
  void moveToFirstOf(Wanted wanted) {
    bof = false;
    eof = true;
    for (const std::size_t at : shown()) {
      if (!wanted(at)) continue;
      row = at;
      eof = false;
      return;
    }
  }
  void moveFirst() {
    moveToFirstOf([](std::size_t) { return true; });
    bof = eof;
  }
  void moveLast() {
    const auto list = shown();
    eof = bof = list.empty();
    if (!eof) row = list.back();
  }
  void moveNext() {
    const std::size_t from = row;
    moveToFirstOf([this, from](std::size_t at) { return before(from, at); });
  }
  void find(const ModelCondition& c, bool fromFirst) {
    const std::size_t from = row;
    const bool any = fromFirst || bof;
    moveToFirstOf([&, from](std::size_t at) { return (any || !before(at, from)) && passes(at, c); });
  }
};

class Players {
 public:
  explicit Players(unsigned seed) : random_(seed), domains_(domains()) {
    const auto rows = std::make_shared<ModelRows>();
    std::vector<FakeRow> fakes;
    const int count = pick(40);
    for (int i = 0; i < count; ++i) {
      rows->classes.emplace_back();
      fakes.push_back({std::to_string(i)});
      for (const Domain& domain : domains_) {
        const int value = pick(static_cast<int>(domain.cells.size()));
        rows->classes.back().push_back(value);
        fakes.back().push_back(value == 0 ? std::nullopt
                                          : std::optional(any(domain.cells[static_cast<std::size_t>(value)])));
      }
    }
    rows->deleted.resize(rows->classes.size());
    std::vector<ColumnInfo> columns = {fakeColumn("Row", DataType::Integer)};
    for (const Domain& domain : domains_) columns.push_back(domain.column);
    Recordset rs;
    rs.CursorLocation = pick(2) ? adUseClient : adUseServer;
    rs.CacheSize = static_cast<std::size_t>(1 + pick(6));
    rs.Open(std::make_unique<FakeRows>(columns, fakes));
    sets_.push_back(std::move(rs));
    models_.emplace_back(rows);
  }

  void play(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      const auto at = static_cast<std::size_t>(pick(static_cast<int>(sets_.size())));
      log_ += std::to_string(at) + ": ";
      act(at);
      log_ += "\n";
      for (std::size_t i = 0; i < sets_.size(); ++i) compare(sets_[i], models_[i]);
    }
  }

 private:
  int pick(int below) { return below < 1 ? 0 : std::uniform_int_distribution<int>(0, below - 1)(random_); }
  const std::string& any(const std::vector<std::string>& from) {
    return from[static_cast<std::size_t>(pick(static_cast<int>(from.size())))];
  }

  std::string condition(ModelCondition& model) {
    model.column = static_cast<std::size_t>(pick(static_cast<int>(domains_.size())));
    const Domain& domain = domains_[model.column];
    model.value = pick(static_cast<int>(domain.literals.size()));
    model.op = pick(2) ? "=" : any({"=", "<>", "<", ">="});
    if (model.value == 0 && (model.op == "<" || model.op == ">=")) model.op = "=";
    return "[" + domain.column.name + "] " + model.op + " " +
           any(domain.literals[static_cast<std::size_t>(model.value)]);
  }

  void act(std::size_t at) {
    Recordset& rs = sets_[at];
    Model& model = models_[at];
    switch (pick(10)) {
      case 0:
        return filter(rs, model);
      case 1:
        return sort(rs, model);
      case 2:
      case 3:
        return find(rs, model);
      case 4:
        return clone(at);
      case 5:
        return bookmark(rs, model);
      case 6:
        log_ += "delete";
        if (!model.hasCurrent()) return;
        rs.Delete();
        model.rows->deleted[model.row] = true;
        return;
      case 7:
        log_ += "last";
        rs.MoveLast();
        return model.moveLast();
      case 8:
        log_ += "first";
        rs.MoveFirst();
        return model.moveFirst();
      default:
        log_ += "next";
        if (model.eof) return;
        rs.MoveNext();
        model.moveNext();
    }
  }
  void filter(Recordset& rs, Model& model) {
    std::string text;
    model.filter.clear();
    for (int left = pick(4); left > 0; --left) {
      model.filter.emplace_back();
      text += (text.empty() ? "" : " AND ") + condition(model.filter.back());
    }
    log_ += "filter " + text;
    rs.Filter(text);
    model.moveFirst();
  }
  void sort(Recordset& rs, Model& model) {
    const auto column = static_cast<std::size_t>(pick(static_cast<int>(domains_.size()) + 1));
    model.sortColumn.reset();
    model.descending = pick(2);
    std::string text;
    if (column < domains_.size()) {
      model.sortColumn = column;
      text = "[" + domains_[column].column.name + "]" + (model.descending ? " DESC" : "");
    } else {
      model.descending = false;
    }
    log_ += "sort " + text;
    rs.Sort(text);
    model.moveFirst();
  }
  void find(Recordset& rs, Model& model) {
    ModelCondition wanted;
    const std::string text = condition(wanted);
    const bool fromFirst = pick(2);
    log_ += "find " + text + (fromFirst ? " from first" : "");
    if (!fromFirst && model.eof && !model.bof) return;
    rs.Find(text, fromFirst);
    model.find(wanted, fromFirst);
  }
  void clone(std::size_t at) {
    log_ += "clone";
    Recordset copy = sets_[at].Clone();
    Model model(models_[at].rows);
    if (sets_.size() < 3) {
      sets_.push_back(std::move(copy));
      models_.push_back(std::move(model));
    } else {
      const std::size_t other = (at + 1) % sets_.size();
      sets_[other] = std::move(copy);
      models_[other] = std::move(model);
    }
  }
  // To the place of another set over the same rows.
  void bookmark(Recordset& rs, Model& model) {
    const auto other = static_cast<std::size_t>(pick(static_cast<int>(sets_.size())));
    log_ += "to the place of " + std::to_string(other);
    if (!models_[other].hasCurrent()) return;
    const std::size_t row = models_[other].row;
    rs.MoveToBookmark(sets_[other].Bookmark());
    model.row = row;
    model.bof = model.eof = false;
  }

  void compare(Recordset& rs, Model& model) {
    ASSERT_EQ(rs.Eof(), model.eof) << log_;
    ASSERT_EQ(rs.Bof(), model.bof) << log_;
    if (model.hasCurrent()) {
      ASSERT_EQ(rs.Fields(0).Text(), std::to_string(model.row)) << log_;
    } else {
      ASSERT_THROW(rs.Fields(0), RuntimeError) << log_;
    }
    if (pick(4) > 0) return;
    ASSERT_EQ(rs.RecordCount(), static_cast<std::int64_t>(model.shown().size())) << log_;
  }

  std::mt19937 random_;
  std::vector<Domain> domains_;
  std::vector<Recordset> sets_;
  std::vector<Model> models_;
  std::string log_;
};

TEST(RecordsetModel, RandomUseEqualsAPlainWalk) {
  for (unsigned seed = 1; seed <= 400 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Players(seed).play(60);
  }
}

}  // namespace
}  // namespace qrel
