// The bytes of a ring buffer, in memory that all processes of the board share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>

namespace sim {

/// Every member holds the board while it works, so that what it does is whole for all processes.
class Ring {
 public:
  /// Makes the ring of a new buffer; null without memory. Processes that share the
  /// board's state file find it by its handle, on any board those that are forked later.
  static std::shared_ptr<Ring> Create(uint32_t handle, size_t size);

  /// The ring of a buffer made by any process; null if it does not exist or was released.
  static std::shared_ptr<Ring> Find(uint32_t handle);

  /// Lets nobody find the ring any more.
  void Release();

  ~Ring();
  Ring(const Ring&) = delete;
  Ring& operator=(const Ring&) = delete;

  size_t Free() const;
  size_t Used() const;

  /// Puts all the data in, or nothing when they find no room.
  bool Put(std::span<const uint8_t> data);
  /// Takes as many bytes as `data` has, or nothing when fewer wait.
  bool Take(std::span<uint8_t> data);
  /// Drops the oldest bytes, or nothing when fewer wait.
  bool Drop(size_t count);
  void DropAll();

  /// The waiting bytes up to the end of the memory, and those from its beginning on.
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
