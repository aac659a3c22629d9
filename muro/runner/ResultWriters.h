// Results in the formats that other tools read.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "RunEvents.h"
#include "RunSettings.h"

namespace runner {

// A writer for each format: it makes the file `path` anew; "-" stands for the descriptor
// `standardOutput`. `Good` tells whether that went well.
#define RESULT_FORMAT(name, option, help) \
  std::unique_ptr<RunListener> Make##name##Writer(const std::string& path, int standardOutput);
#include "ResultFormats.def"

/// One writer for each output that is asked for. `standardOutput` is the descriptor behind "-".
std::vector<std::unique_ptr<RunListener>> MakeWriters(const Outputs& outputs, int standardOutput);

}  // namespace runner
