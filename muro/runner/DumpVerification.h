// Verifying the dumps of a playback test on any machine, without a board.
#pragma once

#include "Options.h"

namespace runner {

/// Verifies the dumps that the options name, prints the report and writes the results, one test per
/// stage. `standardOutput` is the descriptor for the output "-". Returns the exit status.
int VerifyDumps(const Options& options, int standardOutput);

}  // namespace runner
