#include "Command.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "Signals.h"

namespace runner {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLookMs = 20;

std::vector<char*> Pointers(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

/// This program's environment with `settings` added.
std::vector<std::string> EnvironmentWith(const std::vector<std::string>& settings) {
  std::vector<std::string> all = settings;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view name =
        std::string_view(*entry).substr(0, std::string_view(*entry).find('='));
    const bool isSet = std::ranges::any_of(settings, [&](const std::string& setting) {
      return setting.starts_with(name) && setting[name.size()] == '=';
    });
    if (!isSet) all.emplace_back(*entry);
  }
  return all;
}

/// Starts the command with its output connected to a pipe. Returns an error number.
int Start(const std::vector<std::string>& words, const std::vector<std::string>& environment,
          int output, pid_t& pid) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t ignoredHere;
  sigemptyset(&ignoredHere);
  sigaddset(&ignoredHere, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &ignoredHere);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
  const std::vector<std::string> settings = EnvironmentWith(environment);
  const int error = posix_spawnp(&pid, words[0].c_str(), &actions, &attributes,
                                 Pointers(words).data(), Pointers(settings).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

/// Appends the available output. False at the end of the output.
bool ReadSome(int from, int waitMs, std::string& output) {
  pollfd poller = {from, POLLIN, 0};
  if (poll(&poller, 1, waitMs) <= 0) return true;
  char block[4096];
  const ssize_t got = read(from, block, sizeof block);
  if (got > 0) output.append(block, static_cast<std::size_t>(got));
  return got > 0 || (got < 0 && errno == EINTR);
}

/// Reads until the command has ended, even if other processes still hold its output open.
CommandEnd Await(pid_t pid, int from, double limitS, bool (*interrupted)()) {
  CommandEnd end;
  const auto start = Clock::now();
  int status = 0;
  bool open = true;
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (open) {
      open = ReadSome(from, kLookMs, end.output);
    } else {
      usleep(kLookMs * 1000);
    }
    const bool stops = interrupted != nullptr && interrupted();
    const bool isLate = limitS > 0 && Clock::now() - start > std::chrono::duration<double>(limitS);
    if (!stops && !isLate) continue;
    kill(-pid, SIGKILL);
    waitpid(pid, &status, 0);
    end.kind = stops ? CommandEnd::kInterrupted : CommandEnd::kTimedOut;
    return end;
  }
  for (std::size_t before = end.output.size() + 1; open && before != end.output.size();) {
    before = end.output.size();
    open = ReadSome(from, 0, end.output);
  }
  kill(-pid, SIGKILL);  // its leftover processes would hold our descriptors
  end.kind = WIFEXITED(status) ? CommandEnd::kExited : CommandEnd::kSignalled;
  end.value = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
  return end;
}

}  // namespace

std::string CommandEnd::Text(double limitS) const {
  char limit[32];
  switch (kind) {
    case kExited:
      return "exit status " + std::to_string(value);
    case kSignalled:
      return "killed by " + SignalText(value);
    case kTimedOut:
      std::snprintf(limit, sizeof limit, "%g", limitS);
      return std::string("no answer in ").append(limit).append(" s");
    case kInterrupted:
      return "interrupted";
    case kNotStarted:
      break;
  }
  return std::string("not started: ") + std::strerror(value);
}

CommandEnd RunCommand(const std::vector<std::string>& words,
                      const std::vector<std::string>& environment, double limitS,
                      bool (*interrupted)()) {
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0) return {CommandEnd::kNotStarted, errno, ""};
  pid_t pid = -1;
  const int error = Start(words, environment, output[1], pid);
  close(output[1]);
  CommandEnd end{CommandEnd::kNotStarted, error, ""};
  if (error == 0) end = Await(pid, output[0], limitS, interrupted);
  close(output[0]);
  return end;
}

}  // namespace runner
