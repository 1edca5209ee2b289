#include "tests/support/tds/packetStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>

#include "tests/support/tds/bytes.h"

namespace qrel::tds {

namespace {

// Longer messages than any that a test sends.
constexpr std::size_t longestMessage = std::size_t{64} * 1024 * 1024;

}  // namespace

void PacketStream::readExactly(char* to, std::size_t count) const {
  while (count > 0) {
    const ssize_t got = recv(socket_, to, count, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) throw LineGone();
    to += got;
    count -= static_cast<std::size_t>(got);
  }
}

Message PacketStream::receive() {
  Message message;
  for (bool last = false; !last;) {
    std::array<char, headerSize> header{};
    readExactly(header.data(), header.size());
    ByteReader reader({header.data(), header.size()});
    message.kind = static_cast<PacketKind>(reader.u8());
    last = (reader.u8() & 1) != 0;
    const std::size_t length = reader.big16();
    if (length < headerSize || message.payload.size() + length > longestMessage)
      throw BadMessage("a packet says that it is " + std::to_string(length) + " bytes long");
    const std::size_t before = message.payload.size();
    message.payload.resize(before + length - headerSize);
    readExactly(message.payload.data() + before, length - headerSize);
  }
  return message;
}

void PacketStream::sendPacket(std::string_view payload, bool last) {
  ByteWriter writer;
  writer.u8(static_cast<std::uint8_t>(PacketKind::Answer)).u8(last ? 1 : 0).big16(payload.size() + headerSize);
  writer.big16(session_).u8(++packetNumber_).u8(0).raw(payload);
  std::string_view rest = writer.bytes();
  while (!rest.empty()) {
    const ssize_t sent = send(socket_, rest.data(), rest.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) throw LineGone();
    rest.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void PacketStream::write(std::string_view bytes) {
  const std::size_t room = packetSize_ - headerSize;
  pending_ += bytes;
  // The last packet has to be marked, so that a full one waits until there is more.
  std::size_t at = 0;
  for (; pending_.size() - at > room; at += room) sendPacket(std::string_view(pending_).substr(at, room), false);
  pending_.erase(0, at);
}

void PacketStream::flush() {
  if (!pending_.empty()) sendPacket(pending_, false);
  pending_.clear();
}

void PacketStream::finish() {
  sendPacket(pending_, true);
  pending_.clear();
  packetNumber_ = 0;
}

bool PacketStream::interruptedWithin(int milliseconds) const {
  pollfd waiting{socket_, POLLIN, 0};
  if (poll(&waiting, 1, milliseconds) <= 0) return false;
  char kind = 0;
  const ssize_t got = recv(socket_, &kind, 1, MSG_PEEK | MSG_DONTWAIT);
  if (got < 0) return errno != EAGAIN && errno != EINTR;
  return got == 0 || static_cast<PacketKind>(kind) == PacketKind::Attention;
}

}  // namespace qrel::tds
