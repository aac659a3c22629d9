#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

#include "interface/Codec.h"

namespace record {
namespace {

constexpr size_t kPageBytes = 4096;  // smallest page size: memory ends only at such boundaries

}  // namespace

size_t CopyThroughPipe(uint8_t* to, const void* from, size_t size) {
  int pipe[2];
  if (pipe2(pipe, O_CLOEXEC) != 0) return 0;
  const auto* const bytes = static_cast<const uint8_t*>(from);
  size_t copied = 0;
  while (copied < size) {
    const size_t inPage = (reinterpret_cast<uintptr_t>(bytes) + copied) % kPageBytes;
    const size_t wanted = std::min(size - copied, kPageBytes - inPage);
    const ssize_t written = write(pipe[1], bytes + copied, wanted);
    if (written <= 0 || read(pipe[0], to + copied, static_cast<size_t>(written)) != written) break;
    copied += static_cast<size_t>(written);
  }
  close(pipe[0]);
  close(pipe[1]);
  return copied;
}

size_t CopyReadable(uint8_t* to, const void* from, size_t size) {
  if (size == 0) return 0;
  const iovec target = {to, size};
  const iovec source = {const_cast<void*>(from), size};
  const ssize_t copied = process_vm_readv(getpid(), &target, 1, &source, 1, 0);
  if (copied >= 0) return static_cast<size_t>(copied);
  return errno == ENOSYS || errno == EPERM ? CopyThroughPipe(to, from, size) : 0;
}

}  // namespace record
