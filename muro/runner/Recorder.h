// Records an operator's session as an answer file.
#pragma once

#include <functional>
#include <string>

namespace runner {

/// Runs `console` in a child on a separate terminal, which behaves like the operator's own, and
/// writes every answer given in a test to the file. Returns the exit status of the program: the
/// console's, 2 without a terminal, 99 if the file or the terminal cannot be opened.
int RecordSession(const std::string& path, const std::function<int()>& console);

}  // namespace runner
