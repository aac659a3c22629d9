// Programmed failures: a HAL function returns a code instead of doing its work.
#pragma once

#include <optional>
#include <string>

#include "core/Board.h"

namespace sim {

/// Counts a call of `function` and returns the code programmed for it, if any.
std::optional<int32_t> TakeFailure(Board& board, const char* function);

/// Throws a CommandError for a name that is not a HAL function.
void CheckFunction(const std::string& name);

}  // namespace sim
