// What both sides derive from the master key km and the numbers that they exchanged.
#pragma once

#include "hdcp2/Crypto.h"

namespace sim::hdcp2 {

/// Makes a key from the first bytes.
Key KeyFrom(View bytes);

/// dkey for a number: km and rn form the AES key, rtx, rrx and the number its counter.
Key DerivedKey(const Key& km, View rn, View rtx, View rrx, uint8_t number);

/// kd, 32 bytes.
Bytes SharedKey(const Key& km, View rtx, View rrx);

Hash HPrime(View kd, View rtx, View rxCaps, View txCaps);
Hash LPrime(View kd, View rrx, View rn);

/// kh, which only the receiver knows.
Key PairingKey(View privateExponent);

/// Ekh(km), with m = rtx and rrx as the counter; applied again, it restores km.
Bytes PairedKey(const Key& kh, const Key& m, View km);

/// Edkey(ks), with dkey 2; applied again, it restores ks.
Key MaskedSessionKey(const Key& ks, const Key& dkey2, View rrx);

/// V of a repeater's list; its upper half is sent with the list, the lower half acknowledges it.
Hash ListProof(View kd, View ids, View rxInfo, View sequence);

/// M of the streams and their types.
Hash StreamProof(View kd, View streams, View sequence);

/// The first bytes of the keystream that encrypts the picture.
Bytes Keystream(const Key& ks, View lc128, View riv);

}  // namespace sim::hdcp2
