#include "hdcp2/Transmitter.h"

#include <algorithm>
#include <optional>

#include "hdcp2/Derivation.h"

namespace sim::hdcp2 {
namespace {

constexpr uint8_t kRepeaterBit = 0x01;  // of RxCaps

// How long a source waits, us.
constexpr uint64_t kCertificateLimitUs = 100'000;
constexpr uint64_t kNewKmLimitUs = 1'000'000;
constexpr uint64_t kStoredKmLimitUs = 200'000;
constexpr uint64_t kPairingLimitUs = 200'000;
constexpr uint64_t kLocalityLimitUs = 20'000;
constexpr uint64_t kListLimitUs = 3'000'000;
constexpr uint64_t kStreamsLimitUs = 100'000;

constexpr int kLocalityAttempts = 16;  // a source may make up to 1024

template <std::size_t size>
void CopyTo(uint8_t (&to)[size], View from) {
  std::copy_n(from.first(size).begin(), size, to);
}

struct RxInfo {
  unsigned depth;
  unsigned devices;
  bool tooMuch;  // too many devices or levels, as reported by the repeater
};

RxInfo ReadRxInfo(View field) {
  const unsigned info = static_cast<unsigned>(field[0]) << 8U | field[1];
  return {info >> 9U & 7U, info >> 4U & 31U, (info & 0xCU) != 0};
}

}  // namespace

Transmitter::Transmitter(const Hdcp2& state, Hdcp2Port& port, uint8_t streamType, Faults& faults,
                         Channel& channel)
    : state_(state), port_(port), streamType_(streamType), faults_(faults), channel_(channel) {}

uint32_t Transmitter::ExchangeKeys() {
  rtx_ = Random(kNonceBytes);
  channel_.Write(MakeMessage(MessageId::kAkeInit, {rtx_, txCaps_}));
  const auto answer = channel_.Read(MessageId::kAkeSendCert, kCertificateLimitUs);
  if (!answer) return K2V_HDCP2_REASON_NO_ANSWER;
  const auto [certificate, rrx, rxCaps, nothing] =
      FieldsOf<kHdcp2CertificateBytes, kNonceBytes, kCapsBytes>(*answer);
  rrx_.assign(rrx.begin(), rrx.end());
  repeater_ = (rxCaps.back() & kRepeaterBit) != 0;
  if (const uint32_t reason = CheckCertificate(certificate)) return reason;
  return ProveMasterKey(certificate.subspan(K2V_HDCP2_ID_BYTES), rxCaps);
}

uint32_t Transmitter::CheckCertificate(View certificate) {
  const PublicKey authority = {state_.keys.authorityModulus, state_.keys.authorityExponent};
  if (!VerifySignature(authority, certificate.first(kHdcp2SignedBytes),
                       certificate.subspan(kHdcp2SignedBytes))) {
    return K2V_HDCP2_REASON_CERTIFICATE;
  }
  const View id = certificate.first(K2V_HDCP2_ID_BYTES);
  if (IsRevoked(id) || faults_.Happens(Hdcp2Fault::kRevoked)) return K2V_HDCP2_REASON_REVOKED;
  CopyTo(port_.status.receiverId, id);
  port_.status.bRepeater = repeater_;
  return K2V_HDCP2_REASON_NONE;
}

// A paired source sends the key that it stored, any other source a new one, encrypted with the
// receiver's public key. H' proves that the receiver could decrypt it.
uint32_t Transmitter::ProveMasterKey(View publicKey, View rxCaps) {
  const bool stored = port_.paired;
  port_.status.bPaired = stored;
  if (stored) {
    km_ = KeyFrom(port_.km);
    channel_.Write(MakeMessage(MessageId::kAkeStoredKm, {port_.pairingInfo, port_.pairingCounter}));
  } else {
    km_ = KeyFrom(Random(K2V_HDCP2_AES_BYTES));
    const auto encrypted =
        OaepEncrypt({publicKey.first(K2V_HDCP2_RSA_BYTES),
                     publicKey.subspan(K2V_HDCP2_RSA_BYTES, K2V_HDCP2_EXPONENT_BYTES)},
                    km_);
    if (!encrypted) return K2V_HDCP2_REASON_CERTIFICATE;
    channel_.Write(MakeMessage(MessageId::kAkeNoStoredKm, {*encrypted}));
  }
  const auto answer =
      channel_.Read(MessageId::kAkeSendHPrime, stored ? kStoredKmLimitUs : kNewKmLimitUs);
  if (!answer) return K2V_HDCP2_REASON_NO_ANSWER;
  kd_ = SharedKey(km_, rtx_, rrx_);
  if (!std::ranges::equal(View(*answer).subspan(1), HPrime(kd_, rtx_, rxCaps, txCaps_))) {
    port_.paired = false;
    return K2V_HDCP2_REASON_H_PRIME;
  }
  return stored ? uint32_t{K2V_HDCP2_REASON_NONE} : TakePairing();
}

uint32_t Transmitter::TakePairing() {
  const auto answer = channel_.Read(MessageId::kAkeSendPairingInfo, kPairingLimitUs);
  if (!answer) return K2V_HDCP2_REASON_NO_ANSWER;
  CopyTo(port_.pairingInfo, View(*answer).subspan(1));
  CopyTo(port_.pairingCounter, Joined({rtx_, rrx_}));
  CopyTo(port_.km, km_);
  port_.paired = true;
  return K2V_HDCP2_REASON_NONE;
}

uint32_t Transmitter::CheckLocality() {
  uint32_t reason = K2V_HDCP2_REASON_NONE;
  for (int attempt = 0; attempt < kLocalityAttempts && !channel_.IsBroken(); ++attempt) {
    reason = TryLocality();
    if (reason == K2V_HDCP2_REASON_NONE) break;
  }
  return reason;
}

uint32_t Transmitter::TryLocality() {
  rn_ = Random(kNonceBytes);
  const uint64_t sentUs = channel_.NowUs();
  channel_.Write(MakeMessage(MessageId::kLcInit, {rn_}));
  const auto answer = channel_.Read(MessageId::kLcSendLPrime, kLocalityLimitUs);
  port_.status.nLocalityUs = static_cast<uint32_t>(channel_.NowUs() - sentUs);
  if (!answer) return K2V_HDCP2_REASON_LOCALITY_TIME;
  return std::ranges::equal(View(*answer).subspan(1), LPrime(kd_, rrx_, rn_))
             ? K2V_HDCP2_REASON_NONE
             : K2V_HDCP2_REASON_L_PRIME;
}

// The receiver does not answer this message.
uint32_t Transmitter::SendSessionKey() {
  ks_ = KeyFrom(Random(K2V_HDCP2_AES_BYTES));
  riv_ = Random(kNonceBytes);
  const Key masked = MaskedSessionKey(ks_, DerivedKey(km_, rn_, rtx_, rrx_, 2), rrx_);
  channel_.Write(MakeMessage(MessageId::kSkeSendEks, {masked, riv_}));
  return K2V_HDCP2_REASON_NONE;
}

Bytes Transmitter::PictureKeystream() const {
  return Keystream(ks_, state_.keys.lc128, riv_);
}

uint32_t Transmitter::SettleStreams() {
  if (!repeater_) return K2V_HDCP2_REASON_NONE;
  const auto list = channel_.Read(MessageId::kReceiverIdList, kListLimitUs);
  if (!list) return K2V_HDCP2_REASON_NO_ANSWER;
  if (const uint32_t reason = CheckList(*list)) return reason;
  const Bytes first(kSequenceBytes), count = {0, 1}, stream = {0, streamType_};
  channel_.Write(MakeMessage(MessageId::kStreamManage, {first, count, stream}));
  const auto answer = channel_.Read(MessageId::kStreamReady, kStreamsLimitUs);
  if (!answer) return K2V_HDCP2_REASON_NO_ANSWER;
  if (!std::ranges::equal(View(*answer).subspan(1), StreamProof(kd_, stream, first))) {
    return K2V_HDCP2_REASON_M_PRIME;
  }
  port_.status.nStreamType = streamType_;
  return K2V_HDCP2_REASON_NONE;
}

// Acknowledges a valid list with the lower half of V.
uint32_t Transmitter::CheckList(View message) {
  const auto [rxInfo, sequence, upperHalf, ids] =
      FieldsOf<kRxInfoBytes, kSequenceBytes, kHalfHashBytes>(message);
  const RxInfo info = ReadRxInfo(rxInfo);
  if (info.tooMuch || info.depth > kHdcp2MostLevels || info.devices > kHdcp2MostDevices) {
    return K2V_HDCP2_REASON_TOPOLOGY;
  }
  const Hash proof = ListProof(kd_, ids, rxInfo, sequence);
  const bool isFirst = std::ranges::all_of(sequence, [](uint8_t byte) { return byte == 0; });
  if (!isFirst || ids.size() != std::size_t{info.devices} * K2V_HDCP2_ID_BYTES ||
      !std::ranges::equal(upperHalf, View(proof).first(kHalfHashBytes))) {
    return K2V_HDCP2_REASON_V_PRIME;
  }
  for (View rest = ids; !rest.empty(); rest = rest.subspan(K2V_HDCP2_ID_BYTES)) {
    if (IsRevoked(rest.first(K2V_HDCP2_ID_BYTES))) return K2V_HDCP2_REASON_REVOKED;
  }
  channel_.Write(MakeMessage(MessageId::kAck, {View(proof).last(kHalfHashBytes)}));
  return K2V_HDCP2_REASON_NONE;
}

bool Transmitter::IsRevoked(View id) {
  return std::any_of(state_.revoked, state_.revoked + state_.revokedCount,
                     [id](const auto& revoked) { return std::ranges::equal(revoked, id); });
}

}  // namespace sim::hdcp2
