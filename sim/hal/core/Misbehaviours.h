// Calls that go astray: what drivers do at night.
#pragma once

namespace sim {

/// Counts a call of `function` and goes astray where that was programmed. Returns where the way
/// leads back. The caller does not hold the board.
void MisbehaveIfProgrammed(const char* function);

}  // namespace sim
