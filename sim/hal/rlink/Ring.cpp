#include "rlink/Ring.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>

#include "core/SharedBoard.h"

namespace sim {

/// Header of the shared memory, followed by the bytes.
struct Ring::Memory {
  size_t size;  // of the bytes
  size_t start;
  size_t used;
  bool released;

  uint8_t* Bytes() { return reinterpret_cast<uint8_t*>(this + 1); }
  size_t Free() const { return size - used; }
};

namespace {

/// The rings that this process has mapped, by handle; guarded by the board's lock.
std::map<uint32_t, std::weak_ptr<Ring>>& MappedRings() {
  static std::map<uint32_t, std::weak_ptr<Ring>> rings;
  return rings;
}

/// The file of a ring; empty if the board has no state file.
std::string FileOf(uint32_t handle) {
  const std::string state = StatePath();
  return state.empty() ? "" : state + "-ring-" + std::to_string(handle);
}

void* Map(size_t bytes, int flags, int file) {
  void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | flags, file, 0);
  return memory == MAP_FAILED ? nullptr : memory;
}

/// Maps zeroed memory in a new file, or anonymous memory if `path` is empty. Null on failure.
void* MapNew(const std::string& path, size_t bytes) {
  if (path.empty()) return Map(bytes, MAP_ANONYMOUS, -1);
  unlink(path.c_str());  // left by an earlier board
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
  if (file < 0) return nullptr;
  void* const memory =
      ftruncate(file, static_cast<off_t>(bytes)) == 0 ? Map(bytes, 0, file) : nullptr;
  close(file);
  return memory;
}

/// Maps a whole file, which must have `atLeast` bytes. Null on failure.
void* MapFile(const std::string& path, size_t atLeast) {
  const int file = path.empty() ? -1 : open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (file < 0) return nullptr;
  struct stat status = {};
  const bool isWhole = fstat(file, &status) == 0 && static_cast<size_t>(status.st_size) >= atLeast;
  void* const memory = isWhole ? Map(static_cast<size_t>(status.st_size), 0, file) : nullptr;
  close(file);
  return memory;
}

}  // namespace

std::shared_ptr<Ring> Ring::Enter(uint32_t handle, Memory* memory) {
  std::shared_ptr<Ring> ring(new Ring(handle, memory));
  MappedRings()[handle] = ring;
  return ring;
}

std::shared_ptr<Ring> Ring::Create(uint32_t handle, size_t size) {
  const BoardLock board;
  auto* const memory = static_cast<Memory*>(MapNew(FileOf(handle), sizeof(Memory) + size));
  if (memory == nullptr) return nullptr;
  memory->size = size;
  return Enter(handle, memory);
}

std::shared_ptr<Ring> Ring::Find(uint32_t handle) {
  const BoardLock board;
  std::shared_ptr<Ring> ring = MappedRings()[handle].lock();
  if (ring == nullptr) {
    auto* const memory = static_cast<Memory*>(MapFile(FileOf(handle), sizeof(Memory)));
    if (memory != nullptr) ring = Enter(handle, memory);
  }
  return ring == nullptr || ring->memory_->released ? nullptr : ring;
}

void Ring::Release() {
  const BoardLock board;
  memory_->released = true;
  if (const std::string file = FileOf(handle_); !file.empty()) unlink(file.c_str());
}

Ring::~Ring() {
  munmap(memory_, sizeof(Memory) + memory_->size);
}

size_t Ring::Free() const {
  const BoardLock board;
  return memory_->Free();
}

size_t Ring::Used() const {
  const BoardLock board;
  return memory_->used;
}

bool Ring::Put(std::span<const uint8_t> data) {
  const BoardLock board;
  if (data.size() > memory_->Free()) return false;
  const size_t end = (memory_->start + memory_->used) % memory_->size;
  const size_t first = std::min<size_t>(data.size(), memory_->size - end);
  std::ranges::copy(data.first(first), memory_->Bytes() + end);
  std::ranges::copy(data.subspan(first), memory_->Bytes());
  memory_->used += data.size();
  return true;
}

bool Ring::Take(std::span<uint8_t> data) {
  const BoardLock board;
  if (data.size() > memory_->used) return false;
  const auto [first, second] = WaitingNow();
  const size_t fromFirst = std::min(data.size(), first.size());
  std::ranges::copy(first.first(fromFirst), data.begin());
  std::ranges::copy(second.first(data.size() - fromFirst), data.subspan(fromFirst).begin());
  DropNow(data.size());
  return true;
}

bool Ring::Drop(size_t count) {
  const BoardLock board;
  if (count > memory_->used) return false;
  DropNow(count);
  return true;
}

void Ring::DropAll() {
  const BoardLock board;
  DropNow(memory_->used);
}

Ring::Pieces Ring::Waiting() {
  const BoardLock board;
  return WaitingNow();
}

Ring::Pieces Ring::WaitingNow() {
  uint8_t* const bytes = memory_->Bytes();
  const size_t first = std::min(memory_->used, memory_->size - memory_->start);
  return {{bytes + memory_->start, first}, {bytes, memory_->used - first}};
}

void Ring::DropNow(size_t count) {
  memory_->start = (memory_->start + count) % memory_->size;
  memory_->used -= count;
}

}  // namespace sim
