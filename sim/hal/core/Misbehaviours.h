// Calls that misbehave: crash, hang, flood.
#pragma once

namespace sim {

/// Counts a call of `function` and misbehaves if that was programmed; some ways never return. The
/// caller must not hold the board's lock.
void MisbehaveIfProgrammed(const char* function);

}  // namespace sim
