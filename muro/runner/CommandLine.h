// What the program does with its arguments.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace runner {

/// Acts on the arguments and returns the exit status; `console` is the interactive program.
int Main(const std::vector<std::string>& words, const std::function<int()>& console);

}  // namespace runner
