// A program at a terminal, with the test in the operator's place: it reads the screen, waits for
// what is expected there and types.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// How a program is started at the terminal.
struct PtyOptions {
  std::vector<std::string> environment{};  // NAME=VALUE, beside the test's own environment
  std::string directory{};                 // working directory; empty: the test's own
  unsigned short rows = 50;
  unsigned short columns = 200;
  bool echo = false;  // what is typed appears in the transcript
};

/// One program and its terminal. Line ends are "\n" as the program wrote them. Limits are in
/// milliseconds; they bound failures and cost nothing else. The destructor kills the program.
class Pty {
 public:
  /// Starts `argv` (the program is looked up in PATH). A program that cannot be started leaves a
  /// message on the transcript and status 127.
  explicit Pty(const std::vector<std::string>& argv, const PtyOptions& options = {});
  /// Runs `body` in a forked child; what it returns is the exit status.
  explicit Pty(const std::function<int()>& body, const PtyOptions& options = {});
  ~Pty();
  Pty(const Pty&) = delete;
  Pty& operator=(const Pty&) = delete;

  /// Waits until `text` appears after what was expected before. A failure shows the transcript's
  /// end.
  [[nodiscard]] testing::AssertionResult Expect(const std::string& text, int timeoutMs = kLimitMs);
  /// As `Expect`, for a regular expression (ECMAScript); `Groups` has what its groups matched.
  [[nodiscard]] testing::AssertionResult ExpectRegex(const std::string& regex,
                                                     int timeoutMs = kLimitMs);
  /// Waits until the program has closed its terminal, that is, until no more output can come.
  [[nodiscard]] testing::AssertionResult ExpectEnd(int timeoutMs = kLimitMs);

  /// Types `text` as it is. "\x03" is Ctrl-C.
  void Send(const std::string& text);
  /// Types `line` and Return.
  void SendLine(const std::string& line) { Send(line + "\n"); }
  /// Waits until the program sleeps in a read from the terminal: what is typed before that may be
  /// thrown away by it.
  [[nodiscard]] testing::AssertionResult WaitReading(int timeoutMs = kLimitMs);
  /// True while the program takes single keys and not lines.
  bool TakesKeys() const;
  /// All output that was not expected yet, after waiting for some; the transcript forgets it. For
  /// programs that print for hours.
  std::string TakeOutput(int timeoutMs);
  /// Waits for `prompt` and for the program to read, then types `line`.
  [[nodiscard]] testing::AssertionResult Answer(const std::string& prompt, const std::string& line,
                                                int timeoutMs = kLimitMs);
  /// Types Ctrl-D: the end of input where the program reads at the beginning of a line.
  void CloseInput() { Send("\x04"); }
  /// Takes the terminal away; the program gets SIGHUP.
  void HangUp();
  /// Changes the window's size; the program gets SIGWINCH.
  void Resize(unsigned short rows, unsigned short columns);

  /// Waits for the program's end. Returns its exit status, 128 + the signal that killed it, or -1
  /// when it still runs after `timeoutMs`.
  int Wait(int timeoutMs = kLimitMs);

  /// All output so far.
  const std::string& Transcript() const { return transcript_; }
  /// The output between the last two expected texts.
  const std::string& Before() const { return before_; }
  /// What the groups of the last regular expression matched; [0] is the whole match.
  const std::vector<std::string>& Groups() const { return groups_; }
  /// Process id of the program.
  pid_t Pid() const { return pid_; }

  static constexpr int kLimitMs = 10000;

 private:
  using Match = std::function<bool(std::size_t& begin, std::size_t& end)>;
  bool WaitFor(int timeoutMs, const Match& match);
  bool ReadOutput(int timeoutMs);
  bool Reap(bool block);
  testing::AssertionResult Failure(const std::string& what) const;

  int master_ = -1;
  pid_t pid_ = -1;
  bool ended_ = false;   // the terminal gives no more output
  bool reaped_ = false;  // the program's status is known
  int status_ = -1;
  std::string transcript_;
  std::size_t consumed_ = 0;  // up to here the transcript was expected
  std::string before_;
  std::vector<std::string> groups_;
};

/// A prompt and what is typed there.
using Talk = std::vector<std::pair<const char*, const char*>>;

/// Answers prompts in order, with `Pty::Answer`.
[[nodiscard]] testing::AssertionResult Type(Pty& pty, const Talk& talk);

}  // namespace test
