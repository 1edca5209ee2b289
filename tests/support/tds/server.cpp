#include "tests/support/tds/server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/error.h"

namespace qrel::tds {

namespace {

constexpr int queueLength = 64;
constexpr int pollMilliseconds = 20;

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return address;
}

[[noreturn]] void cannotListen(std::uint16_t port) {
  throw RuntimeError(errorNumber::pathAccess,
                     "Port " + std::to_string(port) +
                         " of this machine can't be listened at: " + std::generic_category().message(errno) + ".");
}

bool becomesReadable(int socket, short what, int milliseconds) {
  pollfd waiting{socket, what, 0};
  return poll(&waiting, 1, milliseconds) > 0;
}

}  // namespace

Server::Server(EmbeddedServers& servers, ServerOptions options)
    : options_(std::move(options)),
      provider_(servers, &stopAsked_),
      shared_{.instance = options_.instance,
              .version = servers.productVersion(options_.instance),
              .user = options_.user,
              .password = options_.password,
              .provider = provider_,
              .switches = switches_,
              .traffic = traffic_} {
  listen();
  taker_ = std::thread([this] { takeConnections(); });
}

void Server::listen() {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int on = 1;
  setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address = loopback(options_.port);
  socklen_t size = sizeof address;
  auto* const plain = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener_, plain, size) != 0 || ::listen(listener_, queueLength) != 0 ||
      getsockname(listener_, plain, &size) != 0) {
    const int reason = errno;
    close(listener_);
    errno = reason;
    cannotListen(options_.port);
  }
  port_ = ntohs(address.sin_port);
}

void Server::takeConnections() {
  for (std::uint16_t number = 1; !shared_.stopping;) {
    if (!taking_) {
      std::this_thread::sleep_for(std::chrono::milliseconds(pollMilliseconds));
      continue;
    }
    if (!becomesReadable(listener_, POLLIN, pollMilliseconds)) continue;
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) continue;
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ++traffic_.connections;
    joinEnded();
    const std::lock_guard lock(mutex_);
    Connection& connection = connections_.emplace_back();
    connection.socket = socket;
    connection.thread = std::thread([this, &connection, number] { talk(connection, number); });
    ++number;
  }
}

void Server::talk(Connection& connection, std::uint16_t number) {
  int socket = -1;
  {
    const std::lock_guard lock(mutex_);
    socket = connection.socket;
  }
  Session session(shared_, socket, number);
  {
    const std::lock_guard lock(mutex_);
    talking_[std::this_thread::get_id()] = &session;
  }
  session.run();
  const std::lock_guard lock(mutex_);
  talking_.erase(std::this_thread::get_id());
  connection.socket = -1;
  connection.ended = true;
  close(socket);
}

// Asked by the embedded server in whichever thread runs a statement.
bool Server::stopAskedHere() {
  const Session* session = nullptr;
  {
    const std::lock_guard lock(mutex_);
    const auto found = talking_.find(std::this_thread::get_id());
    if (found != talking_.end()) session = found->second;
  }
  return session && session->stopAsked();
}

void Server::joinEnded() {
  std::list<Connection> ended;
  {
    const std::lock_guard lock(mutex_);
    for (auto each = connections_.begin(); each != connections_.end();) {
      const auto next = std::next(each);
      if (each->ended) ended.splice(ended.end(), connections_, each);
      each = next;
    }
  }
  for (Connection& each : ended) each.thread.join();
}

void Server::dropConnections() {
  const std::lock_guard lock(mutex_);
  for (const Connection& each : connections_)
    if (each.socket >= 0) shutdown(each.socket, SHUT_RDWR);
}

std::size_t Server::openConnections() const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(
      std::count_if(connections_.begin(), connections_.end(), [](const Connection& each) { return each.socket >= 0; }));
}

void Server::fillQueue() {
  taking_ = false;
  std::this_thread::sleep_for(std::chrono::milliseconds(3 * pollMilliseconds));
  ::listen(listener_, 0);
  const sockaddr_in address = loopback(port_);
  const std::lock_guard lock(mutex_);
  // Until one is left without an answer.
  for (bool taken = true; taken && waiting_.size() < queueLength;) {
    const int mine = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    waiting_.push_back(mine);
    connect(mine, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    taken = becomesReadable(mine, POLLOUT, 5 * pollMilliseconds);
  }
}

void Server::takeAgain() {
  {
    const std::lock_guard lock(mutex_);
    for (const int mine : waiting_) close(mine);
    waiting_.clear();
  }
  ::listen(listener_, queueLength);
  taking_ = true;
}

void Server::stop() {
  if (shared_.stopping.exchange(true)) return;
  taker_.join();
  dropConnections();
  std::list<Connection> all;
  {
    const std::lock_guard lock(mutex_);
    for (const int mine : waiting_) close(mine);
    waiting_.clear();
  }
  for (Connection& each : connections_) each.thread.join();
  close(listener_);
}

}  // namespace qrel::tds
