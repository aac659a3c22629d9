// A TFTP server (RFC 1350): stores the files sent to it in a directory, and sends files from there.
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

  /// For polling: readable when a request has arrived.
  int Socket() const { return socket_; }

  /// Receives a request and does its whole transfer, or drops it if `answers` is false.
  void Serve(bool answers);

 private:
  void Receive(int peer, const std::string& name) const;
  void Send(int peer, const std::string& name) const;

  const std::filesystem::path directory_;
  int socket_;
};

}  // namespace network
