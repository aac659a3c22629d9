// What the driver tests have in common.
#pragma once

/// Prints the red trace line that a driver test opens with: source file, `function` and line.
void PrintTraceLine(const char* function, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE());

/// The same line as unit tests open with it.
void PrintUnitTraceLine(const char* function, const char* file = __builtin_FILE(),
                        int line = __builtin_LINE());

/// Prints the short trace line: the name of the test alone.
void PrintTraceName(const char* function);
