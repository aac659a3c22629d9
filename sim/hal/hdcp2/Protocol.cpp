#include "hdcp2/Protocol.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <initializer_list>

#include "hdcp2/Crypto.h"

namespace sim::hdcp2 {
namespace {

constexpr std::size_t kNonceBytes = 8;  // rtx, rrx, rn, riv
constexpr unsigned kIdOnes = 20;        // one bits of a receiver id
constexpr uint8_t kVersion = 2;         // of RxCaps and TxCaps
constexpr uint8_t kRepeaterBit = 0x01;  // of RxCaps
constexpr uint32_t kLocalityLimitUs = 20'000;
constexpr uint32_t kUsualLocalityUs = 7'000;
constexpr uint32_t kLateLocalityUs = 25'000;
constexpr std::size_t kHalfHash = K2V_HDCP2_HASH_BYTES / 2;

Bytes Joined(std::initializer_list<View> parts) {
  Bytes all;
  for (const View part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// Fills an array with the first bytes of `from`.
template <std::size_t size>
void CopyTo(uint8_t (&to)[size], View from) {
  std::copy_n(from.first(size).begin(), size, to);
}

/// `value` with `mask` laid over its last bytes by exclusive or.
template <typename Value>
Value Masked(Value value, View mask) {
  std::transform(mask.begin(), mask.end(), value.end() - static_cast<std::ptrdiff_t>(mask.size()),
                 value.end() - static_cast<std::ptrdiff_t>(mask.size()),
                 [](uint8_t a, uint8_t b) { return static_cast<uint8_t>(a ^ b); });
  return value;
}

Key KeyFrom(View bytes) {
  Key key{};
  std::ranges::copy(bytes.first(key.size()), key.begin());
  return key;
}

/// The derived key number `index`: km and rn make the AES key, rtx, rrx and the index its counter.
Key DerivedKey(const Key& km, View rn, View rtx, View rrx, uint8_t index) {
  const uint8_t last[] = {index};
  const Key counter = KeyFrom(Joined({rtx, Masked(Bytes(rrx.begin(), rrx.end()), last)}));
  const Key zeros{};
  return KeyFrom(AesCtr(Masked(km, rn), counter, zeros));
}

uint8_t RxCapsMask(bool repeater) {
  return repeater ? kRepeaterBit : 0;
}

/// The receiver's half. It knows its private key, and no secret of the source.
class Receiver {
 public:
  Receiver(const Hdcp2& state, Hdcp2Fault fault) : state_(state), fault_(fault) {}

  struct Certificate {
    Bytes certrx;
    Bytes rrx;
    Bytes rxCaps;
  };

  /// Answers AKE_Init with AKE_Send_Cert.
  Certificate SendCertificate(View rtx, View txCaps) {
    rtx_.assign(rtx.begin(), rtx.end());
    txCaps_.assign(txCaps.begin(), txCaps.end());
    rrx_ = Random(kNonceBytes);
    rxCaps_ = {kVersion, 0, RxCapsMask(state_.repeater)};
    Bytes certrx(std::begin(state_.keys.certificate), std::end(state_.keys.certificate));
    if (fault_ == Hdcp2Fault::kCertificate) certrx[K2V_HDCP2_ID_BYTES] ^= 1;
    return {certrx, rrx_, rxCaps_};
  }

  /// Takes AKE_No_Stored_km; false when the master key cannot be read.
  bool TakeMasterKey(View encryptedKm) {
    const auto km = OaepDecrypt(state_.keys.receiver, encryptedKm);
    if (!km || km->size() != K2V_HDCP2_AES_BYTES) return false;
    km_ = KeyFrom(*km);
    return true;
  }

  /// Takes AKE_Stored_km: the master key under the receiver's own pairing key.
  void TakeStoredMasterKey(View encryptedKm, const Key& m) {
    km_ = KeyFrom(AesCtr(PairingKey(), m, encryptedKm));
  }

  /// Ekh(km) of AKE_Send_Pairing_Info.
  Bytes PairingInfo(const Key& m) const { return AesCtr(PairingKey(), m, km_); }

  /// AKE_Send_H_prime.
  Hash SendHPrime() const {
    return Spoilt(HmacSha256(Kd(), Joined({rtx_, rxCaps_, txCaps_})), Hdcp2Fault::kHPrime);
  }

  /// Answers LC_Init with LC_Send_L_prime.
  Hash SendLPrime(View rn) {
    rn_.assign(rn.begin(), rn.end());
    return Spoilt(HmacSha256(Masked(Kd(), rrx_), rn), Hdcp2Fault::kLPrime);
  }

  uint32_t LocalityUs() const {
    return fault_ == Hdcp2Fault::kLate ? kLateLocalityUs : kUsualLocalityUs;
  }

  /// Takes SKE_Send_Eks and tells the session key that the picture is decrypted with.
  Key TakeSessionKey(const Key& edkey) const {
    return Masked(edkey, Masked(DerivedKey(km_, rn_, rtx_, rrx_, 2), rrx_));
  }

  /// V' of RepeaterAuth_Send_ReceiverID_List, of a list without devices.
  Hash SendVPrime(View list) const { return HmacSha256(Kd(), list); }

  /// M' of RepeaterAuth_Stream_Ready.
  Hash SendMPrime(View streams) const { return HmacSha256(Sha256(Kd()), streams); }

 private:
  Bytes Kd() const {
    return Joined({DerivedKey(km_, {}, rtx_, rrx_, 0), DerivedKey(km_, {}, rtx_, rrx_, 1)});
  }

  Key PairingKey() const {
    return KeyFrom(View(Sha256(state_.keys.receiver.privateExponent)).last(kHalfHash));
  }

  Hash Spoilt(Hash hash, Hdcp2Fault fault) const {
    if (fault_ == fault) hash[0] ^= 1;
    return hash;
  }

  const Hdcp2& state_;
  Hdcp2Fault fault_;
  Bytes rtx_;
  Bytes txCaps_;
  Bytes rrx_;
  Bytes rxCaps_;
  Bytes rn_;
  Key km_{};
};

/// The source's half. It knows the authority's public key, and no secret of the receiver.
class Transmitter {
 public:
  Transmitter(const Hdcp2& state, Hdcp2Port& port, uint8_t streamType)
      : state_(state), port_(port), streamType_(streamType) {}

  /// Authentication and key exchange. Returns a K2V_HDCP2_REASON_*.
  uint32_t ExchangeKeys(Receiver& receiver) {
    rtx_ = Random(kNonceBytes);
    const Receiver::Certificate answer = receiver.SendCertificate(rtx_, txCaps_);
    const View signedPart = View(answer.certrx).first(kHdcp2SignedBytes);
    const View id = signedPart.first(K2V_HDCP2_ID_BYTES);
    rrx_ = answer.rrx;
    repeater_ = (answer.rxCaps.back() & kRepeaterBit) != 0;
    if (!VerifySignature({state_.keys.authorityModulus, state_.keys.authorityExponent}, signedPart,
                         View(answer.certrx).subspan(kHdcp2SignedBytes))) {
      return K2V_HDCP2_REASON_CERTIFICATE;
    }
    if (IsRevoked(id)) return K2V_HDCP2_REASON_REVOKED;
    CopyTo(port_.status.receiverId, id);
    port_.status.bRepeater = repeater_;
    if (!SendMasterKey(receiver, signedPart.subspan(K2V_HDCP2_ID_BYTES))) {
      return K2V_HDCP2_REASON_H_PRIME;
    }
    kd_ = Joined({DerivedKey(km_, {}, rtx_, rrx_, 0), DerivedKey(km_, {}, rtx_, rrx_, 1)});
    const Hash h = HmacSha256(kd_, Joined({rtx_, answer.rxCaps, txCaps_}));
    if (receiver.SendHPrime() != h) {
      port_.paired = false;
      return K2V_HDCP2_REASON_H_PRIME;
    }
    StorePairing(receiver);
    return K2V_HDCP2_REASON_NONE;
  }

  uint32_t CheckLocality(Receiver& receiver) {
    rn_ = Random(kNonceBytes);
    const Hash answer = receiver.SendLPrime(rn_);
    port_.status.nLocalityUs = receiver.LocalityUs();
    if (port_.status.nLocalityUs > kLocalityLimitUs) return K2V_HDCP2_REASON_LOCALITY_TIME;
    const Hash l = HmacSha256(Masked(kd_, rrx_), rn_);
    return answer == l ? K2V_HDCP2_REASON_NONE : K2V_HDCP2_REASON_L_PRIME;
  }

  /// SKE_Send_Eks: nothing comes back, but a picture that the receiver cannot decrypt would show.
  uint32_t ExchangeSessionKey(Receiver& receiver) {
    const Key ks = KeyFrom(Random(K2V_HDCP2_AES_BYTES));
    const Key edkey = Masked(ks, Masked(DerivedKey(km_, rn_, rtx_, rrx_, 2), rrx_));
    return receiver.TakeSessionKey(edkey) == ks ? K2V_HDCP2_REASON_NONE
                                                : K2V_HDCP2_REASON_SESSION_KEY;
  }

  uint32_t ManageStreams(Receiver& receiver) {
    if (!repeater_) return K2V_HDCP2_REASON_NONE;
    const Bytes list = {0, 0, 0, 0, 0};  // RxInfo of no devices, and seq_num_V
    if (receiver.SendVPrime(list) != HmacSha256(kd_, list)) return K2V_HDCP2_REASON_V_PRIME;
    const Bytes streams = {0, streamType_, 0, 0, 0};  // one stream and its type, and seq_num_M
    if (receiver.SendMPrime(streams) != HmacSha256(Sha256(kd_), streams)) {
      return K2V_HDCP2_REASON_M_PRIME;
    }
    port_.status.nStreamType = streamType_;
    return K2V_HDCP2_REASON_NONE;
  }

 private:
  bool IsRevoked(View id) const {
    return std::any_of(state_.revoked, state_.revoked + state_.revokedCount,
                       [id](const auto& revoked) { return std::ranges::equal(revoked, id); });
  }

  // A source that knows the receiver sends the key that it stored, any other a new one under the
  // receiver's public key.
  bool SendMasterKey(Receiver& receiver, View publicKey) {
    port_.status.bPaired = port_.paired;
    if (port_.paired) {
      km_ = KeyFrom(port_.km);
      receiver.TakeStoredMasterKey(View(port_.pairingInfo), KeyFrom(port_.pairingCounter));
      return true;
    }
    km_ = KeyFrom(Random(K2V_HDCP2_AES_BYTES));
    const auto encrypted =
        OaepEncrypt({publicKey.first(K2V_HDCP2_RSA_BYTES),
                     publicKey.subspan(K2V_HDCP2_RSA_BYTES, K2V_HDCP2_EXPONENT_BYTES)},
                    km_);
    return encrypted && receiver.TakeMasterKey(*encrypted);
  }

  void StorePairing(const Receiver& receiver) {
    if (port_.paired) return;
    const Key m = KeyFrom(Joined({rtx_, rrx_}));
    CopyTo(port_.pairingInfo, receiver.PairingInfo(m));
    CopyTo(port_.pairingCounter, m);
    CopyTo(port_.km, km_);
    port_.paired = true;
  }

  const Hdcp2& state_;
  Hdcp2Port& port_;
  uint8_t streamType_;
  Bytes txCaps_ = {kVersion, 0, 0};
  Bytes rtx_;
  Bytes rrx_;
  Bytes rn_;
  Bytes kd_;
  Key km_{};
  bool repeater_ = false;
};

int Fail(K2V_HDCP2_STATUS_T& status, uint32_t reason) {
  status.eState = K2V_HDCP2_STATE_FAILED;
  status.eReason = reason;
  return K2V_RHAL_ERR_FAIL;
}

/// Five bytes with as many ones as zeros.
Bytes MakeReceiverId() {
  for (;;) {
    Bytes id = Random(K2V_HDCP2_ID_BYTES);
    unsigned ones = 0;
    for (const uint8_t byte : id) ones += static_cast<unsigned>(std::popcount(byte));
    if (ones == kIdOnes) return id;
  }
}

}  // namespace

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

int Authenticate(Hdcp2& receiver, Hdcp2Port& port, const Source& source, uint32_t state) {
  using Step = uint32_t (Transmitter::*)(Receiver&);
  static constexpr struct {
    uint32_t state;
    Step step;
  } kSteps[] = {
      {K2V_HDCP2_STATE_LOCALITY, &Transmitter::CheckLocality},
      {K2V_HDCP2_STATE_AUTHENTICATED, &Transmitter::ExchangeSessionKey},
      {K2V_HDCP2_STATE_STREAM, &Transmitter::ManageStreams},
  };
  port.status = {};
  if (!receiver.loaded) return Fail(port.status, K2V_HDCP2_REASON_NO_KEYS);
  if (!source.speaksHdcp2) return Fail(port.status, K2V_HDCP2_REASON_NO_SOURCE);
  if (port.fault == Hdcp2Fault::kSilent) return Fail(port.status, K2V_HDCP2_REASON_NO_ANSWER);
  Receiver answering(receiver, port.fault);
  Transmitter asking(receiver, port, source.streamType);
  if (const uint32_t reason = asking.ExchangeKeys(answering)) return Fail(port.status, reason);
  port.status.eState = K2V_HDCP2_STATE_AKE;
  for (const auto& [reached, step] : kSteps) {
    if (reached > state) break;
    if (const uint32_t reason = (asking.*step)(answering)) return Fail(port.status, reason);
    if (reached == K2V_HDCP2_STATE_STREAM && !receiver.repeater) break;
    port.status.eState = reached;
  }
  return K2V_RHAL_OK;
}

}  // namespace sim::hdcp2
