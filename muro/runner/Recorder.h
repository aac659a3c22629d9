// A session with an operator, written down as answers.
#pragma once

#include <functional>
#include <string>

namespace runner {

/// Runs `console` in a child at a terminal of its own, which looks to the operator like the one
/// they sit at, and writes every answer given in a test to the file. Returns the exit status of the
/// program: the console's, 2 without a terminal, 99 when the file or the terminal cannot be had.
int RecordSession(const std::string& path, const std::function<int()>& console);

}  // namespace runner
