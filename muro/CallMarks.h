// Marks in a recording of HAL calls, so that the calls of one test can be found there. Without a
// recorder in front of the HAL nothing happens.
#pragma once

#include <string_view>

namespace callmarks {

/// A test begins, or has ended with `verdict`.
void TestBegins(int number, const char* name, const char* description);
void TestEnds(int number, const char* name, const char* description, const char* verdict);

/// Whether there is a recorder: nobody else needs the text of a prompt.
bool AreKept();

/// The console waits for a "line" or a "key" after `text`, and took `answer`.
void Prompt(const char* kind, std::string_view text);
void Answer(std::string_view answer);

}  // namespace callmarks
