// What the rest of the board sees of the V-by-One receiver.
#pragma once

#include "core/Board.h"

namespace sim {

/// The picture of the connected input; width 0 if there is none.
Picture Vby1Picture(const Vby1Receiver& receiver);

}  // namespace sim
