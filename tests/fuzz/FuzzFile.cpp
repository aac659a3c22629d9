#include "FuzzFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace fuzz {

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s (last error: %s)\n", what, std::strerror(errno));
  std::abort();
}

std::string_view NextFile(std::string_view& text) {
  constexpr std::string_view kSeparator = "--\n";
  const std::size_t end = text.find(kSeparator);
  const std::string_view file = text.substr(0, end);
  if (end != std::string_view::npos) text.remove_prefix(end + kSeparator.size());
  return file;
}

void Plant(const char* fault, bool holds) {
  static const char* const kPlanted = std::getenv("CVN_PLANT");
  if (holds && kPlanted != nullptr && std::strcmp(kPlanted, fault) == 0) Require(false, fault);
}

MemoryFile::MemoryFile(std::string_view bytes)
    : file_(memfd_create("fuzz", MFD_CLOEXEC)), path_("/proc/self/fd/" + std::to_string(file_)) {
  Require(file_ >= 0, "memfd_create");
  Require(write(file_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write");
}

MemoryFile::~MemoryFile() {
  close(file_);
}

std::string NewDirectory() {
  struct stat status {};
  std::string name = stat("/dev/shm", &status) == 0 ? "/dev/shm/fuzz-XXXXXX" : "/tmp/fuzz-XXXXXX";
  Require(mkdtemp(name.data()) != nullptr, "mkdtemp");
  return name;
}

void WriteFile(const std::string& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

void BeQuiet() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  Require(nowhere >= 0 && dup2(nowhere, STDOUT_FILENO) >= 0, "/dev/null");
}

}  // namespace fuzz
