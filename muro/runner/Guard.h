// The process between the runner and a test.
#pragma once

#include <functional>

namespace runner {

/// The guard's report to the runner about the end of the test, in one write.
struct Report {
  enum Kind : int { kStatus, kNotStarted };
  Kind kind;
  int value;  // the test's wait status, or the errno if it could not be started
  int leftChildren;
};

/// Becomes the guard: runs `test` in a child and reports how it ended, either by itself or because
/// the other end of `command` was closed. Only the test keeps `terminal` open.
[[noreturn]] void Guard(int command, int report, int terminal, const std::function<void()>& test);

/// From now on this process adopts orphans among its descendants.
void AdoptOrphans();

/// Ends and reaps all children of this process, including adopted ones, as far as the system lists
/// them. Returns the number of those that did not end by themselves.
int EndChildren();

}  // namespace runner
