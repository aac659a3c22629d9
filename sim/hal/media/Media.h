// The world around the board: `cvnsim` changes it for programs other than the HAL.
#pragma once

#include "core/Board.h"

namespace sim {

// None of these has an effect unless the state file is inside a board's root directory.

/// Updates the board's files to its state: the nodes of the USB stick exist or not, mounts of a
/// pulled stick are cut off, and marker files in the simulator's directory show what is out, down
/// or full.
void ShowOutside(const Board& board);

/// Clears what does not survive a loss of power: the files and drivers' nodes that the simulator's
/// directory lists in `volatile`.
void LoseVolatileFiles();

/// Makes the board's processors log their start.
void LogStart();

}  // namespace sim
