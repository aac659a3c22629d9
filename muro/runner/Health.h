// Checks whether the board is healthy, through a command that the operator names.
#pragma once

#include <string>

#include "RunSettings.h"

namespace runner {

/// Runs the command with CVN_TEST in its environment set to the last test's id (empty before the
/// first one). Returns why the board is unhealthy: the last line that the command printed, or how
/// it ended; empty if it is healthy or if there is no command.
std::string BoardProblem(const HealthSettings& health, const std::string& lastTest,
                         bool (*interrupted)());

}  // namespace runner
