// The world around the board: `cvnsim` changes it for programs other than the HAL.
#pragma once

#include "core/Board.h"

namespace sim {

// None of these does anything where the state file is not a board's.

/// Lets the board's files show the state: the nodes of the USB stick are there or gone, what is
/// mounted of a pulled one is cut off, and the simulator's directory marks what is down.
void ShowOutside(const Board& board);

/// Clears what does not outlive the power: the files and drivers' nodes that the simulator's
/// directory lists in `volatile`.
void LoseVolatileFiles();

/// Lets the board's processors log their start.
void LogStart();

}  // namespace sim
