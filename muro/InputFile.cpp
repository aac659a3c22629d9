#include "InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace {

constexpr int kNoRegularFile = ENODEV;

std::string Problem(const std::string& path) {
  return path + ": " + (errno == kNoRegularFile ? "not a regular file" : std::strerror(errno));
}

}  // namespace

int OpenInputFile(const std::string& path) {
  // Without waiting, a pipe opens immediately and can be examined.
  const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  struct stat status = {};
  if (fd < 0 || (fstat(fd, &status) == 0 && S_ISREG(status.st_mode))) return fd;
  close(fd);
  errno = S_ISDIR(status.st_mode) ? EISDIR : kNoRegularFile;
  return -1;
}

bool IsInputFile(const std::string& path) {
  const int fd = OpenInputFile(path);
  if (fd >= 0) close(fd);
  return fd >= 0;
}

std::string ReadInputFile(const std::string& path, std::size_t limit, std::string& text) {
  text.clear();
  const int fd = OpenInputFile(path);
  if (fd < 0) return Problem(path);
  std::array<char, 16384> block;
  ssize_t got = 1;
  while (got != 0 && text.size() < limit) {
    got = read(fd, block.data(), std::min(block.size(), limit - text.size()));
    if (got < 0 && errno != EINTR) break;
    text.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  }
  std::string problem = got < 0 ? Problem(path) : "";
  close(fd);
  return problem;
}
