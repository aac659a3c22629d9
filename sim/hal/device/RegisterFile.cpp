// The driver of the board's register file. The file is a pipe that this process reads, so that
// no write is lost. To read a register, a program writes "> PIPE", the name of a pipe that it keeps
// open, and receives the value there in its turn; the board's own `cat` does so.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "core/SharedBoard.h"
#include "device/BroadcastClock.h"

namespace sim {
namespace {

constexpr std::string_view kReadRequest = "> ";

// Does not wait: an answer that cannot be written immediately has no reader.
void Answer(const std::string& pipe, const std::string& text) {
  const int fd = open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  [[maybe_unused]] const ssize_t written = write(fd, text.data(), text.size());
  close(fd);
}

void ServeLine(const std::string& line) {
  if (line.starts_with(kReadRequest)) {
    Answer(line.substr(kReadRequest.size()), ReadRegisterFile(*BoardLock()));
  } else {
    WriteRegisterFile(*BoardLock(), line);
  }
}

// The pipe is also open for writing here, so reading never reaches an end of file.
void Serve(int pipe) {
  std::string line;
  char block[4096];
  for (;;) {
    const ssize_t got = read(pipe, block, sizeof(block));
    for (const char c : std::string_view(block, got > 0 ? static_cast<size_t>(got) : 0)) {
      if (c != '\n') {
        line += c;
      } else {
        ServeLine(line);
        line.clear();
      }
    }
  }
}

// Whether another program on the board already serves the file.
bool IsServed(const char* path) {
  struct stat status = {};
  if (stat(path, &status) != 0 || !S_ISFIFO(status.st_mode)) return false;
  const int fd = open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd >= 0) close(fd);
  return fd >= 0;
}

// The pipe replaces the file, or a pipe whose process is gone, in one step. Programs that start at
// the same time make one each, and the last one remains.
int MakePipe(const std::string& path) {
  const std::string fresh = path + ".new" + std::to_string(getpid());
  unlink(fresh.c_str());
  const int fd = mkfifo(fresh.c_str(), 0666) == 0 ? open(fresh.c_str(), O_RDWR | O_CLOEXEC) : -1;
  if (fd < 0 || rename(fresh.c_str(), path.c_str()) != 0) {
    throw std::runtime_error(path + ": " + std::strerror(errno));
  }
  return fd;
}

}  // namespace

void ServeRegisterFile() {
  const char* path = std::getenv("CVNSIM_REGISTER");
  if (path != nullptr && !IsServed(path)) std::thread(Serve, MakePipe(path)).detach();
}

}  // namespace sim
