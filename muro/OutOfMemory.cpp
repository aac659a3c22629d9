#include "OutOfMemory.h"

#include <unistd.h>

#include <cstdio>
#include <new>
#include <string_view>

#include "ConsoleInput.h"

namespace {

constexpr int kStatus = 99;
// Reserve for writing the report's line when all other memory is in use.
constexpr std::size_t kReserveBytes = std::size_t{256} << 10;

char* reserve = nullptr;

[[noreturn]] void EndAtOnce() {
  _exit(kStatus);
}

[[noreturn]] void End() {
  static constexpr std::string_view kLine = "cvntester: out of memory\n";
  std::set_new_handler(EndAtOnce);
  delete[] reserve;
  std::fflush(stdout);
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kLine.data(), kLine.size());
  console::GiveUpTest();
  std::fflush(stdout);
  EndAtOnce();
}

}  // namespace

void EndWhenOutOfMemory() {
  reserve = new char[kReserveBytes];
  std::set_new_handler(End);
}
