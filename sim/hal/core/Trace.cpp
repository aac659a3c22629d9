#include "core/Trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <stdexcept>

namespace sim {
namespace {

constexpr size_t kKeptLines = 8192;

int traceFd = -1;

// Never destroyed: HAL calls may come from destructors at the end of the process.
std::deque<std::string>& Kept() {
  static auto& lines = *new std::deque<std::string>;
  return lines;
}

void Keep(const std::string& line) {
  Kept().push_back(line);
  if (Kept().size() > kKeptLines) Kept().pop_front();
}

}  // namespace

void OpenTraceFile() {
  const char* path = std::getenv("CVNSIM_TRACE");
  if (path == nullptr) return;
  traceFd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (traceFd < 0) throw std::runtime_error(std::string(path) + ": " + std::strerror(errno));
}

void NoteInTraceOf(const std::string& path) {
  if (traceFd >= 0) close(traceFd);
  traceFd = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK);
}

void Note(const std::string& line) {
  if (traceFd < 0) {
    Keep(line);
    return;
  }
  const std::string bytes = line + '\n';
  // If the disk is full, the line is lost, like a driver's log; the board continues.
  [[maybe_unused]] const ssize_t written = write(traceFd, bytes.data(), bytes.size());
}

std::vector<std::string> NotedLines() {
  return {Kept().begin(), Kept().end()};
}

void ForgetNotedLines() {
  Kept().clear();
}

}  // namespace sim
