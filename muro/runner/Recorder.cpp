#include "Recorder.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "AnswerNotes.h"
#include "ConsoleMarks.h"
#include "ExitStatus.h"
#include "IsolatedTest.h"
#include "OutputFile.h"
#include "Problem.h"

namespace runner {
namespace {

/// The operator's terminal passes every key on; the inner one interprets the keys.
class RawTerminal {
 public:
  explicit RawTerminal(const termios& before) : before_(before) {
    termios raw = before;
    cfmakeraw(&raw);
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
  }
  ~RawTerminal() { tcsetattr(STDIN_FILENO, TCSADRAIN, &before_); }
  RawTerminal(const RawTerminal&) = delete;
  RawTerminal& operator=(const RawTerminal&) = delete;

 private:
  termios before_;
};

void CopyWindowSize(int to) {
  winsize size{};
  if (ioctl(STDIN_FILENO, TIOCGWINSZ, &size) == 0) ioctl(to, TIOCSWINSZ, &size);
}

/// The console closes its copy of the master: otherwise nothing hangs up on it when the recorder is
/// killed.
[[noreturn]] void BeConsole(int master, int slave, const std::string& key,
                            const std::function<int()>& console) {
  close(master);
  setsid();
  ioctl(slave, TIOCSCTTY, 0);
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(slave, fd);
  MarkSession(key);
  std::exit(console());
}

/// Copies the available bytes of `from`; false at its end.
bool Take(int from, std::string& bytes) {
  char block[4096];
  const ssize_t got = read(from, block, sizeof block);
  bytes.assign(block, static_cast<std::size_t>(got > 0 ? got : 0));
  return got > 0 || (got < 0 && errno == EINTR);
}

void Relay(int master, AnswerNotes& notes) {
  pollfd pollers[] = {{master, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
  std::string bytes;
  for (;;) {
    const bool isReady = poll(pollers, 2, -1) >= 0;
    CopyWindowSize(master);  // before any input that was typed after a change
    if (!isReady) continue;
    if (pollers[0].revents != 0) {
      if (!Take(master, bytes)) break;
      notes.Read(bytes);
    }
    if (pollers[1].revents == 0) continue;
    if (Take(STDIN_FILENO, bytes)) {
      WriteAll(master, bytes);
    } else {
      return;  // the terminal hung up; closing the inner one hangs up on the console
    }
  }
  notes.End();
}

int RelaySession(int master, OutputFile& file, const std::string& key, const termios& before) {
  const RawTerminal raw(before);
  AnswerNotes notes(key, {[](std::string_view text) { WriteAll(STDOUT_FILENO, text); },
                          [&](const std::string& line) { file.Write(line); }});
  struct sigaction action = {};
  action.sa_handler = [](int) {};  // ends the wait
  sigaction(SIGWINCH, &action, nullptr);
  Relay(master, notes);
  return file.Good() ? kAllPassed : kHarnessFailed;
}

}  // namespace

int RecordSession(const std::string& path, const std::function<int()>& console) {
  termios attributes{};
  if (tcgetattr(STDIN_FILENO, &attributes) != 0) {
    PrintProblem("--record requires an operator at a terminal");
    return kUsage;
  }
  OutputFile file(path, -1);
  file.Write("# test\tprompt\tanswer\n");
  int master = -1;
  int slave = -1;
  if (!file.Good()) return kHarnessFailed;
  if (!OpenTerminal(master, slave)) {
    PrintSystemProblem("no terminal");
    return kHarnessFailed;
  }
  tcsetattr(slave, TCSANOW, &attributes);
  CopyWindowSize(slave);
  const std::string key = MakeMarkKey();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) BeConsole(master, slave, key, console);
  close(slave);
  const int relayed = child < 0 ? kHarnessFailed : RelaySession(master, file, key, attributes);
  close(master);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || relayed != 0) return kHarnessFailed;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace runner
