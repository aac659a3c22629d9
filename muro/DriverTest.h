// What the driver tests have in common.
#pragma once

#include <string>

/// Prints the red trace line that a driver test opens with: source file, `function` and line.
void PrintTraceLine(const char* function, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE());

/// The same line as unit tests open with it.
void PrintUnitTraceLine(const char* function, const char* file = __builtin_FILE(),
                        int line = __builtin_LINE());

/// Prints the short trace line: the name of the test alone.
void PrintTraceName(const char* function);

/// Runs `command` in a shell, with everything printed so far on the console before it. Its exit
/// status is not looked at. A shell that cannot be started is told in one line and counted.
void RunShell(const char* command);
void RunShell(const std::string& command);

/// How often a shell could not be started so far. What a test does then was not all done.
unsigned ShellFailures();
