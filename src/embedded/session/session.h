// One session on one database of an embedded instance: runs T-SQL batches.
#pragma once

#include <cstdint>
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

  // Keeps what a transaction that is still open has done. A server would take it back when its connection ends.
  void commitAll() { state_.commitAll(); }
  // Rows inserted so far that no ROLLBACK has taken back.
  std::int64_t rowsInserted() const { return state_.memory.inserted; }

 private:
  SessionState state_;
};

}  // namespace qrel::tsql
