// Marks in a recording of HAL calls that separate the calls of one test from the others. Without a
// recorder these functions do nothing.
#pragma once

#include <string_view>

namespace callmarks {

/// Marks the beginning of a test, or its end with `verdict`.
void TestBegins(int number, const char* name, const char* description);
void TestEnds(int number, const char* name, const char* description, const char* verdict);

/// Whether there is a recorder: nobody else needs the text of a prompt.
bool AreKept();

/// The console waits for a "line" or a "key" after `text`, and took `answer`.
void Prompt(const char* kind, std::string_view text);
void Answer(std::string_view answer);

}  // namespace callmarks
