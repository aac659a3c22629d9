// The world around the board: what `cvnsim` changes there is seen by programs that are no HAL.
#pragma once

#include "core/Board.h"

namespace sim {

/// Lets the board's files show the state: the nodes of the USB stick are there or gone, and the
/// simulator's directory marks what is down. Does nothing where the state file is not a board's.
void ShowOutside(const Board& board);

}  // namespace sim
