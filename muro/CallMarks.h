// Marks in a recording of HAL calls, so that the calls of one test can be found there. Without a
// recorder in front of the HAL nothing happens.
#pragma once

#include <string_view>

namespace callmarks {

/// A test begins, or has ended with `verdict`.
void TestBegins(int number, const char* name, const char* description);
void TestEnds(int number, const char* name, const char* description, const char* verdict);

/// The console waits for `kind` of input, and took `text`.
void Prompt(const char* kind);
void Answer(std::string_view text);

}  // namespace callmarks
