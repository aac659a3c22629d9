// Tells whether a program waits for its operator.
#pragma once

#include <sys/types.h>

namespace test {

/// True when `pid` or one of its descendants sleeps in a read from a terminal. Where the kernel
/// does not say what a process sleeps in, one that sleeps and used no processor time for a while
/// counts.
bool SleepsInTerminalRead(pid_t pid);

}  // namespace test
