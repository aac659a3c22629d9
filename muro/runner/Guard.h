// The process between the runner and a test.
#pragma once

#include <functional>

namespace runner {

/// What the guard tells the runner of the test's end, in one write.
struct Report {
  enum Kind : int { kStatus, kNotStarted };
  Kind kind;
  int value;  // the test's wait status, or why there is no process for it (errno)
  int leftChildren;
};

/// Becomes the guard: runs `test` in a child and reports how it ended, when it ended by itself or
/// because `command` was closed at its other end. The test alone keeps `terminal` open.
[[noreturn]] void Guard(int command, int report, int terminal, const std::function<void()>& test);

/// From now on this process adopts the orphans among its descendants.
void AdoptOrphans();

/// Ends and reaps all children of this process, adopted ones included, as far as the system tells
/// them. Returns how many of them did not end by themselves.
int EndChildren();

}  // namespace runner
