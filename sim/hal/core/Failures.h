// Programmed failures: a HAL function answers a code instead of doing its work.
#pragma once

#include <optional>
#include <string>

#include "core/Board.h"

namespace sim {

/// Counts a call of `function` and gives the code it has to answer, if one was programmed for it.
std::optional<int32_t> TakeFailure(Board& board, const char* function);

/// Throws a CommandError for a name that is not a HAL function.
void CheckFunction(const std::string& name);

}  // namespace sim
