// What the rest of the board sees of the HDMI receiver.
#pragma once

#include "core/Board.h"

namespace sim {

/// The picture of the lowest connected port with a signal; none: width 0.
Picture HdmiPicture(const HdmiReceiver& receiver);

}  // namespace sim
