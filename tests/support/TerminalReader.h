// Detects whether a program waits for its operator.
#pragma once

#include <sys/types.h>

namespace test {

/// Returns true if `pid` or one of its descendants sleeps in a read from a terminal. If the kernel
/// does not report where a process sleeps, a process counts that sleeps and uses no CPU time for a
/// while.
bool SleepsInTerminalRead(pid_t pid);

}  // namespace test
