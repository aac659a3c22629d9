#include "hdcp2/Keys.h"

#include <algorithm>
#include <bit>

#include "hdcp2/Messages.h"

namespace sim::hdcp2 {
namespace {

constexpr unsigned kIdOnes = 20;  // one bits of a receiver id

/// Fills an array with the first bytes of `from`.
template <std::size_t size>
void CopyTo(uint8_t (&to)[size], View from) {
  std::copy_n(from.first(size).begin(), size, to);
}

}  // namespace

Bytes MakeReceiverId() {
  for (;;) {
    Bytes id = Random(K2V_HDCP2_ID_BYTES);
    unsigned ones = 0;
    for (const uint8_t byte : id) ones += static_cast<unsigned>(std::popcount(byte));
    if (ones == kIdOnes) return id;
  }
}

void MakeKeys(Hdcp2KeySet& keys) {
  if (keys.made) return;
  keys.receiver = MakeReceiverKey();
  const Bytes reserved(2);
  const Bytes signedPart =
      Joined({MakeReceiverId(), keys.receiver.modulus, keys.receiver.publicExponent, reserved});
  const SignedByNewKey made = SignWithNewKey(signedPart);
  CopyTo(keys.certificate, Joined({signedPart, made.signature}));
  CopyTo(keys.authorityModulus, made.modulus);
  CopyTo(keys.authorityExponent, made.exponent);
  CopyTo(keys.lc128, Random(K2V_HDCP2_AES_BYTES));
  keys.made = true;
}

bool AreKeysRight(const Hdcp2KeySet& keys) {
  const View certificate(keys.certificate);
  if (!VerifySignature({keys.authorityModulus, keys.authorityExponent},
                       certificate.first(kHdcp2SignedBytes),
                       certificate.subspan(kHdcp2SignedBytes))) {
    return false;
  }
  const Bytes message = Random(K2V_HDCP2_AES_BYTES);
  const auto encrypted = OaepEncrypt(
      {certificate.subspan(K2V_HDCP2_ID_BYTES, K2V_HDCP2_RSA_BYTES),
       certificate.subspan(K2V_HDCP2_ID_BYTES + K2V_HDCP2_RSA_BYTES, K2V_HDCP2_EXPONENT_BYTES)},
      message);
  return encrypted && OaepDecrypt(keys.receiver, *encrypted) == message;
}

}  // namespace sim::hdcp2
