#include "Scripted.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <utility>

#include "Util.h"

namespace {

// Tests have threads that wait at once. A fork finds the mutex free.
std::mutex notesMutex;
[[maybe_unused]] const int kForkHandlers = pthread_atfork(
    [] { notesMutex.lock(); }, [] { notesMutex.unlock(); }, [] { notesMutex.unlock(); });
std::vector<unsigned long> waits;
std::vector<std::string> commands;
std::function<void(unsigned long)> waitHook;
std::function<int(const std::string&)> commandHook;
int shellError = 0;

std::string NewReportDirectory() {
  std::string path = testing::TempDir() + "report_XXXXXX";
  if (mkdtemp(path.data()) == nullptr) std::perror("mkdtemp");
  return path;
}

void NoteWait(unsigned long us) {
  {
    const std::lock_guard lock(notesMutex);
    waits.push_back(us);
  }
  if (waitHook) waitHook(us);
}

}  // namespace

extern "C" {

unsigned sleep(unsigned seconds) {
  NoteWait(seconds * 1'000'000UL);
  return 0;
}

int usleep(useconds_t us) {
  NoteWait(us);
  return 0;
}

int system(const char* command) {
  {
    const std::lock_guard lock(notesMutex);
    commands.emplace_back(command);
  }
  errno = shellError;
  if (shellError != 0) return -1;
  return commandHook ? commandHook(command) << 8 : 0;
}
}

namespace scripted {

Run Play(const std::string& input, const std::function<int()>& function) {
  std::FILE* script = std::tmpfile();
  std::fwrite(input.data(), 1, input.size(), script);
  std::rewind(script);
  const int savedInput = dup(0);
  dup2(fileno(script), 0);
  std::clearerr(stdin);
  std::setvbuf(stdin, nullptr, _IONBF, 0);

  const auto before = static_cast<std::ptrdiff_t>(commands.size());
  testing::internal::CaptureStdout();
  const int result = function();
  std::fflush(stdout);
  Run run{
      result, testing::internal::GetCapturedStdout(), {commands.begin() + before, commands.end()}};

  dup2(savedInput, 0);
  close(savedInput);
  std::fclose(script);
  return run;
}

std::vector<unsigned long> Waits() {
  return waits;
}

unsigned long WaitedUs() {
  unsigned long total = 0;
  for (const unsigned long us : waits) total += us;
  return total;
}

std::vector<std::string> Commands() {
  return commands;
}

std::vector<std::string> CommandsOf(const std::function<void()>& function,
                                    const std::string& input) {
  return Play(input, [&] { return function(), 0; }).commands;
}

void OnCommand(std::function<int(const std::string&)> hook) {
  commandHook = std::move(hook);
}

void RefuseShells(int error) {
  shellError = error;
}

void OnWait(std::function<void(unsigned long)> hook) {
  waitHook = std::move(hook);
}

std::string RedirectReport() {
  testing::internal::CaptureStdout();
  char* path = Util::GetTestReportPath();
  testing::internal::GetCapturedStdout();
  // The path lives in the frame's buffer, which is longer than a temporary directory's name.
  const std::string redirected = NewReportDirectory() + "/report.txt";
  std::copy_n(redirected.c_str(), redirected.size() + 1, path);
  return path;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace scripted
