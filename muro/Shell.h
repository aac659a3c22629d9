// Commands that the harness gives to the board's shell.
#pragma once

#include <string>

/// Runs `command` in a shell, with everything printed so far on the console before it. Its exit
/// status is not looked at. A shell that cannot be started is reported in one line and counted.
void RunShell(const char* command);
void RunShell(const std::string& command);

/// How often a shell could not be started so far. What a test does then was not all done.
unsigned ShellFailures();
