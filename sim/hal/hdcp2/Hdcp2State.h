// The state of the HDCP 2 receiver.
#pragma once

#include <cstdint>

#include "k2v/hdcp2.h"

namespace sim {

/// Certificate of the receiver: id, public key, two reserved bytes, the authority's signature.
constexpr unsigned kHdcp2SignedBytes =
    K2V_HDCP2_ID_BYTES + K2V_HDCP2_RSA_BYTES + K2V_HDCP2_EXPONENT_BYTES + 2;
constexpr unsigned kHdcp2CertificateBytes = kHdcp2SignedBytes + K2V_HDCP2_SIGNATURE_BYTES;

/// The board's key set, made when it is first needed, and the authority's public key.
struct Hdcp2KeySet {
  bool made;
  uint8_t certificate[kHdcp2CertificateBytes];
  K2V_HDCP2_RSA_KEY_T receiver;
  uint8_t authorityModulus[K2V_HDCP2_SIGNATURE_BYTES];
  uint8_t authorityExponent[K2V_HDCP2_EXPONENT_BYTES];
  uint8_t lc128[K2V_HDCP2_AES_BYTES];  // the secret constant of all devices of the authority
};

/// Faults of authentications on a port.
enum class Hdcp2Fault : uint8_t {
  kNone,
  kNoKeys,       // the receiver has lost its keys
  kRevoked,      // the source has the receiver in its revocation list
  kCertificate,  // one byte of the certificate is wrong
  kHPrime,       // H' is wrong; the following ones likewise
  kLPrime,
  kSessionKey,
  kVPrime,
  kMPrime,
  kSilent,           // no answer to AKE_Init
  kLateCertificate,  // this message exceeds its time limit; the following ones likewise
  kLateHPrime,
  kLatePairing,
  kLateLPrime,
  kLateList,
  kLateMPrime,
};

/// A programmed fault, and how many more times it happens; 0: always.
struct Hdcp2Order {
  Hdcp2Fault fault;
  uint32_t timesLeft;
};

/// The devices downstream of the receiver, if it is a repeater.
struct Hdcp2Downstream {
  unsigned devices;
  unsigned depth;  // levels
};
constexpr unsigned kHdcp2MostDevices = 31;
constexpr unsigned kHdcp2MostLevels = 4;

struct Hdcp2Port {
  Hdcp2Order order;
  Hdcp2Downstream downstream;
  K2V_HDCP2_STATUS_T status;
  // What a paired source has stored about the receiver: the master key, and that key encrypted with
  // the receiver's pairing key, with the counter for it.
  bool paired;
  uint8_t km[K2V_HDCP2_AES_BYTES];
  uint8_t pairingInfo[K2V_HDCP2_AES_BYTES];
  uint8_t pairingCounter[K2V_HDCP2_AES_BYTES];
};

struct Hdcp2 {
  bool initialized;
  bool loaded;
  bool verified;
  bool repeater;
  uint32_t revokedCount;
  uint8_t revoked[K2V_HDCP2_MAX_REVOKED][K2V_HDCP2_ID_BYTES];
  Hdcp2KeySet keys;
  Hdcp2Port ports[4];
};

}  // namespace sim
