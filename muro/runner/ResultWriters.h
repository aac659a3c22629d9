// Results in the formats that other tools read.
#pragma once

#include <memory>
#include <vector>

#include "Options.h"
#include "RunEvents.h"

namespace runner {

/// One writer for each output that is asked for. `standardOutput` is the descriptor behind "-".
std::vector<std::unique_ptr<RunListener>> MakeWriters(const Outputs& outputs, int standardOutput);

}  // namespace runner
