// The time that a receiver takes to lock to a source that starts, or that changes its timing.
#pragma once

#include <cstdint>

#include "core/Board.h"

namespace sim {

/// Loses the lock for as long as the board says, from now on. `muted`: the source set AV mute
/// before, and the receiver still says so.
void LoseLock(const Board& board, SignalLock& lock, bool muted);

/// Counts a poll that found no timing.
void CountUnlockedPoll(SignalLock& lock);

/// Locks again when time and polls have passed. `nowMs` is simulated time.
void SettleLock(SignalLock& lock, int64_t nowMs);

}  // namespace sim
