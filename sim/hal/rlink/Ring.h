// The bytes of a shared ring buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace sim {

class Ring {
 public:
  explicit Ring(size_t size) : bytes_(size) {}

  size_t Free() const { return bytes_.size() - used_; }
  size_t Used() const { return used_; }

  /// Puts all the data in, or nothing when they find no room.
  bool Put(std::span<const uint8_t> data);
  /// Takes as many bytes as `data` has, or nothing when fewer wait.
  bool Take(std::span<uint8_t> data);
  /// Drops the oldest bytes, or nothing when fewer wait.
  bool Drop(size_t count);

  /// The waiting bytes up to the end of the memory, and those from its beginning on.
  std::span<uint8_t> FirstPiece();
  std::span<uint8_t> SecondPiece();

 private:
  std::vector<uint8_t> bytes_;
  size_t start_ = 0;
  size_t used_ = 0;
};

}  // namespace sim
