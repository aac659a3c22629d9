#include "hdcp2/Derivation.h"

#include <algorithm>

#include "hdcp2/Messages.h"

namespace sim::hdcp2 {
namespace {

/// `value` with its last bytes XORed with `mask`.
template <typename Value>
Value Masked(Value value, View mask) {
  const auto end = value.end() - static_cast<std::ptrdiff_t>(mask.size());
  std::transform(mask.begin(), mask.end(), end, end,
                 [](uint8_t a, uint8_t b) { return static_cast<uint8_t>(a ^ b); });
  return value;
}

Bytes BytesOf(View view) {
  return {view.begin(), view.end()};
}

}  // namespace

Key KeyFrom(View bytes) {
  Key key{};
  std::ranges::copy(bytes.first(key.size()), key.begin());
  return key;
}

Key DerivedKey(const Key& km, View rn, View rtx, View rrx, uint8_t number) {
  const uint8_t last[] = {number};
  const Key counter = KeyFrom(Joined({rtx, Masked(BytesOf(rrx), last)}));
  return KeyFrom(AesCtr(Masked(km, rn), counter, Key{}));
}

Bytes SharedKey(const Key& km, View rtx, View rrx) {
  return Joined({DerivedKey(km, {}, rtx, rrx, 0), DerivedKey(km, {}, rtx, rrx, 1)});
}

Hash HPrime(View kd, View rtx, View rxCaps, View txCaps) {
  return HmacSha256(kd, Joined({rtx, rxCaps, txCaps}));
}

Hash LPrime(View kd, View rrx, View rn) {
  return HmacSha256(Masked(BytesOf(kd), rrx), rn);
}

Key PairingKey(View privateExponent) {
  return KeyFrom(View(Sha256(privateExponent)).last(kHalfHashBytes));
}

Bytes PairedKey(const Key& kh, const Key& m, View km) {
  return AesCtr(kh, m, km);
}

Key MaskedSessionKey(const Key& ks, const Key& dkey2, View rrx) {
  return Masked(ks, Masked(dkey2, rrx));
}

Hash ListProof(View kd, View ids, View rxInfo, View sequence) {
  return HmacSha256(kd, Joined({ids, rxInfo, sequence}));
}

Hash StreamProof(View kd, View streams, View sequence) {
  return HmacSha256(Sha256(kd), Joined({streams, sequence}));
}

Bytes Keystream(const Key& ks, View lc128, View riv) {
  constexpr std::size_t kShown = 32;
  Key counter{};
  std::ranges::copy(riv, counter.begin());
  return AesCtr(Masked(ks, lc128), counter, Bytes(kShown));
}

}  // namespace sim::hdcp2
