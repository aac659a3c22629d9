#include "Pty.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <regex>
#include <stdexcept>
#include <thread>

#include "TerminalReader.h"

namespace test {
namespace {

using Clock = std::chrono::steady_clock;

class Deadline {
 public:
  explicit Deadline(int timeoutMs) : end_(Clock::now() + std::chrono::milliseconds(timeoutMs)) {}
  /// Milliseconds left, rounded up; 0 if the time is over.
  int LeftMs() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()).count();
    return static_cast<int>(std::max<std::int64_t>(left, 0));
  }

 private:
  Clock::time_point end_;
};

winsize WindowSize(unsigned short rows, unsigned short columns) {
  winsize size{};
  size.ws_row = rows;
  size.ws_col = columns;
  return size;
}

/// Keeps line ends as the program writes them, and enables echo only if requested.
void SetModes(int terminal, bool echo) {
  termios mode{};
  tcgetattr(terminal, &mode);
  mode.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
  if (!echo) mode.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  tcsetattr(terminal, TCSANOW, &mode);
}

/// In the child: makes the terminal its controlling terminal and resets the signals as a shell
/// does.
void BecomeOperatorsProgram(int terminal, const PtyOptions& options) {
  login_tty(terminal);
  for (const int number : {SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGHUP}) signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const std::string& assignment : options.environment) {
    const std::size_t equals = assignment.find('=');
    setenv(assignment.substr(0, equals).c_str(), assignment.substr(equals + 1).c_str(), 1);
  }
  if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) {
    std::perror(options.directory.c_str());
    _exit(127);
  }
}

int Execute(const std::vector<std::string>& argv) {
  std::vector<std::string> words = argv;
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  execvp(pointers[0], pointers.data());
  std::perror(pointers[0]);
  return 127;
}

}  // namespace

Pty::Pty(const std::vector<std::string>& argv, const PtyOptions& options)
    : Pty([&argv] { return Execute(argv); }, options) {}

Pty::Pty(const std::function<int()>& body, const PtyOptions& options) {
  const winsize size = WindowSize(options.rows, options.columns);
  int terminal = -1;
  if (openpty(&master_, &terminal, nullptr, nullptr, &size) != 0) {
    throw std::runtime_error(std::string("no terminal: ") + std::strerror(errno));
  }
  SetModes(terminal, options.echo);
  fcntl(master_, F_SETFD, FD_CLOEXEC);
  std::cout.flush();
  std::fflush(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    close(master_);
    BecomeOperatorsProgram(terminal, options);
    const int status = body();
    std::cout.flush();
    std::fflush(nullptr);
    _exit(status);
  }
  close(terminal);
  if (pid_ < 0) throw std::runtime_error(std::string("no process: ") + std::strerror(errno));
}

Pty::~Pty() {
  if (!reaped_) {
    kill(pid_, SIGKILL);
    Reap(true);
  }
  HangUp();
}

testing::AssertionResult Pty::Expect(const std::string& text, int timeoutMs) {
  const bool found = WaitFor(timeoutMs, [&](std::size_t& begin, std::size_t& end) {
    begin = transcript_.find(text, consumed_);
    end = begin + text.size();
    return begin != std::string::npos;
  });
  return found ? testing::AssertionSuccess() : Failure("no \"" + text + "\"");
}

testing::AssertionResult Pty::ExpectRegex(const std::string& regex, int timeoutMs) {
  const std::regex expression(regex);
  const bool found = WaitFor(timeoutMs, [&](std::size_t& begin, std::size_t& end) {
    std::smatch match;
    const auto from = transcript_.cbegin() + static_cast<std::ptrdiff_t>(consumed_);
    if (!std::regex_search(from, transcript_.cend(), match, expression)) return false;
    begin = consumed_ + static_cast<std::size_t>(match.position(0));
    end = begin + static_cast<std::size_t>(match.length(0));
    groups_.assign(match.begin(), match.end());
    return true;
  });
  return found ? testing::AssertionSuccess() : Failure("nothing that matches /" + regex + "/");
}

testing::AssertionResult Pty::ExpectEnd(int timeoutMs) {
  const Deadline deadline(timeoutMs);
  while (!ended_ && deadline.LeftMs() > 0) ReadOutput(deadline.LeftMs());
  return ended_ ? testing::AssertionSuccess() : Failure("no end of output");
}

void Pty::Send(const std::string& text) {
  std::size_t sent = 0;
  while (sent < text.size()) {
    const ssize_t count = write(master_, text.data() + sent, text.size() - sent);
    if (count < 0 && errno != EINTR) {
      ADD_FAILURE() << "cannot type \"" << text << "\": " << std::strerror(errno);
      return;
    }
    sent += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
  }
}

testing::AssertionResult Pty::WaitReading(int timeoutMs) {
  constexpr int kPollMs = 1;
  const Deadline deadline(timeoutMs);
  while (!SleepsInTerminalRead(pid_)) {
    if (deadline.LeftMs() == 0 || Reap(false)) return Failure("no read from the terminal");
    ReadOutput(kPollMs);
  }
  while (ReadOutput(0)) {  // output printed before the program began to read
  }
  return testing::AssertionSuccess();
}

bool Pty::TakesKeys() const {
  termios mode{};
  return tcgetattr(master_, &mode) == 0 && (mode.c_lflag & static_cast<tcflag_t>(ICANON)) == 0;
}

std::string Pty::TakeOutput(int timeoutMs) {
  if (consumed_ == transcript_.size()) ReadOutput(timeoutMs);
  while (ReadOutput(0)) {
  }
  std::string taken = transcript_.substr(consumed_);
  transcript_.clear();
  consumed_ = 0;
  return taken;
}

testing::AssertionResult Pty::Answer(const std::string& prompt, const std::string& line,
                                     int timeoutMs) {
  testing::AssertionResult result = Expect(prompt, timeoutMs);
  if (result) result = WaitReading(timeoutMs);
  if (result) SendLine(line);
  return result;
}

void Pty::HangUp() {
  if (master_ >= 0) close(master_);
  master_ = -1;
  ended_ = true;
}

void Pty::Resize(unsigned short rows, unsigned short columns) {
  const winsize size = WindowSize(rows, columns);
  ioctl(master_, TIOCSWINSZ, &size);
}

int Pty::Wait(int timeoutMs) {
  constexpr int kPollMs = 2;
  const Deadline deadline(timeoutMs);
  while (!Reap(false)) {
    if (deadline.LeftMs() == 0) return -1;
    ReadOutput(kPollMs);
  }
  while (ReadOutput(0)) {
  }
  return status_;
}

bool Pty::WaitFor(int timeoutMs, const Match& match) {
  const Deadline deadline(timeoutMs);
  for (;;) {
    std::size_t begin = 0;
    std::size_t end = 0;
    if (match(begin, end)) {
      before_ = transcript_.substr(consumed_, begin - consumed_);
      consumed_ = end;
      return true;
    }
    if (ended_ || deadline.LeftMs() == 0) return false;
    ReadOutput(deadline.LeftMs());
  }
}

/// Reads the program's output, waiting at most `timeoutMs` for it. Returns false if there was none.
bool Pty::ReadOutput(int timeoutMs) {
  if (ended_) {
    std::this_thread::sleep_for(std::chrono::milliseconds(timeoutMs));
    return false;
  }
  pollfd input{master_, POLLIN, 0};
  if (poll(&input, 1, timeoutMs) <= 0) return false;
  std::array<char, 4096> buffer{};
  const ssize_t count = read(master_, buffer.data(), buffer.size());
  if (count > 0) {
    transcript_.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
  }
  // EIO: the last process that had the terminal open has closed it.
  ended_ = count == 0 || errno != EINTR;
  return false;
}

bool Pty::Reap(bool block) {
  int status = 0;
  if (!reaped_ && waitpid(pid_, &status, block ? 0 : WNOHANG) == pid_) {
    reaped_ = true;
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return reaped_;
}

testing::AssertionResult Pty::Failure(const std::string& what) const {
  constexpr std::size_t kTail = 1500;
  const std::size_t from = transcript_.size() > kTail ? transcript_.size() - kTail : 0;
  return testing::AssertionFailure()
         << what << " after byte " << consumed_ << (ended_ ? ", the output has ended" : "")
         << "; the transcript's end:\n"
         << transcript_.substr(from) << "\n--- end of transcript ---";
}

testing::AssertionResult Type(Pty& pty, const Talk& talk) {
  for (const auto& [prompt, answer] : talk) {
    if (auto answered = pty.Answer(prompt, answer); !answered) return answered;
  }
  return testing::AssertionSuccess();
}

}  // namespace test
