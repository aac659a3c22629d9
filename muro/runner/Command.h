// External programs that the runner consults, with a time limit.
#pragma once

#include <string>
#include <vector>

namespace runner {

/// How a command ended and what it wrote to its standard output.
struct CommandEnd {
  enum Kind { kExited, kSignalled, kTimedOut, kInterrupted, kNotStarted };
  Kind kind = kNotStarted;
  int value = 0;  // exit status, signal or error
  std::string output;

  bool Succeeded() const { return kind == kExited && value == 0; }
  /// How it ended, for people, such as "exit status 1"; `limitS` is the limit that it was given, in
  /// seconds.
  std::string Text(double limitS) const;
};

/// Runs `words`, found through PATH, in a separate process group and without input, with the
/// settings `environment` ("NAME=value") added to the environment of this program. Waits at most
/// `limitS` seconds (0: no limit), and only while `interrupted` returns false; processes left in
/// the group at the end are killed.
CommandEnd RunCommand(const std::vector<std::string>& words,
                      const std::vector<std::string>& environment, double limitS,
                      bool (*interrupted)() = nullptr);

}  // namespace runner
