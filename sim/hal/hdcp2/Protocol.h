// An authentication of HDCP 2.3 on HDMI: a source's transmitter and the board's receiver exchange
// the protocol's messages, each with what it alone knows.
#pragma once

#include "hdcp2/Channel.h"
#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

/// What a source is to the receiver.
struct Source {
  bool speaksHdcp2;
  uint8_t streamType;  // of what it plays
};

/// Runs an authentication on a port up to `state` and leaves the outcome in the port's status, with
/// what the source stored and what is left of ordered faults. Returns K2V_RHAL_OK or
/// K2V_RHAL_ERR_FAIL.
int Authenticate(const Hdcp2& receiver, Hdcp2Port& port, const Source& source, uint32_t state,
                 Channel& channel);

}  // namespace sim::hdcp2
