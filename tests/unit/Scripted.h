// A test function run with scripted answers, and a libc whose waits and shell commands are noted
// instead of done.
#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace scripted {

/// What a run returned and printed, and the shell commands it ran.
struct Run {
  int result;
  std::string output;
  std::vector<std::string> commands;
};

/// Calls `function` with `input` on standard input and everything printed captured. Input that was
/// not read is thrown away.
Run Play(const std::string& input, const std::function<int()>& function);

/// The same in a process of its own, which may end before `function` returns, as at the end of
/// input. The result is its exit status, -1 when it was killed; its commands are not known.
Run PlayApart(const std::string& input, const std::function<int()>& function);

/// Waits of the program so far, in microseconds, and its total.
std::vector<unsigned long> Waits();
unsigned long WaitedUs();

/// Shell commands of the program so far.
std::vector<std::string> Commands();

/// The shell commands of `function`, run as by `Play`.
std::vector<std::string> CommandsOf(const std::function<void()>& function,
                                    const std::string& input = "");

/// Called with every shell command, for its exit status. Empty: every command succeeds.
void OnCommand(std::function<int(const std::string& command)> hook);

/// From now on no shell can be started: `system` fails with `error`. 0: it can again.
void RefuseShells(int error);

/// Called at every wait, for example to change the board while a test polls it. Empty: nothing.
void OnWait(std::function<void(unsigned long us)> hook);

/// From now on it is `now` for `time`, in seconds since 1970.
void StopClock(std::time_t now);

/// Sends the report of this process to a new file in a new directory below the test's temporary
/// directory and returns its path. Nothing is created.
std::string RedirectReport();

/// The bytes of a file, empty when it cannot be read.
std::string ReadFile(const std::string& path);

}  // namespace scripted
