#include <sys/mman.h>

#include "interface/Decoder.h"

namespace record {
namespace {

constexpr uintptr_t kPageBytes = 4096;

}  // namespace

Arena::~Arena() {
  for (const Mapping& mapping : mappings_) munmap(mapping.memory, mapping.bytes);
}

void* Arena::Allocate(size_t bytes) {
  const size_t units = bytes / sizeof(std::max_align_t) + 1;
  return blocks_.emplace_back(std::make_unique<std::max_align_t[]>(units)).get();
}

void* Arena::MapAt(uintptr_t wanted, size_t bytes, int flags) {
  const uintptr_t page = wanted / kPageBytes * kPageBytes;
  const size_t whole = wanted - page + bytes;
  void* const got = mmap(reinterpret_cast<void*>(page), whole, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
  if (got == MAP_FAILED) return nullptr;
  auto* const memory = static_cast<uint8_t*>(got);
  if (reinterpret_cast<uintptr_t>(memory) > UINT32_MAX - whole) {
    munmap(memory, whole);
    return nullptr;
  }
  mappings_.push_back({memory, whole});
  return memory + (wanted - page);
}

void* Arena::AllocateLow(size_t bytes, uint32_t wanted) {
  for (const Mapping& mapping : mappings_) {
    const uintptr_t begin = reinterpret_cast<uintptr_t>(mapping.memory);
    const uintptr_t end = (begin + mapping.bytes + kPageBytes - 1) / kPageBytes * kPageBytes;
    if (wanted >= begin && wanted + bytes <= end) return mapping.memory + (wanted - begin);
  }
  if (wanted >= kPageBytes) {
    if (void* const memory = MapAt(wanted, bytes, MAP_FIXED_NOREPLACE)) return memory;
  }
  constexpr uintptr_t kLowest = 0x20000000, kHighest = 0xE0000000, kStep = 0x1000000;
  for (uintptr_t start = kLowest; start < kHighest; start += kStep) {
    if (void* const memory = MapAt(start, bytes, 0)) return memory;
  }
  return nullptr;
}

}  // namespace record
