// Published known answers of the primitives that HDCP 2 is based on, and RSA answers of an
// independent implementation.
#pragma once

#include <span>
#include <string_view>

#include "k2v/hdcp2.h"

namespace known_answers {

using Bytes = std::span<const uint8_t>;

/// SHA-256 of ASCII messages: FIPS 180-4, examples with one block, with two, and with an empty
/// message.
struct DigestAnswer {
  std::string_view message;
  std::string_view digest;  // hexadecimal
};
std::span<const DigestAnswer> Sha256Answers();

/// HMAC-SHA-256: RFC 4231, test cases 1, 2 and 6. The key is `keyByte`, `keySize` times, or
/// `keyText`.
struct MacAnswer {
  uint8_t keyByte;
  uint32_t keySize;
  std::string_view keyText;
  std::string_view message;
  std::string_view mac;  // hexadecimal
};
std::span<const MacAnswer> HmacAnswers();

/// AES-128 in counter mode: NIST SP 800-38A, F.5.1, four blocks.
struct CtrAnswer {
  Bytes key;
  Bytes counter;
  Bytes plaintext;
  Bytes ciphertext;
};
CtrAnswer AesCtrAnswer();

/// RSA of 1024 bits, by the openssl program: a message, its RSAES-OAEP ciphertext (SHA-256) and its
/// RSASSA-PKCS1-v1_5 signature (SHA-256).
struct RsaAnswer {
  K2V_HDCP2_RSA_KEY_T key;
  Bytes message;
  Bytes ciphertext;
  Bytes signature;
};
RsaAnswer RsaAnswers();

}  // namespace known_answers
