// A TFTP server (RFC 1350): files that are sent to it land in a directory, files there can be got.
#pragma once

#include <filesystem>
#include <string>

namespace network {

class TftpServer {
 public:
  /// Binds the port on all addresses. Throws std::system_error.
  TftpServer(std::filesystem::path directory, unsigned short port);
  ~TftpServer();
  TftpServer(const TftpServer&) = delete;
  TftpServer& operator=(const TftpServer&) = delete;

  /// To be polled: readable when a request is there.
  int Socket() const { return socket_; }

  /// Takes a request and does its whole transfer, or drops it when `answers` is false.
  void Serve(bool answers);

 private:
  void Receive(int peer, const std::string& name) const;
  void Send(int peer, const std::string& name) const;

  const std::filesystem::path directory_;
  int socket_;
};

}  // namespace network
