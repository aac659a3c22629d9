#include "TftpServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <system_error>
#include <utility>

namespace network {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlockBytes = 512;
constexpr std::size_t kHeaderBytes = 4;
constexpr int kAnswerTimeoutMs = 1000;
constexpr int kTries = 5;

enum Operation : uint16_t { kRead = 1, kWrite = 2, kData = 3, kAcknowledge = 4, kError = 5 };
enum ErrorCode : uint16_t { kNotFound = 1, kDenied = 2, kNoRoom = 3 };

/// "OPERATION NUMBER DATA" as it is transmitted.
std::string Packet(uint16_t operation, uint16_t number, const std::string& data = "") {
  const auto byte = [](int value) { return static_cast<char>(value & 0xff); };
  return std::string{byte(operation >> 8), byte(operation), byte(number >> 8), byte(number)} + data;
}

uint16_t NumberAt(const std::string& packet, std::size_t place) {
  if (packet.size() < place + 2) return 0;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(packet[i]); };
  return static_cast<uint16_t>(byte(place) << 8 | byte(place + 1));
}

void SendPacket(int peer, const std::string& packet) {
  // A lost packet is sent again if no answer comes.
  [[maybe_unused]] const ssize_t sent = send(peer, packet.data(), packet.size(), 0);
}

void SendError(int peer, ErrorCode code, const char* text) {
  SendPacket(peer, Packet(kError, code, text + std::string(1, '\0')));
}

/// The next packet of the peer; empty if none comes in time.
std::string NextPacket(int peer) {
  pollfd waited = {peer, POLLIN, 0};
  if (poll(&waited, 1, kAnswerTimeoutMs) <= 0) return "";
  std::string packet(kHeaderBytes + kBlockBytes, '\0');
  const ssize_t got = recv(peer, packet.data(), packet.size(), 0);
  packet.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  return packet;
}

/// Sends `packet`, several times if necessary, until the peer's packet with that operation and
/// number comes. Returns that packet; empty if the peer is gone or gives up.
std::string Exchange(int peer, const std::string& packet, uint16_t operation, uint16_t number) {
  for (int tries = 0; tries < kTries; ++tries) {
    SendPacket(peer, packet);
    std::string answer = NextPacket(peer);
    if (NumberAt(answer, 0) == kError) return "";
    if (NumberAt(answer, 0) == operation && NumberAt(answer, 2) == number) return answer;
  }
  return "";
}

/// A socket that is connected to one peer. Returns -1 on failure.
int ConnectTo(const sockaddr_in& address) {
  const int peer = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (peer >= 0 &&
      connect(peer, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    close(peer);
    return -1;
  }
  return peer;
}

}  // namespace

TftpServer::TftpServer(fs::path directory, unsigned short port)
    : directory_(std::move(directory)), socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  if (socket_ < 0 ||
      bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    const int error = errno;
    close(socket_);
    throw std::system_error(error, std::generic_category(), "the TFTP server");
  }
}

TftpServer::~TftpServer() {
  close(socket_);
}

void TftpServer::Serve(bool answers) {
  char request[kBlockBytes + 1] = "";
  sockaddr_in address = {};
  socklen_t length = sizeof(address);
  const ssize_t got =
      recvfrom(socket_, request, kBlockBytes, 0, reinterpret_cast<sockaddr*>(&address), &length);
  if (got < static_cast<ssize_t>(kHeaderBytes) || !answers) return;
  const uint16_t operation = NumberAt({request, request + got}, 0);
  const std::string name = fs::path(request + 2).filename();
  const int peer = ConnectTo(address);
  if (peer < 0) return;
  if (name.empty() || name == "." || name == "..")
    SendError(peer, kDenied, "no file name");
  else if (operation == kWrite)
    Receive(peer, name);
  else if (operation == kRead)
    Send(peer, name);
  close(peer);
}

/// Receives a file. It gets its name only when it is complete.
void TftpServer::Receive(int peer, const std::string& name) const {
  const fs::path part = directory_ / ("." + name + ".part");
  std::ofstream file(part, std::ios::binary);
  std::string data;
  uint16_t number = 0;
  do {
    data = Exchange(peer, Packet(kAcknowledge, number), kData, static_cast<uint16_t>(number + 1));
    if (data.empty()) break;
    ++number;
    file.write(data.data() + kHeaderBytes,
               static_cast<std::streamsize>(data.size() - kHeaderBytes));
  } while (file && data.size() == kHeaderBytes + kBlockBytes);
  file.close();
  if (data.empty() || !file) {
    if (!file) SendError(peer, kNoRoom, "cannot be written");
    fs::remove(part);
    return;
  }
  fs::rename(part, directory_ / name);
  SendPacket(peer, Packet(kAcknowledge, number));
}

void TftpServer::Send(int peer, const std::string& name) const {
  std::ifstream file(directory_ / name, std::ios::binary);
  if (!file) return SendError(peer, kNotFound, "file not found");
  std::string block;
  uint16_t number = 0;
  do {
    block.resize(kBlockBytes);
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    block.resize(static_cast<std::size_t>(file.gcount()));
    ++number;
    if (Exchange(peer, Packet(kData, number, block), kAcknowledge, number).empty()) return;
  } while (block.size() == kBlockBytes);
}

}  // namespace network
