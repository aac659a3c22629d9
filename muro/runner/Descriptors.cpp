#include "Descriptors.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <vector>

namespace runner {
namespace {

constexpr int kLastWithoutProc = 1023;

std::optional<std::vector<int>> foreign;

bool IsOpen(int fd) {
  return fcntl(fd, F_GETFD) != -1;
}

/// All open descriptors except the standard streams.
std::vector<int> OpenDescriptors() {
  std::vector<int> open;
  if (DIR* directory = opendir("/proc/self/fd")) {
    while (const dirent* entry = readdir(directory)) {
      const int fd = std::atoi(entry->d_name);
      if (fd > STDERR_FILENO && fd != dirfd(directory)) open.push_back(fd);
    }
    closedir(directory);
    return open;
  }
  for (int fd = STDERR_FILENO + 1; fd <= kLastWithoutProc; ++fd) {
    if (IsOpen(fd)) open.push_back(fd);
  }
  return open;
}

}  // namespace

void OpenStandardStreams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    // `open` returns the lowest free number, which is this one.
    if (!IsOpen(fd)) open("/dev/null", O_RDWR);
  }
}

void NoteForeignDescriptors() {
  foreign = OpenDescriptors();
}

void CloseDescriptorsOfRunner(std::initializer_list<int> kept) {
  if (!foreign) return;
  for (const int fd : OpenDescriptors()) {
    if (std::ranges::find(*foreign, fd) == foreign->end() &&
        std::ranges::find(kept, fd) == kept.end())
      close(fd);
  }
}

}  // namespace runner
