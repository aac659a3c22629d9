// Runs test functions with scripted answers and a libc that records waits and shell commands
// instead of executing them.
#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace scripted {

/// Result and output of a run, and the shell commands that it ran.
struct Run {
  int result;
  std::string output;
  std::vector<std::string> commands;
};

/// Calls `function` with `input` on standard input and captures everything printed. Input that was
/// not read is discarded.
Run Play(const std::string& input, const std::function<int()>& function);

/// Like `Play`, in a separate process, which may end before `function` returns, for example at the
/// end of input. The result is its exit status, or -1 if it was killed; its commands are not
/// available.
Run PlayApart(const std::string& input, const std::function<int()>& function);

/// Waits of the program so far, in microseconds, and their total.
std::vector<unsigned long> Waits();
unsigned long WaitedUs();

/// Shell commands of the program so far.
std::vector<std::string> Commands();

/// The shell commands of `function`, run as in `Play`.
std::vector<std::string> CommandsOf(const std::function<void()>& function,
                                    const std::string& input = "");

/// Called for every shell command; returns its exit status. If empty, every command succeeds.
void OnCommand(std::function<int(const std::string& command)> hook);

/// From now on no shell can be started: `system` fails with `error`. 0 undoes this.
void RefuseShells(int error);

/// Called at every wait, for example to change the board while a test polls it. Empty for none.
void OnWait(std::function<void(unsigned long us)> hook);

/// From now on `time` returns `now`, in seconds since 1970.
void StopClock(std::time_t now);

/// Sends the report of this process to a new file in a new directory below the test's temporary
/// directory and returns its path. Nothing is created.
std::string RedirectReport();

/// The content of a file, empty if it cannot be read.
std::string ReadFile(const std::string& path);

}  // namespace scripted
