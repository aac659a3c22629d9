#include "NightBoard.h"

#include <sys/wait.h>
#include <unistd.h>

#include <iostream>

namespace endurance {
namespace {

namespace fs = std::filesystem;

constexpr double kTimeScale = 100;
constexpr int kEndLimitMs = 60000;
constexpr char kReports[] = "/tmp/var/log";

/// Reaps processes that this program has adopted and that have ended; `own` is waited for
/// elsewhere.
void ReapAdopted(pid_t own) {
  siginfo_t ended{};
  while (waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid > 0 &&
         ended.si_pid != own) {
    waitpid(ended.si_pid, nullptr, 0);
    ended = {};
  }
}

/// The number of adopted processes that remain; they may end a moment after their board.
std::size_t LeftBehind() {
  constexpr int kLooks = 200;
  constexpr useconds_t kPauseUs = 10'000;
  std::size_t left = 0;
  for (int look = 0; look < kLooks; ++look) {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    left = CountDescendants(getpid());
    if (left == 0) return 0;
    usleep(kPauseUs);
  }
  return left;
}

}  // namespace

bool NightBoard::Prepare() {
  SetUp();
  if (!Sandbox().empty() && Sandbox() != "none") return true;
  std::cerr << "endurance: no sandbox for the simulated board\n";
  return false;
}

test::Pty& NightBoard::StartHarness(const std::vector<std::string>& arguments) {
  std::error_code none;
  for (const auto& report : fs::directory_iterator(OnBoard(kReports), none))
    fs::remove(report.path());
  // At exit, the leak check reads /proc entries that the board does not have.
  pty_ = &Start({.launcher = {"--setenv", "ASAN_OPTIONS=detect_leaks=0"},
                 .arguments = arguments,
                 .timeScale = kTimeScale});
  harness_ = 0;
  return *pty_;
}

Sample NightBoard::LookAtHarness() {
  if (harness_ == 0) harness_ = FindProgram(pty_->Pid(), "cvntester");
  ReapAdopted(pty_->Pid());
  return Look(harness_, OnBoard("/tmp"));
}

std::set<std::string> NightBoard::TemporaryFiles() const {
  std::set<std::string> files;
  std::error_code none;
  for (const auto& entry : fs::recursive_directory_iterator(OnBoard("/tmp"), none)) {
    const bool isReport = entry.path().parent_path() == OnBoard(kReports);
    if (!entry.is_directory() && !isReport) files.insert(entry.path());
  }
  return files;
}

std::string NightBoard::End(test::Pty& pty, int status) const {
  const int ended = pty.Wait(kEndLimitMs);
  if (ended != status)
    return "ended with status " + std::to_string(ended) + " instead of " + std::to_string(status);
  const std::size_t left = LeftBehind();
  return left == 0 ? "" : std::to_string(left) + " processes are still running after the end";
}

}  // namespace endurance
