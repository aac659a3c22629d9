// Small numbers for what has an address: links, their buffers, handlers.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>

namespace record {

/// Numbers from 1 on; 0 is what has none. Safe from several threads.
class Identities {
 public:
  /// The number of `address`, or 0.
  uint32_t Of(const void* address);
  /// The number of `address`, which gets one when it has none.
  uint32_t OfOrNew(const void* address);
  /// A new number for `address`, which stands for something new. Nothing for null.
  void Enter(const void* address);
  /// Gives `address` this number, as a recording has it.
  void Bind(const void* address, uint32_t number);
  /// What has this number, or null.
  void* Find(uint32_t number);

  /// Held over a fork, so that the child finds everything in order.
  std::mutex& Mutex() { return mutex_; }

 private:
  std::mutex mutex_;
  std::map<const void*, uint32_t> numbers_;
  std::map<uint32_t, const void*> addresses_;
  uint32_t last_ = 0;
};

}  // namespace record
