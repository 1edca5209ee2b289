// Connections that nobody uses at the moment, a few for each server, database and login.
#pragma once

#include <chrono>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "platform/data/odbc/session.h"

namespace qrel::odbc {

// Closing a connection and opening it again takes several journeys to the server, and one query each is the rule. A
// connection that has stood for more than a moment has to answer before it is handed out; one that has stood for longer
// than the time given is closed.
class SessionPool : public std::enable_shared_from_this<SessionPool> {
 public:
  // A session for this opening, a kept one or a new one, that comes back here by itself. Raises DataError.
  std::shared_ptr<Session> take(const std::shared_ptr<Environment>& environment, const Opening& opening,
                                int keepSeconds);
  // The same, but never a kept one: the others of this opening are closed.
  std::shared_ptr<Session> open(const std::shared_ptr<Environment>& environment, const Opening& opening,
                                int keepSeconds);

 private:
  std::shared_ptr<Session> lease(std::shared_ptr<Session> session, int keepSeconds);
  std::shared_ptr<Session> takeKept(const Opening& opening);
  void giveBack(std::shared_ptr<Session> session, int keepSeconds);

  std::mutex mutex_;
  std::list<std::shared_ptr<Session>> kept_;  // the latest last
};

}  // namespace qrel::odbc
