// Commands that the harness runs in the board's shell.
#pragma once

#include <string>

/// Runs `command` in a shell after flushing everything printed so far to the console. A shell that
/// cannot be started is reported in one line and counted. Returns whether the command exited with
/// status 0; most callers ignore it.
bool RunShell(const char* command);
bool RunShell(const std::string& command);

/// How often a shell could not be started so far. The tests concerned were not fully executed.
unsigned ShellFailures();
