#include "IsolatedTest.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Guard.h"

namespace runner {
namespace {

constexpr int kLookAgainMs = 100;   // after which a killed guard is noticed at the latest
constexpr int kLastOutputMs = 200;  // for output in transit when the test has ended
constexpr int kLastBlocks = 64;     // output after this limit does not come from the test

ResultCell* childResult = nullptr;

void Close(int& fd) {
  if (fd >= 0) close(fd);
  fd = -1;
}

bool IsReadable(int fd, int timeoutMs) {
  pollfd poller = {fd, POLLIN, 0};
  return poll(&poller, 1, timeoutMs) > 0;
}

/// Input is not echoed, and line ends are passed on as the test wrote them.
void MakePlain(int terminal) {
  termios attributes{};
  if (tcgetattr(terminal, &attributes) != 0) return;
  attributes.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  attributes.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  tcsetattr(terminal, TCSANOW, &attributes);
}

/// The test process: creates a new session on the terminal, then runs the test.
[[noreturn]] void BeTest(int slave, ResultCell* result, const std::function<int()>& body) {
  setsid();
  ioctl(slave, TIOCSCTTY, 0);
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(slave, fd);
  close(slave);
  for (const int signal : {SIGINT, SIGTERM, SIGPIPE, SIGCHLD}) std::signal(signal, SIG_DFL);
  std::setvbuf(stdin, nullptr, _IONBF, 0);
  // A crash loses no complete line. The buffer is a new one because the old one keeps its mode.
  static char buffer[BUFSIZ];
  std::setvbuf(stdout, buffer, _IOLBF, sizeof buffer);
  childResult = result;
  LeaveChild(body());
}

}  // namespace

void LeaveChild(int result) {
  std::fflush(nullptr);
  *childResult = {1, result};
  _exit(0);
}

bool OpenTerminal(int& master, int& slave) {
  master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master < 0) return false;
  char name[64];
  if (grantpt(master) == 0 && unlockpt(master) == 0 && ptsname_r(master, name, sizeof name) == 0) {
    slave = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave >= 0) return true;
  }
  const int error = errno;
  Close(master);
  errno = error;
  return false;
}

IsolatedTest::~IsolatedTest() {
  Close(command_);
  Close(report_);
  Close(terminal_);
  if (guard_ > 0) waitpid(guard_, nullptr, 0);
  if (result_ != nullptr) munmap(result_, sizeof *result_);
}

std::string IsolatedTest::Start(const std::function<int()>& body) {
  int slave = -1;
  if (!OpenTerminal(terminal_, slave)) return std::string("no terminal: ") + std::strerror(errno);
  MakePlain(slave);
  int report[2];
  int command[2];
  void* shared =
      mmap(nullptr, sizeof *result_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) return std::string("no memory: ") + std::strerror(errno);
  result_ = static_cast<ResultCell*>(shared);
  if (pipe2(report, O_CLOEXEC) != 0 || pipe2(command, O_CLOEXEC) != 0)
    return std::string("no pipe: ") + std::strerror(errno);
  std::fflush(nullptr);
  guard_ = fork();
  if (guard_ == 0) {
    Close(terminal_);
    close(report[0]);
    close(command[1]);
    Guard(command[0], report[1], slave, [&] { BeTest(slave, result_, body); });
  }
  close(slave);
  close(report[1]);
  close(command[0]);
  report_ = report[0];
  command_ = command[1];
  fcntl(terminal_, F_SETFL, O_RDWR | O_NONBLOCK);
  return guard_ < 0 ? std::string("no process: ") + std::strerror(errno) : "";
}

bool IsolatedTest::Wait(int timeoutMs, std::string& output) {
  if (ended_) return false;
  pollfd pollers[] = {{terminal_, POLLIN, 0}, {report_, POLLIN, 0}};
  const int ready = poll(pollers, 2, std::min(timeoutMs, kLookAgainMs));
  if (ready == 0) NoticeLostGuard();
  if (ready > 0 && pollers[0].revents != 0 && !ReadTerminal(output)) {
    // The test closed its terminal; only its end remains to be reported.
    if (pollers[1].revents == 0 && !IsReadable(report_, kLookAgainMs)) NoticeLostGuard();
    pollers[1].revents = POLLIN;
  }
  if (ready > 0 && pollers[1].revents != 0 && IsReadable(report_, 0)) ReadReport();
  if (!ended_) return true;
  for (int i = 0; i < kLastBlocks && IsReadable(terminal_, kLastOutputMs); ++i) {
    if (!ReadTerminal(output)) break;
  }
  return false;
}

/// False if no more output can follow.
bool IsolatedTest::ReadTerminal(std::string& output) {
  char block[16384];
  const ssize_t got = read(terminal_, block, sizeof block);
  if (got > 0) output.append(block, static_cast<std::size_t>(got));
  return got > 0 || (got < 0 && (errno == EAGAIN || errno == EINTR));
}

void IsolatedTest::ReadReport() {
  Report message{};
  const ssize_t got = read(report_, &message, sizeof message);
  if (got != sizeof message) {
    NoticeLostGuard();
    return;
  }
  // A test that was killed after it had reported its result did not end normally.
  const int status = message.value;
  if (message.kind == Report::kNotStarted) {
    end_ = {ChildEnd::kNotStarted, message.value, 0};
  } else if (WIFSIGNALED(status)) {
    end_ = {ChildEnd::kSignalled, WTERMSIG(status), 0};
  } else if (result_->told != 0) {
    end_ = {ChildEnd::kReturned, result_->value, 0};
  } else {
    end_ = {ChildEnd::kExited, WEXITSTATUS(status), 0};
  }
  end_.leftChildren = message.leftChildren;
  ended_ = true;
  waitpid(guard_, nullptr, 0);
  guard_ = -1;
}

/// A guard that ended without a report was killed by its test.
void IsolatedTest::NoticeLostGuard() {
  int status = 0;
  if (guard_ < 0 || waitpid(guard_, &status, WNOHANG) != guard_) return;
  guard_ = -1;
  ended_ = true;
  end_ = {ChildEnd::kGuardLost, WIFSIGNALED(status) ? WTERMSIG(status) : 0, 0};
  // This process adopted the processes that the guard would have ended.
  EndChildren();
}

void IsolatedTest::Type(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = write(terminal_, bytes.data(), bytes.size());
    if (written <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void IsolatedTest::Stop() {
  Close(command_);
}

}  // namespace runner
