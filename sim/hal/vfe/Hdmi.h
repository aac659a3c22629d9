// What the rest of the board sees of the HDMI receiver.
#pragma once

#include "core/Board.h"

namespace sim {

/// A source is plugged into the port, sees its hot-plug line raised and sends, and the receiver has
/// locked to it.
bool HasSignal(const HdmiPort& port);

/// The picture of the lowest connected port with a signal; none: width 0.
Picture HdmiPicture(const HdmiReceiver& receiver);

}  // namespace sim
