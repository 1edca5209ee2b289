// One connection of a client, from its first message to its last.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/provider.h"
#include "tests/support/tds/call.h"
#include "tests/support/tds/packetStream.h"
#include "tests/support/tds/switches.h"

namespace qrel::tds {

// What all sessions of a server share.
struct Shared {
  std::string instance;  // of the embedded server
  std::string version;
  std::string user, password;
  Provider& provider;
  Switches& switches;
  Traffic& traffic;
  std::atomic<bool> stopping = false;
};

class Session {
 public:
  Session(Shared& shared, int socket, std::uint16_t number);

  // Talks until the line is gone.
  void run();
  // Whether what runs on this session's thread is to end.
  bool stopAsked() const;

 private:
  struct Prepared {
    std::string text, declarations;
  };
  struct Statement {
    std::string text, declarations;
    std::vector<Value> values;
  };

  bool answer(const Message& message);
  void logIn(const Message& message);
  void refuseLogin(const std::string& user, const ServerMessage* first);
  void answerBatch(std::string_view body);
  void answerCalls(std::string_view body);
  void answerTransaction(std::string_view body);

  // session.cpp: what a statement gives, each result ended by `token`.
  static CommandRequest requestFor(const Statement& statement);
  void send(const Statement& statement, DoneToken token);
  void sendResults(const Statement& statement, DoneToken token);
  void sendFirst(DoneToken token);
  void sendFailure(const ServerMessage& message, DoneToken token);
  void tellDatabase(const std::string& now);
  std::unique_ptr<ProviderConnection> connect() const;

  // procedures.cpp
  void answerCall(const Call& call, bool last);
  std::string callPrepared(const Call& call);
  void describe(const Prepared& prepared);
  void callProcedure(const Call& call);
  void note(const Call& call, const Statement& statement) const;

  Shared& shared_;
  std::uint16_t number_;
  PacketStream stream_;
  std::string database_;
  std::map<std::int64_t, Prepared> prepared_;
  std::int64_t lastHandle_ = 0;
  std::uint64_t transaction_ = 0;
  std::uint64_t lastTransaction_ = 0;
  bool loggedIn_ = false;
  bool failed_ = false;  // a statement of the call that is being answered
  std::int32_t returnValue_ = 0;
};

}  // namespace qrel::tds
