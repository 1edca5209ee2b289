// One connection to a server by way of ODBC, with the thread that makes its calls.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

#include "platform/data/odbc/driverTable.h"
#include "platform/data/odbc/odbcApi.h"
#include "platform/data/odbc/worker.h"

namespace qrel::odbc {

// What is needed to open one.
struct Opening {
  Driver driver;
  Target target;
  std::string text;  // for the driver: it holds the password, and is shown nowhere
  Attempt attempt;
  const std::function<bool()>* stopAsked = nullptr;
};

class Session : public std::enable_shared_from_this<Session> {
 public:
  // Raises DataError when the server or the database can't be had in time.
  static std::shared_ptr<Session> open(const std::shared_ptr<Environment>& environment, const Opening& opening);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  SQLHDBC get() const { return connection_; }
  Worker& worker() { return *worker_; }
  const Opening& opening() const { return opening_; }

  // Whether it still answers, in the database that it was opened with: a round trip.
  bool answers(const std::function<bool()>* stopAsked);
  // Lets the driver forget with the next command what the ones before have set; false where it can't.
  bool reset();
  // Ends it when nobody claims it in time.
  void expireAfter(std::chrono::milliseconds time);
  void disconnect();

  std::atomic<bool> dead = false;  // of no more use
  bool busy = false;               // rows of a statement are still to come
  bool touched = false;            // something ran that may have left more behind than an answer
  bool proved = true;              // it was opened or has answered since it was taken out of the pool
  std::chrono::steady_clock::time_point givenBack;

 private:
  Session(std::shared_ptr<Environment> environment, Opening opening);
  void connect(Records& failure, bool& connected);
  void readCatalogue();

  std::shared_ptr<Environment> environment_;
  Opening opening_;
  SQLHDBC connection_ = nullptr;
  bool connected_ = false;
  std::string catalogue_;
  std::unique_ptr<Worker> worker_ = std::make_unique<Worker>();
};

}  // namespace qrel::odbc
