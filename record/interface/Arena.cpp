#include <sys/mman.h>

#include "interface/Decoder.h"

namespace record {

Arena::~Arena() {
  for (const Mapping& mapping : mappings_) munmap(mapping.memory, mapping.bytes);
}

void* Arena::Allocate(size_t bytes) {
  const size_t units = bytes / sizeof(std::max_align_t) + 1;
  return blocks_.emplace_back(std::make_unique<std::max_align_t[]>(units)).get();
}

void* Arena::AllocateLow(size_t bytes) {
  constexpr uintptr_t kLowest = 0x20000000, kHighest = 0xE0000000, kStep = 0x1000000;
  for (uintptr_t wanted = kLowest; wanted < kHighest; wanted += kStep) {
    void* const memory = mmap(reinterpret_cast<void*>(wanted), bytes, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    if (reinterpret_cast<uintptr_t>(memory) + bytes <= UINT32_MAX) {
      mappings_.push_back({memory, bytes});
      return memory;
    }
    munmap(memory, bytes);
  }
  return nullptr;
}

}  // namespace record
