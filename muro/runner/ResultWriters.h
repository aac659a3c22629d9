// Results in the formats that other tools read.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "RunEvents.h"
#include "RunSettings.h"

namespace runner {

// A writer for each format: it creates or truncates the file `path`; "-" means the descriptor
// `standardOutput`. `Good` returns whether that succeeded.
#define RESULT_FORMAT(name, option, help) \
  std::unique_ptr<RunListener> Make##name##Writer(const std::string& path, int standardOutput);
#include "ResultFormats.def"

/// One writer for each requested output. `standardOutput` is the descriptor for "-".
std::vector<std::unique_ptr<RunListener>> MakeWriters(const Outputs& outputs, int standardOutput);

}  // namespace runner
