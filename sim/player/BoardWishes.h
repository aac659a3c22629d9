// What a playback run finds on the board: its clock, and the faults that `cvnsim` and the scenario
// inject.
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

/// Queries the board that CVNSIM_STATE names. If no board was started, nothing goes wrong and the
/// clock is the same in every run: golden data are made in this way. Throws std::runtime_error if
/// the file is not a board's.
BoardWishes AskBoard();

}  // namespace player
