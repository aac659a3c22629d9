// Commands that run later: after a time, or at a poll of an HDMI port.
#pragma once

#include <cstdint>

#include "core/Board.h"

namespace sim {

/// CLOCK_MONOTONIC in nanoseconds.
int64_t MonotonicNs();

/// Simulated time since the power-on.
int64_t SimulatedMs(const Clock& clock);

/// Runs what is due by the clock, in the order of the due times.
void RunDueEvents(Board& board);

/// Counts a poll of the port's timing and runs the events that are due at it.
void CountPoll(Board& board, uint32_t port);

}  // namespace sim
