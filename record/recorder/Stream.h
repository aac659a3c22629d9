// The events of one thread: a file of packets, written through a shared mapping, so that every
// event is in the file as soon as it is written, whatever happens to the process.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "interface/Format.h"

namespace record {

/// The time of an event, in ns.
uint64_t MonotonicNs();

class Stream {
 public:
  /// Nothing is opened before the first event. `directory` must outlive the stream.
  explicit Stream(const std::string& directory) : directory_(directory) {}
  ~Stream();
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  /// Writes one event: `encode(memory, room)` returns how many bytes it needs, and is called again
  /// if there was not enough room. Returns 0, or the error that ended the stream.
  template <typename Encode>
  int Write(uint16_t event, uint64_t ns, Encode encode) {
    for (;;) {
      const bool hasRoom = size_ - used_ >= kEventHeaderBytes;
      uint8_t none = 0;  // without room, only the size is asked for
      uint8_t* const memory = hasRoom ? packet_ + used_ + kEventHeaderBytes : &none;
      const size_t room = hasRoom ? size_ - used_ - kEventHeaderBytes : 0;
      const size_t size = encode(memory, room);
      if (hasRoom && size <= room) {
        Commit(event, ns, size);
        return 0;
      }
      if (const int error = NextPacket(ns, kEventHeaderBytes + size)) return error;
    }
  }

  /// Leaves the file to the parent: called in a forked child.
  void Abandon();

 private:
  void Commit(uint16_t event, uint64_t ns, size_t size);
  int NextPacket(uint64_t ns, size_t needed);
  int Open();
  void ClosePacket();
  PacketHeader& Header() { return *static_cast<PacketHeader*>(static_cast<void*>(packet_)); }

  const std::string& directory_;
  uint8_t* packet_ = nullptr;
  size_t used_ = 0;
  size_t size_ = 0;
  int fd_ = -1;
  off_t fileBytes_ = 0;
};

}  // namespace record
