// Commands that the harness gives to the board's shell.
#pragma once

#include <string>

/// Runs `command` in a shell, with everything printed so far on the console before it. A shell that
/// cannot be started is reported in one line and counted. Returns whether the command ended with
/// exit status 0; most callers do not ask.
bool RunShell(const char* command);
bool RunShell(const std::string& command);

/// How often a shell could not be started so far. What a test does then was not all done.
unsigned ShellFailures();
