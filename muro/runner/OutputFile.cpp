#include "OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Problem.h"

namespace runner {

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

OutputFile::OutputFile(const std::string& path, int standardOutput)
    : fd_(path == "-" ? standardOutput
                      : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)),
      owned_(path != "-"),
      good_(fd_ >= 0) {
  if (!good_) PrintSystemProblem(path);
}

OutputFile::~OutputFile() {
  if (owned_ && fd_ >= 0) close(fd_);
}

void OutputFile::Write(std::string_view text) {
  const bool wasGood = good_;
  good_ = good_ && WriteAll(fd_, text);
  if (wasGood && !good_) PrintSystemProblem("results");
}

}  // namespace runner
