// Messages over a connected socket, cut into packets: whole ones come in, an answer goes out as it grows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qrel::tds {

enum class PacketKind : std::uint8_t {
  Batch = 0x01,
  Call = 0x03,  // of procedures
  Answer = 0x04,
  Attention = 0x06,
  Transaction = 0x0E,
  Login = 0x10,
  Prelogin = 0x12,  // and, where encryption is offered, what sets it up
};

struct Message {
  PacketKind kind{};
  std::string payload;
};

// The line has been closed or broken, by either end.
struct LineGone {};

// Belongs to one thread, but for the socket: whoever shuts that down ends every call here with LineGone.
class PacketStream {
 public:
  // The socket stays its owner's.
  explicit PacketStream(int socket) : socket_(socket) {}

  // Waits for a message and returns all of it. Raises LineGone.
  Message receive();

  // Appends to the answer. Packets that are full are sent at once, so that no more than one is held. Raises LineGone.
  void write(std::string_view bytes);
  // Ends the answer: sends what is left as its last packet.
  void finish();
  // Sends what is left as a packet that isn't the last.
  void flush();
  bool answering() const { return !pending_.empty() || packetNumber_ > 0; }

  // Looks without waiting, or for a time, whether the client asks for an end: it has sent an attention, which is left
  // to be received, or has gone.
  bool interruptionWaiting() const { return interruptedWithin(0); }
  bool interruptedWithin(int milliseconds) const;

  // Bytes of a whole packet, its header counted; from the next packet on.
  void setPacketSize(std::size_t bytes) { packetSize_ = bytes; }
  std::size_t packetSize() const { return packetSize_; }
  void setSession(std::uint16_t number) { session_ = number; }

 private:
  static constexpr std::size_t headerSize = 8;

  void readExactly(char* to, std::size_t count) const;
  void sendPacket(std::string_view payload, bool last);

  int socket_;
  std::size_t packetSize_ = 4096;
  std::uint16_t session_ = 0;
  std::uint8_t packetNumber_ = 0;
  std::string pending_;
};

}  // namespace qrel::tds
