// Whether the board is well, by a command of the operator's.
#pragma once

#include <string>

#include "RunSettings.h"

namespace runner {

/// Runs the command with the last test's id (empty before the first one) as CVN_TEST in its
/// environment. Returns why the board is not well: the last line that the command printed, or how
/// it ended; empty when it is well, or when there is no command.
std::string BoardProblem(const HealthSettings& health, const std::string& lastTest,
                         bool (*interrupted)());

}  // namespace runner
