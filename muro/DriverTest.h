// Trace lines shared by the driver and unit tests.
#pragma once

/// Prints the red trace line at the start of a driver test: source file, `function` and line.
void PrintTraceLine(const char* function, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE());

/// The same line at the start of a unit test.
void PrintUnitTraceLine(const char* function, const char* file = __builtin_FILE(),
                        int line = __builtin_LINE());

/// Prints the short trace line: only the name of the test.
void PrintTraceName(const char* function);
