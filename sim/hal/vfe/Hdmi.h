// What the rest of the board sees of the HDMI receiver.
#pragma once

#include "core/Board.h"

namespace sim {

/// Whether a source is plugged into the port, its hot-plug line is raised, it sends what the link
/// carries, and the receiver has locked to it.
bool HasSignal(const HdmiPort& port);

/// The picture of the lowest connected port with a signal; width 0 if there is none.
Picture HdmiPicture(const HdmiReceiver& receiver);

}  // namespace sim
