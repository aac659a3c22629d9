#include "LinkMemory.h"

#include <sys/mman.h>

namespace {

constexpr size_t kBytes = 4096;

uint32_t Address(const void* p) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(p));
}

/// One page at `wanted`, or null if the address is taken or too high for a parameter.
void* MapAt(uintptr_t wanted) {
  void* const got = mmap(reinterpret_cast<void*>(wanted), kBytes, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (got == MAP_FAILED) return nullptr;
  if (reinterpret_cast<uintptr_t>(got) <= UINT32_MAX - kBytes) return got;
  munmap(got, kBytes);
  return nullptr;
}

}  // namespace

LinkMemory::LinkMemory() {
  constexpr uintptr_t kLowest = 0x10000000;
  constexpr uintptr_t kHighest = 0x70000000;
  constexpr uintptr_t kStep = 0x100000;
  for (uintptr_t wanted = kLowest; words_ == nullptr && wanted < kHighest; wanted += kStep) {
    words_ = static_cast<uint32_t*>(MapAt(wanted));
  }
}

LinkMemory::~LinkMemory() {
  if (words_ != nullptr) munmap(words_, kBytes);
}

RLNK_CMD_PARAM LinkMemory::Param(uint32_t offset, uint32_t bytes) const {
  return {Address(words_) + offset, bytes};
}
