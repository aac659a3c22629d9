// An authentication of HDCP 2.3 on HDMI: a source's transmitter and the board's receiver exchange
// the protocol's messages, each with what it alone knows.
#pragma once

#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

/// Makes the board's key set, once: a receiver key, and its certificate signed by an authority
/// that is forgotten afterwards. Takes some tenths of a second.
void MakeKeys(Hdcp2KeySet& keys);

/// Tells whether the certificate is signed by the authority and belongs to the receiver's key.
bool AreKeysRight(const Hdcp2KeySet& keys);

/// What a source is to the receiver.
struct Source {
  bool speaksHdcp2;
  uint8_t streamType;  // of what it plays
};

/// Runs an authentication on a port up to `state` and leaves the outcome in the port's status.
/// Returns K2V_RHAL_OK or K2V_RHAL_ERR_FAIL.
int Authenticate(Hdcp2& receiver, Hdcp2Port& port, const Source& source, uint32_t state);

}  // namespace sim::hdcp2
