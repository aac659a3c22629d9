// One test in a child process at a terminal of its own. Whatever it does to itself, its children
// and its relatives ends with it.
//
// Between the runner and the test stands a guard process: it starts the test as the leader of a new
// session, adopts what the test leaves behind, ends the test when asked to or when the runner is
// gone, and tells how the test ended. So nothing that a test signals is the runner.
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
  int leftChildren;  // processes that the test left behind and that had to be ended
};

/// A test's result, in memory that its process shares with the runner: unlike a pipe it is out of
/// reach of a test that writes to descriptors it knows nothing of.
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

  /// Starts `body` in the child; what it returns is the test's result. Returns an error in one
  /// line, empty when all is well.
  std::string Start(const std::function<int()>& body);

  /// Waits up to `timeoutMs` for output or the end. Appends new output to `output`. Returns false
  /// when the test has ended and all its output was read.
  bool Wait(int timeoutMs, std::string& output);

  /// Types on the test's terminal.
  void Type(std::string_view bytes) const;

  /// Asks the guard to end the test: politely, and a second later for good.
  void Stop();

  /// How the test ended; valid when `Wait` returned false.
  const ChildEnd& End() const { return end_; }

 private:
  bool ReadTerminal(std::string& output);
  void ReadReport();
  void NoticeLostGuard();

  int terminal_ = -1;
  int report_ = -1;   // how the guard says that the test has ended
  int command_ = -1;  // closing it ends the test
  pid_t guard_ = -1;
  bool ended_ = false;
  ResultCell* result_ = nullptr;
  ChildEnd end_ = {ChildEnd::kGuardLost, 0, 0};
};

/// Ends the calling test child with `result`, past everything that would run at an exit. For use in
/// the child only.
[[noreturn]] void LeaveChild(int result);

/// Makes a terminal; `slave` and `master` are closed on exec. False, with errno set, when none is
/// to be had.
bool OpenTerminal(int& master, int& slave);

}  // namespace runner
