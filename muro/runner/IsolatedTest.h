// One test in a child process on a separate terminal. Whatever the test does to itself, its
// children and other related processes ends with it.
//
// A guard process runs between the runner and the test: it starts the test as the leader of a new
// session, adopts the processes that the test leaves behind, ends the test when asked to or when
// the runner is gone, and reports how the test ended. So no signal that a test sends reaches the
// runner.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

namespace runner {

/// How a test's process ended.
struct ChildEnd {
  enum Kind { kReturned, kExited, kSignalled, kGuardLost, kNotStarted };
  Kind kind;
  int value;         // the test's result, exit status, signal or error
  int leftChildren;  // processes left by the test that had to be ended
};

/// A test's result, in memory shared by its process and the runner: unlike a pipe it is out of
/// reach of a test that writes to descriptors that are not its own.
struct ResultCell {
  int told;  // not 0 when the test has returned
  int value;
};

class IsolatedTest {
 public:
  IsolatedTest() = default;
  ~IsolatedTest();
  IsolatedTest(const IsolatedTest&) = delete;
  IsolatedTest& operator=(const IsolatedTest&) = delete;

  /// Starts `body` in the child; its return value is the test's result. Returns a one-line error,
  /// empty on success.
  std::string Start(const std::function<int()>& body);

  /// Waits up to `timeoutMs` for output or the end. Appends new output to `output`. Returns false
  /// after the test has ended and all its output was read.
  bool Wait(int timeoutMs, std::string& output);

  /// Types on the test's terminal.
  void Type(std::string_view bytes) const;

  /// Asks the guard to end the test: first by SIGTERM, and a second later by SIGKILL.
  void Stop();

  /// How the test ended; valid after `Wait` has returned false.
  const ChildEnd& End() const { return end_; }

 private:
  bool ReadTerminal(std::string& output);
  void ReadReport();
  void NoticeLostGuard();

  int terminal_ = -1;
  int report_ = -1;   // on which the guard reports the end of the test
  int command_ = -1;  // closing it ends the test
  pid_t guard_ = -1;
  bool ended_ = false;
  ResultCell* result_ = nullptr;
  ChildEnd end_ = {ChildEnd::kGuardLost, 0, 0};
};

/// Ends the calling test child with `result` and skips all exit handlers. For use in the child
/// only.
[[noreturn]] void LeaveChild(int result);

/// Opens a pseudo-terminal; `slave` and `master` are closed on exec. False, with errno set, on
/// failure.
bool OpenTerminal(int& master, int& slave);

}  // namespace runner
