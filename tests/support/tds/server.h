// A server that speaks TDS 7.4 on a port of this machine, in front of an instance of the embedded server: what clients
// of SQL Server (FreeTDS, by way of ODBC or not) are tried against.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "tests/support/tds/session.h"
#include "tests/support/tds/switches.h"

namespace qrel::tds {

struct ServerOptions {
  std::string instance;
  std::string user = "sa";
  std::string password = "secret";
  std::uint16_t port = 0;  // 0: one that is free
};

// One thread takes connections, one more talks on each. Databases are opened for reading, as they stand when a
// statement begins; the instance must outlive this object. All that stands here may be called from any thread.
class Server {
 public:
  // Begins at once. Raises RuntimeError where the port can't be had or the instance isn't there.
  Server(EmbeddedServers& servers, ServerOptions options);
  ~Server() { stop(); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  std::uint16_t port() const { return port_; }
  const ServerOptions& options() const { return options_; }
  Switches& switches() { return switches_; }
  const Traffic& traffic() const { return traffic_; }
  void forgetRequests() { traffic_.forgetRequests(); }

  // Ends every connection from this end, also in the middle of an answer; new ones are taken.
  void dropConnections();
  // Connections that are open now.
  std::size_t openConnections() const;
  // From now on a connection isn't even taken: as many as wait in the queue fill it, and a client's is left without a
  // word until its time is up. takeAgain lets those in that came meanwhile.
  void fillQueue();
  void takeAgain();

  // Ends all connections and waits for their threads, which takes milliseconds. Afterwards the port is closed.
  void stop();

 private:
  struct Connection {
    int socket = -1;  // under mutex_: closed by its own thread
    bool ended = false;
    std::thread thread;
  };

  void listen();
  void takeConnections();
  void talk(Connection& connection, std::uint16_t number);
  void joinEnded();
  bool stopAskedHere();

  ServerOptions options_;
  Switches switches_;
  Traffic traffic_;
  std::function<bool()> stopAsked_ = [this] { return stopAskedHere(); };
  EmbeddedProvider provider_;
  Shared shared_;

  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::atomic<bool> taking_ = true;
  mutable std::mutex mutex_;
  std::list<Connection> connections_;
  std::map<std::thread::id, const Session*> talking_;
  std::vector<int> waiting_;  // our own connections that fill the queue
  std::thread taker_;
};

}  // namespace qrel::tds
