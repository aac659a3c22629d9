// What went wrong with a run itself, told to the person who started it.
#pragma once

#include <string_view>

namespace runner {

/// Prints "cvntester: " and the problem on standard error: always one line that no terminal takes
/// for a command, whatever a file or a word of the command line held.
void PrintProblem(std::string_view problem);

/// As `PrintProblem`, with the system's reason in `errno` behind it.
void PrintSystemProblem(std::string_view problem);

}  // namespace runner
