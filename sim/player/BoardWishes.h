// What a playing finds on the board: its clock, and what `cvnsim` and the scenario let go wrong.
#pragma once

#include <vector>

#include "Defect.h"
#include "StageFacts.h"

namespace player {

struct BoardWishes {
  std::vector<Defect> defects;
  bool diskIsFull = false;
  RunClock clock = {};
};

/// Asks the board that CVNSIM_STATE names. Where no board was started nothing goes wrong, and the
/// clock is the same in every playing: golden data are made so. Throws
/// std::runtime_error if the file is not a board's.
BoardWishes AskBoard();

}  // namespace player
