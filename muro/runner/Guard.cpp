#include "Guard.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <fstream>

#include "Descriptors.h"

namespace runner {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPoliteTime(1000);  // from SIGTERM to SIGKILL
constexpr int kLastRounds = 1000;                       // of one millisecond each

void Nothing(int) {}

void Signal(pid_t test, int signal) {
  // The group exists as soon as the test has its session.
  if (kill(-test, signal) != 0) kill(test, signal);
}

/// Signals every child that the kernel lists.
void SignalChildren(int signal) {
  std::ifstream children("/proc/thread-self/children");
  for (pid_t child = 0; children >> child;) kill(child, signal);
}

/// True for a process that would have continued to run: it was killed here, or its terminal was
/// hung up when the test, its session leader, ended.
bool WasEnded(int status) {
  return WIFSIGNALED(status) && (WTERMSIG(status) == SIGKILL || WTERMSIG(status) == SIGHUP);
}

/// Waits until the test has ended; ends it when `command` is closed. Returns its wait status.
/// SIGCHLD is blocked except in this function.
int AwaitTest(pid_t test, int command, const sigset_t& waitingMask) {
  int status = 0;
  Clock::time_point killAt = Clock::time_point::max();
  bool asked = false;
  while (waitpid(test, &status, WNOHANG) == 0) {
    pollfd poller = {asked ? -1 : command, POLLIN, 0};
    const timespec shortTime = {0, 50'000'000};
    if (ppoll(&poller, 1, asked ? &shortTime : nullptr, &waitingMask) > 0) {
      asked = true;
      killAt = Clock::now() + kPoliteTime;
      Signal(test, SIGTERM);
    }
    if (Clock::now() >= killAt) Signal(test, SIGKILL);
  }
  return status;
}

void SendReport(int fd, const Report& report) {
  [[maybe_unused]] const ssize_t written = write(fd, &report, sizeof report);
}

}  // namespace

void AdoptOrphans() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

int EndChildren() {
  int killed = 0;
  int status = 0;
  for (int round = 0; round < kLastRounds; ++round) {
    pid_t ended = 0;
    while ((ended = waitpid(-1, &status, WNOHANG)) > 0) {
      if (WasEnded(status)) ++killed;
    }
    if (ended < 0) return killed;
    SignalChildren(SIGKILL);
    usleep(1000);
  }
  return killed;
}

void Guard(int command, int report, int terminal, const std::function<void()>& test) {
  CloseDescriptorsOfRunner({command, report, terminal});
  setsid();
  AdoptOrphans();
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_IGN);
  sigset_t childEnded;
  sigset_t normal;
  sigemptyset(&childEnded);
  sigaddset(&childEnded, SIGCHLD);
  std::signal(SIGCHLD, Nothing);
  sigprocmask(SIG_BLOCK, &childEnded, &normal);

  const pid_t guard = getpid();
  const pid_t child = fork();
  if (child == 0) {
    close(command);
    close(report);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != guard) _exit(1);
    sigprocmask(SIG_SETMASK, &normal, nullptr);
    std::signal(SIGHUP, SIG_DFL);
    test();
  }
  if (child < 0) {
    SendReport(report, {Report::kNotStarted, errno, 0});
    _exit(1);
  }
  close(terminal);
  const int status = AwaitTest(child, command, normal);
  kill(-child, SIGKILL);
  SendReport(report, {Report::kStatus, status, EndChildren()});
  _exit(0);
}

}  // namespace runner
