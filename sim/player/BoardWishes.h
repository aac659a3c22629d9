// What is to go wrong in a playing, as `cvnsim` and the scenario set it on the board.
#pragma once

#include <vector>

#include "Defect.h"

namespace player {

struct BoardWishes {
  std::vector<Defect> defects;
  bool diskIsFull = false;
};

/// Asks the board that CVNSIM_STATE names; nothing goes wrong where no board was started. Throws
/// std::runtime_error when the file is no board's.
BoardWishes AskBoard();

}  // namespace player
