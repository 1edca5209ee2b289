// Connections of the data access layer over sessions of ODBC.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/data/odbc/sessionPool.h"
#include "platform/data/odbc/statement.h"
#include "platform/data/provider.h"

namespace qrel::odbc {

// A statement that was begun, and the session that it runs on.
struct Running {
  std::shared_ptr<Session> session;
  std::shared_ptr<Statement> statement;
};

// What a connection and its row sources have in common. A session has one statement at a time: where rows of one are
// still to come, the next command gets a session of its own.
class Road {
 public:
  Road(std::shared_ptr<Environment> environment, std::shared_ptr<SessionPool> pool, Opening opening, int keepSeconds);

  // Raises DataError.
  Running begin(const CommandRequest& request);
  // Brings the next block of a statement; raises DataError.
  void fill(const Running& running, const CommandRequest& request);
  // Lets go of a statement, also of one whose rows were not all read.
  void end(Running& running);

  void interrupt() { interrupted_ = true; }
  const Opening& opening() const { return opening_; }

 private:
  Running attempt(const std::shared_ptr<Session>& session, const CommandRequest& request);
  void run(const Running& running, const CommandRequest& request, void (Statement::*step)(), bool clocked);
  std::shared_ptr<Session> freeSession();

  std::shared_ptr<Environment> environment_;
  std::shared_ptr<SessionPool> pool_;
  Opening opening_;
  int keepSeconds_;
  std::atomic<bool> interrupted_ = false;
  std::shared_ptr<Session> own_;  // the connection's first one
};

class OdbcConnection : public ProviderConnection {
 public:
  explicit OdbcConnection(std::shared_ptr<Road> road) : road_(std::move(road)) {}
  CommandResult execute(const CommandRequest& request) override;
  void interrupt() override { road_->interrupt(); }
  std::vector<std::pair<std::string, std::string>> facts() override;

 private:
  std::shared_ptr<Road> road_;
};

}  // namespace qrel::odbc
