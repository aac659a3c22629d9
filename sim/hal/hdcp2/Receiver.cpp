#include "hdcp2/Receiver.h"

#include <algorithm>
#include <iterator>

#include "hdcp2/Derivation.h"
#include "hdcp2/Keys.h"

namespace sim::hdcp2 {
namespace {

constexpr uint8_t kVersion = 2;         // of RxCaps
constexpr uint8_t kRepeaterBit = 0x01;  // of RxCaps

// How long each step takes, and how long if it is to be late, in us.
constexpr uint64_t kCertificateUs = 10'000, kLateCertificateUs = 150'000;
constexpr uint64_t kNewKmUs = 60'000, kLateNewKmUs = 1'200'000;
constexpr uint64_t kStoredKmUs = 20'000, kLateStoredKmUs = 250'000;
constexpr uint64_t kPairingUs = 10'000, kLatePairingUs = 250'000;
constexpr uint64_t kLocalityUs = 7'000, kLateLocalityUs = 25'000;
constexpr uint64_t kListUs = 50'000, kLateListUs = 3'200'000;
constexpr uint64_t kStreamsUs = 10'000, kLateStreamsUs = 150'000;

// RxInfo: depth in bits 9 to 11, devices in bits 4 to 8, and a bit for each exceeded maximum.
constexpr unsigned kTooManyBit = 3, kTooDeepBit = 2;

Bytes RxInfoOf(const Hdcp2Downstream& downstream) {
  const bool tooMany = downstream.devices > kHdcp2MostDevices;
  const bool tooDeep = downstream.depth > kHdcp2MostLevels;
  unsigned info = (tooMany ? 1U << kTooManyBit : 0) | (tooDeep ? 1U << kTooDeepBit : 0);
  if (!tooMany && !tooDeep) info = downstream.depth << 9U | downstream.devices << 4U;
  return {static_cast<uint8_t>(info >> 8), static_cast<uint8_t>(info)};
}

/// Ids of the devices downstream of the receiver; empty if there are too many.
Bytes IdsOf(const Hdcp2Downstream& downstream) {
  Bytes ids;
  const bool areTold =
      downstream.devices <= kHdcp2MostDevices && downstream.depth <= kHdcp2MostLevels;
  for (unsigned i = 0; areTold && i < downstream.devices; ++i) {
    const Bytes id = MakeReceiverId();
    ids.insert(ids.end(), id.begin(), id.end());
  }
  return ids;
}

Bytes BytesOf(View view) {
  return {view.begin(), view.end()};
}

}  // namespace

Receiver::Receiver(const Hdcp2& state, const Hdcp2Downstream& downstream, Faults& faults,
                   Channel& channel)
    : state_(state), downstream_(downstream), faults_(faults), channel_(channel) {
  channel.Connect([this](View message) { Take(message); });
}

void Receiver::Take(View message) {
  using Handler = void (Receiver::*)(View);
  static constexpr struct {
    MessageId id;
    Handler handler;
  } kHandlers[] = {
      {MessageId::kAkeInit, &Receiver::TakeInit},
      {MessageId::kAkeNoStoredKm, &Receiver::TakeNewKm},
      {MessageId::kAkeStoredKm, &Receiver::TakeStoredKm},
      {MessageId::kLcInit, &Receiver::TakeLocality},
      {MessageId::kSkeSendEks, &Receiver::TakeSessionKey},
      {MessageId::kAck, &Receiver::TakeAck},
      {MessageId::kStreamManage, &Receiver::TakeStreams},
  };
  for (const auto& [id, handler] : kHandlers) {
    if (IsMessage(message, id)) (this->*handler)(message);
  }
}

void Receiver::TakeInit(View message) {
  if (faults_.Happens(Hdcp2Fault::kSilent)) return;
  const auto [rtx, txCaps, nothing] = FieldsOf<kNonceBytes, kCapsBytes>(message);
  rtx_ = BytesOf(rtx);
  txCaps_ = BytesOf(txCaps);
  rrx_ = Random(kNonceBytes);
  rxCaps_ = {kVersion, 0, state_.repeater ? kRepeaterBit : uint8_t{0}};
  Bytes certificate(std::begin(state_.keys.certificate), std::end(state_.keys.certificate));
  if (faults_.Happens(Hdcp2Fault::kCertificate)) certificate[K2V_HDCP2_ID_BYTES] ^= 1;
  channel_.Answer(MakeMessage(MessageId::kAkeSendCert, {certificate, rrx_, rxCaps_}),
                  Delay(Hdcp2Fault::kLateCertificate, kCertificateUs, kLateCertificateUs));
}

void Receiver::TakeNewKm(View message) {
  const auto km = OaepDecrypt(state_.keys.receiver, message.subspan(1));
  if (!km || km->size() != K2V_HDCP2_AES_BYTES) return;
  km_ = KeyFrom(*km);
  AnswerHPrime(kNewKmUs, kLateNewKmUs);
  const Key m = KeyFrom(Joined({rtx_, rrx_}));
  const Bytes paired = PairedKey(PairingKey(state_.keys.receiver.privateExponent), m, km_);
  channel_.Answer(MakeMessage(MessageId::kAkeSendPairingInfo, {paired}),
                  Delay(Hdcp2Fault::kLatePairing, kPairingUs, kLatePairingUs));
}

void Receiver::TakeStoredKm(View message) {
  const auto [paired, m, nothing] = FieldsOf<K2V_HDCP2_AES_BYTES, K2V_HDCP2_AES_BYTES>(message);
  const Key kh = PairingKey(state_.keys.receiver.privateExponent);
  km_ = KeyFrom(PairedKey(kh, KeyFrom(m), paired));
  AnswerHPrime(kStoredKmUs, kLateStoredKmUs);
}

void Receiver::AnswerHPrime(uint64_t usualUs, uint64_t lateUs) {
  kd_ = SharedKey(km_, rtx_, rrx_);
  const Hash h = Spoilt(HPrime(kd_, rtx_, rxCaps_, txCaps_), Hdcp2Fault::kHPrime);
  channel_.Answer(MakeMessage(MessageId::kAkeSendHPrime, {h}),
                  Delay(Hdcp2Fault::kLateHPrime, usualUs, lateUs));
}

void Receiver::TakeLocality(View message) {
  rn_ = BytesOf(message.subspan(1));
  const Hash l = Spoilt(LPrime(kd_, rrx_, rn_), Hdcp2Fault::kLPrime);
  channel_.Answer(MakeMessage(MessageId::kLcSendLPrime, {l}),
                  Delay(Hdcp2Fault::kLateLPrime, kLocalityUs, kLateLocalityUs));
}

void Receiver::TakeSessionKey(View message) {
  const auto [masked, riv, nothing] = FieldsOf<K2V_HDCP2_AES_BYTES, kNonceBytes>(message);
  ks_ = MaskedSessionKey(KeyFrom(masked), DerivedKey(km_, rn_, rtx_, rrx_, 2), rrx_);
  if (faults_.Happens(Hdcp2Fault::kSessionKey)) ks_[0] ^= 1;
  riv_ = BytesOf(riv);
  if (state_.repeater) SendList();
}

void Receiver::SendList() {
  const Bytes ids = IdsOf(downstream_), rxInfo = RxInfoOf(downstream_), first(kSequenceBytes);
  list_ = ListProof(kd_, ids, rxInfo, first);
  const Hash told = Spoilt(list_, Hdcp2Fault::kVPrime);
  const View upperHalf = View(told).first(kHalfHashBytes);
  channel_.Answer(MakeMessage(MessageId::kReceiverIdList, {rxInfo, first, upperHalf, ids}),
                  Delay(Hdcp2Fault::kLateList, kListUs, kLateListUs));
}

void Receiver::TakeAck(View message) {
  listAccepted_ = std::ranges::equal(message.subspan(1), View(list_).last(kHalfHashBytes));
}

// A repeater whose list was not accepted does not answer about streams.
void Receiver::TakeStreams(View message) {
  if (!listAccepted_) return;
  const auto [sequence, count, streams] = FieldsOf<kSequenceBytes, kStreamBytes>(message);
  const Hash m = Spoilt(StreamProof(kd_, streams, sequence), Hdcp2Fault::kMPrime);
  channel_.Answer(MakeMessage(MessageId::kStreamReady, {m}),
                  Delay(Hdcp2Fault::kLateMPrime, kStreamsUs, kLateStreamsUs));
}

Bytes Receiver::PictureKeystream() const {
  return riv_.empty() ? Bytes() : Keystream(ks_, state_.keys.lc128, riv_);
}

Hash Receiver::Spoilt(Hash hash, Hdcp2Fault fault) const {
  if (faults_.Happens(fault)) hash[0] ^= 1;
  return hash;
}

uint64_t Receiver::Delay(Hdcp2Fault lateness, uint64_t usualUs, uint64_t lateUs) const {
  return faults_.Happens(lateness) ? lateUs : usualUs;
}

}  // namespace sim::hdcp2
