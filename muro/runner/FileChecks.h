// Detects conflicts between the files of a run.
#pragma once

#include <string>

#include "Options.h"

namespace runner {

/// Checks whether a result would be written into a file that has another use: another result, the
/// answers, the trace, or a file of the result directory. Returns a one-line error, empty on
/// success.
std::string CheckFiles(const Options& options);

}  // namespace runner
