// The bytes of a ring buffer, in memory that all processes of the board share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>

namespace sim {

/// Every member function locks the board, so that its changes are atomic for all processes.
class Ring {
 public:
  /// Creates the ring of a new buffer; null if out of memory. Processes that share the board's
  /// state file find it by its handle; on any board, so do processes that are forked later.
  static std::shared_ptr<Ring> Create(uint32_t handle, size_t size);

  /// The ring of a buffer made by any process; null if it does not exist or was released.
  static std::shared_ptr<Ring> Find(uint32_t handle);

  /// Removes the ring: Find no longer returns it in any process.
  void Release();

  ~Ring();
  Ring(const Ring&) = delete;
  Ring& operator=(const Ring&) = delete;

  size_t Free() const;
  size_t Used() const;

  /// Appends all the data; if there is not enough room, appends nothing and returns false.
  bool Put(std::span<const uint8_t> data);
  /// Fills `data` with the oldest bytes and removes them; false if fewer are waiting.
  bool Take(std::span<uint8_t> data);
  /// Drops the oldest bytes; if fewer are waiting, drops nothing and returns false.
  bool Drop(size_t count);
  void DropAll();

  /// The waiting bytes up to the end of the memory, and those that continue at its beginning.
  using Pieces = std::pair<std::span<uint8_t>, std::span<uint8_t>>;
  Pieces Waiting();

 private:
  struct Memory;

  Ring(uint32_t handle, Memory* memory) : handle_(handle), memory_(memory) {}
  static std::shared_ptr<Ring> Enter(uint32_t handle, Memory* memory);
  Pieces WaitingNow();
  void DropNow(size_t count);

  const uint32_t handle_;
  Memory* const memory_;
};

}  // namespace sim
