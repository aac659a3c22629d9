// The cryptographic primitives of HDCP 2, implemented with libcrypto.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "k2v/hdcp2.h"

namespace sim::hdcp2 {

using Bytes = std::vector<uint8_t>;
using View = std::span<const uint8_t>;
using Key = std::array<uint8_t, K2V_HDCP2_AES_BYTES>;
using Hash = std::array<uint8_t, K2V_HDCP2_HASH_BYTES>;

/// Public key: modulus and exponent, most significant byte first.
struct PublicKey {
  View modulus;
  View exponent;
};

Bytes Random(std::size_t size);
Hash Sha256(View data);
Hash HmacSha256(View key, View data);

/// AES-128 in counter mode; encrypts and decrypts.
Bytes AesCtr(const Key& key, const Key& counter, View data);

/// RSAES-OAEP with SHA-256; nothing if the key or the data cannot be used.
std::optional<Bytes> OaepEncrypt(const PublicKey& key, View message);
std::optional<Bytes> OaepDecrypt(const K2V_HDCP2_RSA_KEY_T& key, View ciphertext);

/// Checks an RSASSA-PKCS1-v1_5 signature with SHA-256.
bool VerifySignature(const PublicKey& key, View data, View signature);

/// A new receiver key pair.
K2V_HDCP2_RSA_KEY_T MakeReceiverKey();

/// Signs `data` with a new key pair of 3072 bits and discards its private half.
struct SignedByNewKey {
  Bytes modulus;
  Bytes exponent;
  Bytes signature;
};
SignedByNewKey SignWithNewKey(View data);

}  // namespace sim::hdcp2
