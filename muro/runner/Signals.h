// The signals that end programs, by names that are the same on every board.
#pragma once

#include <string>

namespace runner {

/// "signal 11 SIGSEGV"; the number alone for one without a name here.
std::string SignalText(int signal);

}  // namespace runner
