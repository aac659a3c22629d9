// What the rest of the board sees of the V-by-One receiver.
#pragma once

#include "core/Board.h"

namespace sim {

/// The picture of the connected input; none: width 0.
Picture Vby1Picture(const Vby1Receiver& receiver);

}  // namespace sim
