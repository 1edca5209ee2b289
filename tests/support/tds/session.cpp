#include "tests/support/tds/session.h"

#include <algorithm>

#include "platform/data/columnStore.h"
#include "platform/data/connectionString.h"
#include "platform/error.h"
#include "tests/support/tds/batchParts.h"
#include "tests/support/tds/bytes.h"
#include "tests/support/tds/failure.h"
#include "tests/support/tds/login.h"
#include "tests/support/tds/resultSender.h"

namespace qrel::tds {

namespace {

constexpr std::uint16_t transactionCommand = 0xFD;
// The name under which the server speaks in its messages.
constexpr std::string_view speaker = "tdsEnd";

ServerMessage info(std::int32_t number, std::string text, std::uint8_t state) {
  return {.number = number, .text = std::move(text), .severity = 0, .state = state};
}

std::string currentDatabase(ProviderConnection& connection) {
  const CommandResult result = connection.execute({"SELECT DB_NAME()", 0, {}});
  ColumnStore store(result.rows->columns());
  result.rows->fetch(store, 1);
  return textOf(store.cell(0, 0));
}

}  // namespace

Session::Session(Shared& shared, int socket, std::uint16_t number) : shared_(shared), number_(number), stream_(socket) {
  stream_.setSession(static_cast<std::uint16_t>(50 + number));
}

bool Session::stopAsked() const {
  return shared_.stopping || (!shared_.switches.ignoreAttention && stream_.interruptionWaiting());
}

void Session::run() {
  try {
    for (bool more = true; more;) {
      const Message message = stream_.receive();
      ++shared_.traffic.roundTrips;
      const Switches& switches = shared_.switches;
      if (switches.mute || (loggedIn_ && switches.muteAfterLogin)) continue;
      // What cancels a statement isn't waited for.
      if (message.kind != PacketKind::Attention) stream_.interruptedWithin(switches.latencyMilliseconds);
      try {
        more = answer(message);
      } catch (const Interrupted&) {
        stream_.receive();  // the attention itself
        ++shared_.traffic.roundTrips;
        ++shared_.traffic.attentions;
        stream_.write(doneToken(DoneToken::Done, done::attention, 0, 0));
        stream_.finish();
      }
    }
  } catch (const LineGone&) {
  } catch (const std::exception&) {
    // What a client can't have meant ends its connection, and nothing else.
  }
}

bool Session::answer(const Message& message) {
  const auto known = [&] { return withoutHeaders(message.payload); };
  switch (message.kind) {
    case PacketKind::Prelogin: {
      // Whoever is told that encryption is required begins to set it up, and is left.
      const bool required = shared_.switches.requireEncryption;
      const bool begun = !message.payload.empty() && message.payload[0] == 0x16;
      if (begun) return false;
      stream_.write(preloginAnswer(required ? Encryption::Required : Encryption::NotSupported, shared_.version));
      break;
    }
    case PacketKind::Login:
      logIn(message);
      break;
    case PacketKind::Attention:  // of a statement that has been answered already
      ++shared_.traffic.attentions;
      if (shared_.switches.ignoreAttention) return true;
      stream_.write(doneToken(DoneToken::Done, done::attention, 0, 0));
      break;
    case PacketKind::Batch:
      answerBatch(known());
      break;
    case PacketKind::Call:
      answerCalls(known());
      break;
    case PacketKind::Transaction:
      answerTransaction(known());
      break;
    default:
      return false;
  }
  const bool stays = message.kind == PacketKind::Prelogin || loggedIn_;
  stream_.finish();
  return stays;
}

void Session::refuseLogin(const std::string& user, const ServerMessage* first) {
  if (first) stream_.write(messageToken(*first, speaker));
  const ServerMessage refusal{
      .number = 18456, .text = "Login failed for user '" + user + "'.", .severity = 14, .state = 1};
  stream_.write(messageToken(refusal, speaker) + doneToken(DoneToken::Done, done::error, 0, 0));
}

void Session::logIn(const Message& message) {
  const Login login = readLogin(message.payload);
  if (shared_.switches.refuseLogins || login.user != shared_.user || login.password != shared_.password)
    return refuseLogin(login.user, nullptr);
  database_ = login.database.empty() ? "master" : login.database;
  try {
    database_ = currentDatabase(*connect());
  } catch (const RuntimeError&) {
    const ServerMessage missing{
        .number = 4060,
        .text = "Cannot open database \"" + database_ + "\" requested by the login. The login failed.",
        .severity = 11};
    return refuseLogin(login.user, &missing);
  }
  loggedIn_ = true;
  ++shared_.traffic.logins;
  stream_.write(databaseChange(database_, "master"));
  stream_.write(messageToken(info(5701, "Changed database context to '" + database_ + "'.", 2), speaker));
  stream_.write(collationChange() + languageChange("us_english"));
  stream_.write(messageToken(info(5703, "Changed language setting to us_english.", 1), speaker));
  stream_.write(loginAccepted(shared_.version));
  stream_.write(packetSizeChange(login.packetSize, stream_.packetSize()));
  stream_.write(doneToken(DoneToken::Done, 0, 0, 0));
  stream_.setPacketSize(login.packetSize);
}

std::unique_ptr<ProviderConnection> Session::connect() const {
  return shared_.provider.open(ConnectionString::parse(
      "Provider=SQLNCLI11;Server=" + ConnectionString::quoted("(localdb)\\" + shared_.instance) +
      ";Initial Catalog=" + ConnectionString::quoted(database_)));
}

void Session::answerBatch(std::string_view body) {
  Statement statement;
  statement.text = fromUtf16(body);
  shared_.traffic.add({.connection = number_, .database = database_, .text = statement.text});
  send(statement, DoneToken::Done);
}

void Session::answerCalls(std::string_view body) {
  const std::vector<Call> calls = readCalls(body);
  for (std::size_t i = 0; i < calls.size(); ++i) answerCall(calls[i], i + 1 == calls.size());
}

// Nothing that a session does here changes a database: transactions are kept as numbers alone.
void Session::answerTransaction(std::string_view body) {
  constexpr std::uint16_t begin = 5, commit = 7, rollBack = 8;
  ByteReader reader(body);
  const std::uint16_t kind = reader.u16();
  bool begins = kind == begin;
  if (kind == commit || kind == rollBack) {
    reader.take(reader.u8());
    begins = (reader.u8() & 1) != 0;
    stream_.write(transactionEnded(transaction_, kind == commit));
    transaction_ = 0;
  }
  if (begins) {
    transaction_ = ++lastTransaction_;
    stream_.write(transactionBegun(transaction_));
  }
  stream_.write(doneToken(DoneToken::Done, 0, 0, transactionCommand));
}

void Session::tellDatabase(const std::string& now) {
  if (now == database_) return;
  stream_.write(databaseChange(now, database_));
  stream_.write(messageToken(info(5701, "Changed database context to '" + now + "'.", 2), speaker));
  database_ = now;
}

void Session::sendFailure(const ServerMessage& message, DoneToken token) {
  const unsigned more = token == DoneToken::Done ? 0 : done::more;
  failed_ = true;
  stream_.write(messageToken(message, speaker) + doneToken(token, done::error | more));
}

void Session::sendFirst(DoneToken token) {
  for (int i = 1; i <= shared_.switches.countsFirst; ++i)
    stream_.write(doneToken(token, done::more | done::counted, static_cast<std::uint64_t>(i), 0xC3));
  if (shared_.switches.messageFirst)
    stream_.write(messageToken(ServerMessage{.text = "A message of the server.", .severity = 10}, speaker));
}

void Session::send(const Statement& statement, DoneToken token) {
  if (const auto failure = shared_.switches.takeFailure(statement.text)) {
    sendFailure(*failure, token);
    if (!shared_.switches.closeAfterError) return;
    stream_.finish();
    throw LineGone();
  }
  try {
    sendResults(statement, token);
  } catch (const RuntimeError& error) {
    if (error.number == errorNumber::cancelled) throw Interrupted();
    sendFailure(messageOf(error), token);
  }
}

// A statement with parameters runs as the server's own procedure for such, which knows their declarations.
CommandRequest Session::requestFor(const Statement& statement) {
  if (statement.values.empty()) return {statement.text, 0, {}};
  CommandRequest request{"sp_executesql", 0, {}, true};
  request.parameters = {Value::ofText(statement.text), Value::ofText(statement.declarations)};
  request.parameters.insert(request.parameters.end(), statement.values.begin(), statement.values.end());
  return request;
}

void Session::sendResults(const Statement& statement, DoneToken token) {
  const auto connection = connect();
  const std::vector<std::string> parts = batchParts(statement.text);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const CommandResult result = connection->execute(requestFor({parts[i], statement.declarations, statement.values}));
    if (token == DoneToken::Done && mayUse(parts[i])) tellDatabase(currentDatabase(*connection));
    sendFirst(token);
    const unsigned more = token != DoneToken::Done || i + 1 < parts.size() ? done::more : 0;
    if (!result.rows) {
      stream_.write(doneToken(token, more));
      continue;
    }
    const std::uint64_t count = sendRows(stream_, *result.rows, shared_.switches);
    shared_.traffic.rows += static_cast<std::int64_t>(count);
    stream_.write(doneToken(token, more | done::counted, count));
  }
}

}  // namespace qrel::tds
