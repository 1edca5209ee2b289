// One session on one database of an embedded instance: runs T-SQL batches.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/run/batchListener.h"
#include "embedded/run/sessionState.h"
#include "platform/data/provider.h"

namespace qrel::tsql {

class Session {
 public:
  // A database that is open for reading gets a session that reads.
  explicit Session(std::shared_ptr<OpenDatabase> open) : state_(std::move(open)) {}

  // Runs one batch. With a listener, statements that fail or aren't understood are told to it and the rest runs on;
  // without one the first error is raised as DataError (0x80040E14 for what isn't understood) with the SQL.
  // The first result set is returned; `parameters` are bound to @p1, @p2, ... and to ? in order.
  CommandResult run(std::string_view batch, BatchListener* listener, const std::vector<Value>* parameters = nullptr);
  // Runs a system procedure by its name, with its parameters in order. Only so a session that reads may attach a
  // database: no text of a batch gets there.
  CommandResult runProcedure(std::string_view name, const std::vector<Value>& parameters);

  // Runs a statement by itself that has failed in a batch, with the variables and under the settings that it had there.
  // With `later` CREATE TABLE leaves foreign keys to tables that aren't there out and puts them there.
  void runAgain(std::string_view statement, const std::vector<StatementVariable>& variables,
                const SessionSettings& settings, BatchListener* listener, std::vector<LaterKey>* later = nullptr);
  // Adds keys that were left out. Raises the DataError of one that is refused; some may have been added by then.
  void addKeys(const std::vector<LaterKey>& keys);
  // After a rollback that this session knows nothing of.
  void forgetSchema();

  const SessionSettings& settings() const { return state_.settings; }
  void setDataFiles(std::function<std::filesystem::path(std::string_view)> find) { state_.dataFile = std::move(find); }

  // Keeps what a transaction that is still open has done. A server would take it back when its connection ends.
  void commitAll() { state_.commitAll(); }
  // Rows inserted so far that no ROLLBACK has taken back.
  std::int64_t rowsInserted() const { return state_.memory.inserted; }

 private:
  void beginBatch();
  CommandResult runWith(std::string_view batch, BatchListener* listener);

  SessionState state_;
};

}  // namespace qrel::tsql
