// Small numbers for objects that have an address: links, their buffers, handlers.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>

namespace record {

/// Numbers start at 1; 0 means that there is none. Thread-safe.
class Identities {
 public:
  /// The number of `address`, or 0.
  uint32_t Of(const void* address);
  /// The number of `address`; assigns one if it has none.
  uint32_t OfOrNew(const void* address);
  /// Assigns a new number to `address`, which now belongs to a new object. Does nothing for null.
  void Enter(const void* address);
  /// Assigns `number`, as found in a recording, to `address`.
  void Bind(const void* address, uint32_t number);
  /// The address with this number, or null.
  void* Find(uint32_t number);

  /// Locked during a fork, so that the child finds consistent data.
  std::mutex& Mutex() { return mutex_; }

 private:
  std::mutex mutex_;
  std::map<const void*, uint32_t> numbers_;
  std::map<uint32_t, const void*> addresses_;
  uint32_t last_ = 0;
};

}  // namespace record
