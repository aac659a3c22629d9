// An authentication of HDCP 2.3 on HDMI: a source's transmitter and the board's receiver exchange
// the protocol's messages, each using only its own secrets.
#pragma once

#include "hdcp2/Channel.h"
#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

/// A source as the receiver sees it.
struct Source {
  bool speaksHdcp2;
  uint8_t streamType;  // of the content that it plays
};

/// Runs an authentication on a port up to `state` and stores in `port` the resulting status, what
/// the source remembers for pairing, and the remaining programmed faults. Returns K2V_RHAL_OK or
/// K2V_RHAL_ERR_FAIL.
int Authenticate(const Hdcp2& receiver, Hdcp2Port& port, const Source& source, uint32_t state,
                 Channel& channel);

}  // namespace sim::hdcp2
