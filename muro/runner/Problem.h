// Problems of the run itself, reported to the person who started it.
#pragma once

#include <string_view>

namespace runner {

/// Prints "cvntester: " and the problem on standard error: always a single line without terminal
/// control sequences, whatever a file or an argument contained.
void PrintProblem(std::string_view problem);

/// As `PrintProblem`, followed by the system's reason from `errno`.
void PrintSystemProblem(std::string_view problem);

}  // namespace runner
