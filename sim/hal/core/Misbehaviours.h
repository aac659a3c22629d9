// Calls that misbehave: crash, hang, flood.
#pragma once

namespace sim {

/// Counts a call of `function` and misbehaves if that was programmed. Returns where the way
/// leads back. The caller does not hold the board.
void MisbehaveIfProgrammed(const char* function);

}  // namespace sim
