#include "TerminalMode.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace {

// Read in signal handlers, on whatever thread receives the signal.
std::atomic<const TerminalMode*> current{nullptr};
static_assert(std::atomic<const TerminalMode*>::is_always_lock_free);

constexpr int kEndingOrStopping[] = {SIGINT,  SIGQUIT, SIGTERM, SIGHUP, SIGTSTP,
                                     SIGSEGV, SIGBUS,  SIGFPE,  SIGILL, SIGABRT};

void Handle(int signal, void (*handler)(int)) {
  struct sigaction before = {};
  sigaction(signal, nullptr, &before);
  // Leave signals alone that somebody else ignores or handles.
  if ((before.sa_flags & SA_SIGINFO) != 0 || before.sa_handler != SIG_DFL) return;
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

}  // namespace

TerminalMode::TerminalMode(tcflag_t clearedModes, int addedFlags)
    : isTerminal_(tcgetattr(STDIN_FILENO, &saved_) == 0), addedFlags_(addedFlags) {
  changed_ = saved_;
  changed_.c_lflag &= ~clearedModes;
  savedFlags_ = fcntl(STDIN_FILENO, F_GETFL);
  CatchSignals();
  current = this;
  Change();
}

TerminalMode::~TerminalMode() {
  current = nullptr;
  SetBack();
}

void TerminalMode::CatchSignals() {
  static bool done = false;
  if (done) return;
  done = true;
  for (const int signal : kEndingOrStopping) Handle(signal, LetSignalAct);
  Handle(SIGCONT, GoOn);
  std::atexit(GiveBack);
}

void TerminalMode::GiveBack() {
  if (const TerminalMode* mode = current.exchange(nullptr)) mode->SetBack();
}

/// Restores the terminal and lets the signal take its default action: returns if the signal only
/// stopped the program and the program was continued.
void TerminalMode::LetSignalAct(int signal) {
  const int error = errno;
  const TerminalMode* mode = current;
  if (mode != nullptr) mode->SetBack();
  struct sigaction byDefault = {};
  struct sigaction ours = {};
  byDefault.sa_handler = SIG_DFL;
  sigaction(signal, &byDefault, &ours);
  sigset_t one;
  sigset_t before;
  sigemptyset(&one);
  sigaddset(&one, signal);
  raise(signal);
  pthread_sigmask(SIG_UNBLOCK, &one, &before);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  sigaction(signal, &ours, nullptr);
  if (mode != nullptr) mode->Change();
  errno = error;
}

/// Meanwhile the shell has used the terminal.
void TerminalMode::GoOn(int) {
  const int error = errno;
  if (const TerminalMode* mode = current) mode->Change();
  errno = error;
}

void TerminalMode::Change() const {
  if (isTerminal_) tcsetattr(STDIN_FILENO, TCSANOW, &changed_);
  if (addedFlags_ != 0) fcntl(STDIN_FILENO, F_SETFL, savedFlags_ | addedFlags_);
}

void TerminalMode::SetBack() const {
  if (isTerminal_) tcsetattr(STDIN_FILENO, TCSANOW, &saved_);
  if (addedFlags_ != 0) fcntl(STDIN_FILENO, F_SETFL, savedFlags_);
}
