#include "Scripted.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <sstream>
#include <utility>

#include "Util.h"

namespace {

// Tests have threads that wait concurrently. In a forked child the mutex is free.
std::mutex notesMutex;
[[maybe_unused]] const int kForkHandlers = pthread_atfork(
    [] { notesMutex.lock(); }, [] { notesMutex.unlock(); }, [] { notesMutex.unlock(); });
std::vector<unsigned long> waits;
std::vector<std::string> commands;
std::function<void(unsigned long)> waitHook;
std::function<int(const std::string&)> commandHook;
int shellError = 0;
std::optional<time_t> stoppedAt;

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

/// Makes `input` the standard input. Returns the file that contains it.
std::FILE* TakeInputFrom(const std::string& input) {
  std::FILE* script = std::tmpfile();
  std::fwrite(input.data(), 1, input.size(), script);
  std::rewind(script);
  dup2(fileno(script), 0);
  std::clearerr(stdin);
  std::setvbuf(stdin, nullptr, _IONBF, 0);
  return script;
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

// The C library's function cannot be called, because this one has its name.
time_t time(time_t* now) noexcept {
  timespec clock{};
  clock_gettime(CLOCK_REALTIME, &clock);
  const time_t seconds = stoppedAt.value_or(clock.tv_sec);
  if (now != nullptr) *now = seconds;
  return seconds;
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
  const int savedInput = dup(0);
  std::FILE* script = TakeInputFrom(input);
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

Run PlayApart(const std::string& input, const std::function<int()>& function) {
  std::FILE* output = std::tmpfile();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(fileno(output), STDOUT_FILENO);
    TakeInputFrom(input);
    const int result = function();
    std::fflush(stdout);
    _exit(result);
  }
  int status = -1;
  waitpid(child, &status, 0);
  Run run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, "", {}};
  std::rewind(output);
  for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output))
    run.output.push_back(static_cast<char>(c));
  std::fclose(output);
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

void StopClock(std::time_t now) {
  stoppedAt = now;
}

std::string RedirectReport() {
  testing::internal::CaptureStdout();
  char* path = Util::GetTestReportPath();
  testing::internal::GetCapturedStdout();
  // The path is stored in the frame's buffer, which is longer than a temporary directory's name.
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
