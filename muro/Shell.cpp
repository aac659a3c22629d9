#include "Shell.h"

#include <paths.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

unsigned shellFailures = 0;

/// True if a shell was started, judged by the return value of `system`. Sets errno if not.
bool WasStarted(int status) {
  // Where children are not waited for, only the command's status is lost.
  if (status == -1) return errno == ECHILD;
  const bool nothingWasFound = WIFEXITED(status) && WEXITSTATUS(status) == 127;
  return !nothingWasFound || access(_PATH_BSHELL, X_OK) == 0;
}

}  // namespace

bool RunShell(const char* command) {
  std::fflush(stdout);
  const int status = std::system(command);
  if (WasStarted(status)) return status == 0;
  ++shellFailures;
  std::printf("Cannot start a shell (%s) for: %s\n", std::strerror(errno), command);
  return false;
}

bool RunShell(const std::string& command) {
  return RunShell(command.c_str());
}

unsigned ShellFailures() {
  return shellFailures;
}
