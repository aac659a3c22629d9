// What the program does with arguments.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace runner {

/// Does what the arguments say and returns the exit status; `console` is the interactive program.
int Main(const std::vector<std::string>& words, const std::function<int()>& console);

}  // namespace runner
