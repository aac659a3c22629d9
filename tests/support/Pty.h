// A program on a terminal, with the test in the operator's place: it reads the screen, waits for
// expected texts and types.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// How a program is started on the terminal.
struct PtyOptions {
  std::vector<std::string> environment{};  // NAME=VALUE, in addition to the test's environment
  std::string directory{};                 // working directory; empty for the test's
  unsigned short rows = 50;
  unsigned short columns = 200;
  bool echo = false;  // what is typed appears in the transcript
};

/// A program and its terminal. Line ends are "\n", as the program writes them. Limits are in
/// milliseconds; they matter only for failures, so they may be long. The destructor kills the
/// program.
class Pty {
 public:
  /// Starts `argv` (the program is searched for in PATH). If the program cannot be started, the
  /// transcript contains a message and the exit status is 127.
  explicit Pty(const std::vector<std::string>& argv, const PtyOptions& options = {});
  /// Runs `body` in a forked child; its return value is the exit status.
  explicit Pty(const std::function<int()>& body, const PtyOptions& options = {});
  ~Pty();
  Pty(const Pty&) = delete;
  Pty& operator=(const Pty&) = delete;

  /// Waits until `text` appears after the text that was expected last. A failure shows the end of
  /// the transcript.
  [[nodiscard]] testing::AssertionResult Expect(const std::string& text, int timeoutMs = kLimitMs);
  /// Like `Expect`, for a regular expression (ECMAScript); `Groups` returns the matches of its
  /// groups.
  [[nodiscard]] testing::AssertionResult ExpectRegex(const std::string& regex,
                                                     int timeoutMs = kLimitMs);
  /// Waits until the program has closed its terminal, that is, until no more output is possible.
  [[nodiscard]] testing::AssertionResult ExpectEnd(int timeoutMs = kLimitMs);

  /// Types `text` unchanged. "\x03" is Ctrl-C.
  void Send(const std::string& text);
  /// Types `line` and Return.
  void SendLine(const std::string& line) { Send(line + "\n"); }
  /// Waits until the program sleeps in a read from the terminal: it may discard text that is typed
  /// earlier.
  [[nodiscard]] testing::AssertionResult WaitReading(int timeoutMs = kLimitMs);
  /// Returns true while the program reads single keys rather than lines.
  bool TakesKeys() const;
  /// Waits for output, then returns all output since the last expected text and removes it from the
  /// transcript. For programs that print for hours.
  std::string TakeOutput(int timeoutMs);
  /// Waits for `prompt` and for the program to read, then types `line`.
  [[nodiscard]] testing::AssertionResult Answer(const std::string& prompt, const std::string& line,
                                                int timeoutMs = kLimitMs);
  /// Types Ctrl-D: end of input if the program reads at the beginning of a line.
  void CloseInput() { Send("\x04"); }
  /// Closes the terminal; the program receives SIGHUP.
  void HangUp();
  /// Changes the size of the window; the program receives SIGWINCH.
  void Resize(unsigned short rows, unsigned short columns);

  /// Waits for the end of the program. Returns its exit status, 128 + the signal that killed it, or
  /// -1 if it still runs after `timeoutMs`.
  int Wait(int timeoutMs = kLimitMs);

  /// All output so far.
  const std::string& Transcript() const { return transcript_; }
  /// The output between the last two expected texts.
  const std::string& Before() const { return before_; }
  /// Matches of the groups of the last regular expression; [0] is the whole match.
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
  bool ended_ = false;   // no more output is possible
  bool reaped_ = false;  // the program's status is known
  int status_ = -1;
  std::string transcript_;
  std::size_t consumed_ = 0;  // end of the last expected text in the transcript
  std::string before_;
  std::vector<std::string> groups_;
};

/// A prompt and the answer to type.
using Talk = std::vector<std::pair<const char*, const char*>>;

/// Answers prompts in order, with `Pty::Answer`.
[[nodiscard]] testing::AssertionResult Type(Pty& pty, const Talk& talk);

}  // namespace test
