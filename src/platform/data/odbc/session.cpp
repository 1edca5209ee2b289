#include "platform/data/odbc/session.h"

#include <cstring>

namespace qrel::odbc {

namespace {

constexpr SQLINTEGER accessToken = 1256;  // SQL_COPT_SS_ACCESS_TOKEN of Microsoft's drivers

// The token as the driver wants it: its length in bytes, then each byte followed by a zero.
std::string tokenStructure(const std::string& token) {
  const auto size = static_cast<std::uint32_t>(token.size() * 2);
  std::string bytes(sizeof size, '\0');
  std::memcpy(bytes.data(), &size, sizeof size);
  for (const char c : token) bytes.append({c, '\0'});
  return bytes;
}

// What a call said goes with it: a failure in `failure`.
bool succeeded(SQLRETURN result, SQLSMALLINT kind, SQLHANDLE handle, Records& failure) {
  if (SQL_SUCCEEDED(result)) return true;
  failure = recordsOf(kind, handle);
  return false;
}

}  // namespace

Session::Session(std::shared_ptr<Environment> environment, Opening opening)
    : environment_(std::move(environment)), opening_(std::move(opening)) {}

Session::~Session() {
  worker_.reset();  // nothing else works with the handle from here on
  disconnect();
  if (connection_) SQLFreeHandle(SQL_HANDLE_DBC, connection_);
}

void Session::disconnect() {
  if (connected_) SQLDisconnect(connection_);
  connected_ = false;
  dead = true;
}

void Session::connect(Records& failure, bool& connected) {
  if (!succeeded(SQLAllocHandle(SQL_HANDLE_DBC, environment_->get(), &connection_), SQL_HANDLE_ENV, environment_->get(),
                 failure))
    return;
  // Without one a server that never answers would be waited for without end.
  SQLSetConnectAttrW(connection_, SQL_ATTR_LOGIN_TIMEOUT,
                     asPointer(static_cast<std::uintptr_t>(opening_.attempt.seconds)), SQL_IS_UINTEGER);
  const std::string token = tokenStructure(opening_.target.token);
  if (!opening_.target.token.empty() &&
      !succeeded(SQLSetConnectAttrW(connection_, accessToken, const_cast<char*>(token.data()), SQL_IS_POINTER),
                 SQL_HANDLE_DBC, connection_, failure))
    return;
  std::vector<SQLWCHAR> text = wide(opening_.text);
  connected_ = connected =
      succeeded(SQLDriverConnectW(connection_, nullptr, text.data(), static_cast<SQLSMALLINT>(text.size()), nullptr, 0,
                                  nullptr, SQL_DRIVER_NOPROMPT),
                SQL_HANDLE_DBC, connection_, failure);
  if (connected_) readCatalogue();
}

// Where the server has put it: a login's default database has no name in the connection string.
void Session::readCatalogue() {
  SQLWCHAR name[256] = {};
  SQLINTEGER bytes = 0;
  if (SQL_SUCCEEDED(SQLGetConnectAttrW(connection_, SQL_ATTR_CURRENT_CATALOG, name, sizeof name, &bytes)))
    catalogue_ = narrow(name, static_cast<std::size_t>(std::max<SQLINTEGER>(bytes, 0)) / sizeof(SQLWCHAR));
}

std::shared_ptr<Session> Session::open(const std::shared_ptr<Environment>& environment, const Opening& opening) {
  struct Attempted {
    Records failure;
    bool connected = false;
  };
  std::shared_ptr<Session> session(new Session(environment, opening));
  const auto attempted = std::make_shared<Attempted>();
  Watch watch;
  watch.stopAsked = opening.stopAsked;
  // A look-up of an instance or of a host's name takes its own time, whatever was asked for.
  watch.atMost = std::chrono::seconds(opening.attempt.seconds) + std::chrono::milliseconds(500);
  const Outcome outcome = session->worker_->run(
      [session, attempted] { session->connect(attempted->failure, attempted->connected); }, watch);
  if (outcome.abandoned) session->dead = true;
  if (outcome.ending == Ending::Stopped) throw cancelled({});
  if (outcome.abandoned) throw silentServer(opening.attempt);
  if (!attempted->connected) throw connectFailure(attempted->failure, opening.attempt);
  return session;
}

bool Session::answers(const std::function<bool()>* stopAsked) {
  const auto good = std::make_shared<bool>(false);
  Watch watch;
  watch.stopAsked = stopAsked;
  watch.atMost = std::chrono::seconds(opening_.attempt.seconds);
  const Outcome outcome = worker_->run(
      [self = shared_from_this(), good] {
        std::vector<SQLWCHAR> name = wide(self->catalogue_);
        *good =
            !name.empty() && SQL_SUCCEEDED(SQLSetConnectAttrW(self->connection_, SQL_ATTR_CURRENT_CATALOG, name.data(),
                                                              static_cast<SQLINTEGER>(name.size() * sizeof(SQLWCHAR))));
      },
      watch);
  if (outcome.abandoned || !*good) dead = true;
  if (outcome.ending == Ending::Stopped) throw cancelled({});
  return !dead;
}

bool Session::reset() {
  return SQL_SUCCEEDED(
      SQLSetConnectAttrW(connection_, SQL_ATTR_RESET_CONNECTION, asPointer(SQL_RESET_CONNECTION_YES), SQL_IS_UINTEGER));
}

void Session::expireAfter(std::chrono::milliseconds time) {
  worker_->expireAfter(time, [this] { disconnect(); });
}

}  // namespace qrel::odbc
