#include "recorder/Stream.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>

namespace record {
namespace {

// The first packet is small: most processes forked by a run make few calls.
constexpr size_t kFirstPacketBytes = 64 << 10;
constexpr size_t kPacketBytes = 256 << 10;
constexpr size_t kPageBytes = 64 << 10;  // largest page size of our architectures

size_t WholePages(size_t bytes) {
  return (bytes + kPageBytes - 1) / kPageBytes * kPageBytes;
}

}  // namespace

uint64_t MonotonicNs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

// Truncated after its last event, the file is shorter and equivalent.
Stream::~Stream() {
  if (packet_ == nullptr) return;
  const off_t end = fileBytes_ - static_cast<off_t>(size_) + static_cast<off_t>(used_);
  if (ftruncate(fd_, end) == 0) Header().packetBits = used_ * 8;
  ClosePacket();
  close(fd_);
}

void Stream::Abandon() {
  ClosePacket();
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
  fileBytes_ = 0;
}

void Stream::ClosePacket() {
  if (packet_ != nullptr) munmap(packet_, size_);
  packet_ = nullptr;
  used_ = size_ = 0;
}

void Stream::Commit(uint16_t event, uint64_t ns, size_t size) {
  uint8_t* const at = packet_ + used_;
  std::memcpy(at, &event, sizeof event);
  std::memcpy(at + sizeof event, &ns, sizeof ns);
  used_ += kEventHeaderBytes + size;
  // From here on the event is valid, also for readers of a killed process's file.
  std::atomic_ref(Header().contentBits).store(used_ * 8, std::memory_order_release);
}

int Stream::Open() {
  for (unsigned number = 0;; ++number) {
    const std::string path = directory_ + "/stream-" + std::to_string(getpid()) + '-' +
                             std::to_string(gettid()) + '-' + std::to_string(number);
    fd_ = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd_ >= 0) return 0;
    if (errno != EEXIST) return errno;
  }
}

// The space is reserved first: a write to a mapping without disk space kills the process.
int Stream::NextPacket(uint64_t ns, size_t needed) {
  ClosePacket();
  if (fd_ < 0) {
    if (const int error = Open()) return error;
  }
  const size_t usual = fileBytes_ == 0 ? kFirstPacketBytes : kPacketBytes;
  const size_t size = WholePages(std::max(usual, sizeof(PacketHeader) + needed));
  if (const int error = posix_fallocate(fd_, fileBytes_, static_cast<off_t>(size))) {
    [[maybe_unused]] const int kept = ftruncate(fd_, fileBytes_);
    return error;
  }
  // A large packet is for a buffer that may be shorter than its caller claims.
  const int populate = size <= kPacketBytes ? MAP_POPULATE : 0;
  void* const memory =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | populate, fd_, fileBytes_);
  if (memory == MAP_FAILED) return errno;
  fileBytes_ += static_cast<off_t>(size);
  packet_ = static_cast<uint8_t*>(memory);
  size_ = size;
  used_ = sizeof(PacketHeader);
  const PacketHeader header = {kPacketMagic,
                               static_cast<uint32_t>(getpid()),
                               static_cast<uint32_t>(gettid()),
                               static_cast<uint32_t>(getppid()),
                               ns,
                               used_ * 8,
                               size_ * 8};
  std::memcpy(packet_, &header, sizeof header);
  return 0;
}

}  // namespace record
