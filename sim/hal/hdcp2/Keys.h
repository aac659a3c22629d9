// The board's key set.
#pragma once

#include "hdcp2/Crypto.h"
#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

/// Makes the board's key set unless it exists: a receiver key, and its certificate signed by an
/// authority whose private key is discarded. Takes some tenths of a second.
void MakeKeys(Hdcp2KeySet& keys);

/// Returns whether the certificate is signed by the authority and belongs to the receiver's key.
bool AreKeysRight(const Hdcp2KeySet& keys);

/// A new id of a receiver: K2V_HDCP2_ID_BYTES with as many ones as zeros.
Bytes MakeReceiverId();

}  // namespace sim::hdcp2
