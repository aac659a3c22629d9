// The time that a receiver takes to lock to a source that starts, or that changes its timing.
#pragma once

#include <cstdint>

#include "core/Board.h"

namespace sim {

/// Loses the lock now, for as long as the board's lock times specify. `muted`: the source set AV
/// mute before, and the receiver still reports it.
void LoseLock(const Board& board, SignalLock& lock, bool muted);

/// Counts a poll that found no timing.
void CountUnlockedPoll(SignalLock& lock);

/// Locks again once both the time and the polls have passed. `nowMs` is simulated time.
void SettleLock(SignalLock& lock, int64_t nowMs);

}  // namespace sim
