#include "OutputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "Problem.h"

namespace runner {
namespace {

/// An open file without a name, which only this process can access; -1 if none can be created in
/// the directory of `path`.
int OpenNameless(const std::string& path) {
  std::string name = path + ".XXXXXX";
  const int fd = mkostemp(name.data(), O_CLOEXEC);
  if (fd >= 0) unlink(name.c_str());
  return fd;
}

}  // namespace

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EAGAIN) {
      // Somebody made it non-blocking; it accepts more after its reader has read.
      pollfd reader = {fd, POLLOUT, 0};
      poll(&reader, 1, -1);
      continue;
    }
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

Spool::Spool(const std::string& path) : fd_(path == "-" ? -1 : OpenNameless(path)) {
  if (fd_ < 0) fd_ = OpenNameless("/tmp/cvntester");
  good_ = fd_ >= 0;
  if (!good_) PrintSystemProblem(path);
}

Spool::~Spool() {
  if (fd_ >= 0) close(fd_);
}

void Spool::Add(std::string_view text) {
  const bool wasGood = good_;
  good_ = good_ && WriteAll(fd_, text);
  if (wasGood && !good_) PrintSystemProblem("results");
}

void Spool::CopyTo(OutputFile& file) {
  good_ = good_ && lseek(fd_, 0, SEEK_SET) == 0;
  char block[65536];
  ssize_t got = 0;
  while (good_ && (got = read(fd_, block, sizeof block)) > 0)
    file.Write({block, static_cast<std::size_t>(got)});
  good_ = good_ && got == 0;
}

}  // namespace runner
