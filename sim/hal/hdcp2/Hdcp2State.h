// What the HDCP 2 receiver keeps.
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
};

/// What goes wrong in authentications on a port.
enum class Hdcp2Fault : uint8_t {
  kNone,
  kHPrime,       // H' is wrong
  kLPrime,       // L' is wrong
  kLate,         // L' comes late
  kCertificate,  // a byte of the certificate is changed
  kSilent,       // no answer to AKE_Init
};

struct Hdcp2Port {
  Hdcp2Fault fault;
  K2V_HDCP2_STATUS_T status;
  // What the source has stored of the receiver, when it is paired: the master key, and that key
  // under the receiver's pairing key with the counter for it.
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
