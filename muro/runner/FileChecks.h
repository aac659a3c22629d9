// Files of a run that would get into each other's way.
#pragma once

#include <string>

#include "Options.h"

namespace runner {

/// Looks whether a result would be written into a file that has another use: another result's, the
/// answers', the trace's, or one of the result directory's own. Returns what is wrong in one line,
/// empty when all is well.
std::string CheckFiles(const Options& options);

}  // namespace runner
