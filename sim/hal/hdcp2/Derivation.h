// What both sides derive from the master key km and the numbers that they sent each other.
#pragma once

#include "hdcp2/Crypto.h"

namespace sim::hdcp2 {

/// The first bytes as a key.
Key KeyFrom(View bytes);

/// dkey of a number: km and rn make the AES key, rtx, rrx and the number its counter.
Key DerivedKey(const Key& km, View rn, View rtx, View rrx, uint8_t number);

/// kd, 32 bytes.
Bytes SharedKey(const Key& km, View rtx, View rrx);

Hash HPrime(View kd, View rtx, View rxCaps, View txCaps);
Hash LPrime(View kd, View rrx, View rn);

/// kh, which the receiver alone knows.
Key PairingKey(View privateExponent);

/// Ekh(km), with m = rtx and rrx as the counter; the same again gives km back.
Bytes PairedKey(const Key& kh, const Key& m, View km);

/// Edkey(ks), with dkey 2; the same again gives ks back.
Key MaskedSessionKey(const Key& ks, const Key& dkey2, View rrx);

/// V of a repeater's list; its upper half goes out with the list, the lower half comes back.
Hash ListProof(View kd, View ids, View rxInfo, View sequence);

/// M of the streams and their types.
Hash StreamProof(View kd, View streams, View sequence);

/// The first bytes by which the picture is encrypted.
Bytes Keystream(const Key& ks, View lc128, View riv);

}  // namespace sim::hdcp2
