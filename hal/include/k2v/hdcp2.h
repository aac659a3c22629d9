// HDCP 2.2/2.3 receiver on the HDMI ports 0 to 3: keys, authentication, and the cryptographic
// primitives that both are based on. Names of messages and values are those of the HDCP 2.3 on HDMI
// interface. Every function returns 0 or a failure code unless documented otherwise.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  K2V_HDCP2_ID_BYTES = 5,           // receiver id: 20 one bits
  K2V_HDCP2_AES_BYTES = 16,         // key and block
  K2V_HDCP2_HASH_BYTES = 32,        // SHA-256 and HMAC-SHA-256
  K2V_HDCP2_RSA_BYTES = 128,        // receiver's modulus, 1024 bits
  K2V_HDCP2_EXPONENT_BYTES = 3,     // public exponent, most significant byte first
  K2V_HDCP2_SIGNATURE_BYTES = 384,  // of the certificate, 3072 bits
  K2V_HDCP2_MAX_REVOKED = 16,
  K2V_HDCP2_MAX_RANDOM_BYTES = 4096,
  K2V_HDCP2_MAX_OAEP_BYTES = 62,  // message for RSA_BYTES and SHA-256
};

// RSA key pair of 1024 bits, numbers most significant byte first.
typedef struct {
  uint8_t modulus[K2V_HDCP2_RSA_BYTES];
  uint8_t publicExponent[K2V_HDCP2_EXPONENT_BYTES];
  uint8_t privateExponent[K2V_HDCP2_RSA_BYTES];
} K2V_HDCP2_RSA_KEY_T;

// Public data of the receiver's key set.
typedef struct {
  uint8_t bLoaded;
  uint8_t bVerified;
  uint8_t receiverId[K2V_HDCP2_ID_BYTES];
  uint8_t nVersion;  // HDCP version of RxCaps: 2
} K2V_HDCP2_KEY_INFO_T;

// Progress of an authentication.
enum {
  K2V_HDCP2_STATE_IDLE = 0,
  K2V_HDCP2_STATE_AKE = 1,            // authentication and key exchange done
  K2V_HDCP2_STATE_LOCALITY = 2,       // locality check done
  K2V_HDCP2_STATE_AUTHENTICATED = 3,  // session key exchanged
  K2V_HDCP2_STATE_STREAM = 4,         // the lists and streams of a repeater are settled too
  K2V_HDCP2_STATE_FAILED = 5,
};

// Why an authentication failed.
enum {
  K2V_HDCP2_REASON_NONE = 0,
  K2V_HDCP2_REASON_NO_KEYS = 1,        // the receiver has no keys loaded
  K2V_HDCP2_REASON_NO_SOURCE = 2,      // nothing plugged in, or the device does not support HDCP 2
  K2V_HDCP2_REASON_CERTIFICATE = 3,    // signature of the receiver's certificate
  K2V_HDCP2_REASON_REVOKED = 4,        // receiver id is on the revocation list
  K2V_HDCP2_REASON_H_PRIME = 5,        // H' is wrong
  K2V_HDCP2_REASON_L_PRIME = 6,        // L' is wrong
  K2V_HDCP2_REASON_LOCALITY_TIME = 7,  // L' came after its time limit
  K2V_HDCP2_REASON_SESSION_KEY = 8,    // the receiver cannot decrypt the picture
  K2V_HDCP2_REASON_V_PRIME = 9,        // V' of a repeater is wrong
  K2V_HDCP2_REASON_M_PRIME = 10,       // M' of a repeater is wrong
  K2V_HDCP2_REASON_NO_ANSWER = 11,     // the receiver did not answer, or exceeded a time limit
  K2V_HDCP2_REASON_TOPOLOGY = 12,      // too many devices or levels downstream of a repeater
};

typedef struct {
  uint32_t eState;      // K2V_HDCP2_STATE_*
  uint32_t eReason;     // K2V_HDCP2_REASON_*, of the last failure
  uint8_t bRepeater;    // the receiver announced itself as a repeater
  uint8_t nStreamType;  // 0: may be passed on to HDCP 1.x, 1: not; sent to repeaters only
  uint8_t bPaired;      // the key exchange used a key stored earlier
  uint8_t reserved;
  uint32_t nLocalityUs;  // from rn to L'
  uint8_t receiverId[K2V_HDCP2_ID_BYTES];
  uint8_t reserved2[3];
} K2V_HDCP2_STATUS_T;

int K2V_RHAL_HDCP2_Initialize(void);
int K2V_RHAL_HDCP2_Release(void);

// Key set of the receiver: loads it from the board's secure store, returns its public data, checks
// it against the authority's public key, and drops it from the receiver.
int K2V_RHAL_HDCP2_LoadKeys(void);
int K2V_RHAL_HDCP2_GetKeyInfo(K2V_HDCP2_KEY_INFO_T* info);
int K2V_RHAL_HDCP2_VerifyKeys(void);
int K2V_RHAL_HDCP2_EraseKeys(void);

// Receiver ids that are refused, `count` times K2V_HDCP2_ID_BYTES; 0: none.
int K2V_RHAL_HDCP2_SetRevocationList(const uint8_t* ids, uint32_t count);

// Sets whether the receiver announces itself as a repeater to its sources.
int K2V_RHAL_HDCP2_SetRepeater(uint32_t on);

// Makes the source at a port authenticate the receiver again, up to a state (K2V_HDCP2_STATE_AKE to
// K2V_HDCP2_STATE_STREAM; a receiver that is not a repeater ends with _AUTHENTICATED).
int K2V_RHAL_HDCP2_Authenticate(uint8_t port, uint32_t state);
int K2V_RHAL_HDCP2_GetStatus(uint8_t port, K2V_HDCP2_STATUS_T* status);
int K2V_RHAL_HDCP2_Deauthenticate(uint8_t port);

// Primitives. Sizes in bytes; a message may be empty (null with size 0).
int K2V_RHAL_HDCP2_Random(uint8_t* out, uint32_t size);
int K2V_RHAL_HDCP2_Sha256(const uint8_t* data, uint32_t size, uint8_t* digest);
int K2V_RHAL_HDCP2_HmacSha256(const uint8_t* key, uint32_t keySize, const uint8_t* data,
                              uint32_t size, uint8_t* mac);
int K2V_RHAL_HDCP2_AesCtr(const uint8_t* key, const uint8_t* counter, const uint8_t* in,
                          uint8_t* out, uint32_t size);
// RSAES-OAEP with SHA-256; the ciphertext has K2V_HDCP2_RSA_BYTES. `size` is that of the message;
// for decryption, the buffer's size before the call and the message's after it.
int K2V_RHAL_HDCP2_RsaOaepEncrypt(const K2V_HDCP2_RSA_KEY_T* key, const uint8_t* message,
                                  uint32_t size, uint8_t* ciphertext);
int K2V_RHAL_HDCP2_RsaOaepDecrypt(const K2V_HDCP2_RSA_KEY_T* key, const uint8_t* ciphertext,
                                  uint8_t* message, uint32_t* size);
// RSASSA-PKCS1-v1_5 with SHA-256, public exponent of K2V_HDCP2_EXPONENT_BYTES; the signature is as
// long as the modulus.
int K2V_RHAL_HDCP2_RsaVerify(const uint8_t* modulus, uint32_t modulusSize, const uint8_t* exponent,
                             const uint8_t* data, uint32_t size, const uint8_t* signature);

#ifdef __cplusplus
}

static_assert(sizeof(K2V_HDCP2_STATUS_T) == 24, "no hidden padding");
#endif
