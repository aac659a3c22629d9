// Commands that happen later: after a time, or at a poll of an HDMI port.
#pragma once

#include <cstdint>

#include "core/Board.h"

namespace sim {

/// CLOCK_MONOTONIC in nanoseconds.
int64_t MonotonicNs();

/// Simulated time since the power-on.
int64_t SimulatedMs(const Clock& clock);

/// Does what is due by the clock, in the order of its times.
void RunDueEvents(Board& board);

/// Counts a poll of the port's timing and does what is due with it.
void CountPoll(Board& board, uint32_t port);

}  // namespace sim
