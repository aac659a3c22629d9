// Other programs that the runner asks something, with a limit.
#pragma once

#include <string>
#include <vector>

namespace runner {

/// How a command ended, and what it wrote to its standard output.
struct CommandEnd {
  enum Kind { kExited, kSignalled, kTimedOut, kInterrupted, kNotStarted };
  Kind kind = kNotStarted;
  int value = 0;  // exit status, signal or error
  std::string output;

  bool Succeeded() const { return kind == kExited && value == 0; }
  /// How it ended, for people, such as "exit status 1"; `limitS` is the limit that it had.
  std::string Text(double limitS) const;
};

/// Runs `words`, found through PATH, in a process group of its own and without input, with the
/// settings `environment` ("NAME=value") beside those of this program. Waits at most `limitS`
/// seconds (0: as long as it takes), and only while `interrupted` gives false; what is left of the
/// group at the end is killed.
CommandEnd RunCommand(const std::vector<std::string>& words,
                      const std::vector<std::string>& environment, double limitS,
                      bool (*interrupted)() = nullptr);

}  // namespace runner
