#include "interface/Digest.h"

#include <algorithm>
#include <bit>

namespace record {
namespace {

constexpr size_t kBlockBytes = 64;
constexpr size_t kLengthBytes = 8;

constexpr uint32_t kRound[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

class Sha256State {
 public:
  void Add(std::span<const uint8_t> data) {
    length_ += data.size();
    for (const uint8_t byte : data) AddByte(byte);
  }

  Sha256Digest End() {
    const uint64_t bits = length_ * 8;
    AddByte(0x80);
    while (used_ != kBlockBytes - kLengthBytes) AddByte(0);
    for (int shift = 56; shift >= 0; shift -= 8) AddByte(static_cast<uint8_t>(bits >> shift));
    Sha256Digest digest;
    for (size_t i = 0; i < digest.size(); ++i) {
      digest[i] = static_cast<uint8_t>(state_[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
  }

 private:
  void AddByte(uint8_t byte) {
    block_[used_++] = byte;
    if (used_ == kBlockBytes) Compress();
  }

  void Compress() {
    used_ = 0;
    uint32_t w[64];
    for (size_t i = 0; i < 16; ++i) {
      w[i] = uint32_t{block_[4 * i]} << 24 | uint32_t{block_[4 * i + 1]} << 16 |
             uint32_t{block_[4 * i + 2]} << 8 | block_[4 * i + 3];
    }
    for (size_t i = 16; i < 64; ++i) {
      const uint32_t a = w[i - 15], b = w[i - 2];
      w[i] = w[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) + w[i - 7] +
             (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state_;
    for (size_t i = 0; i < 64; ++i) {
      const uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                             ((e & f) ^ (~e & g)) + kRound[i] + w[i];
      const uint32_t second =
          (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
      h = g, g = f, f = e, e = d + first, d = c, c = b, b = a, a = first + second;
    }
    const uint32_t round[] = {a, b, c, d, e, f, g, h};
    for (size_t i = 0; i < state_.size(); ++i) state_[i] += round[i];
  }

  std::array<uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                    0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  uint8_t block_[kBlockBytes];
  size_t used_ = 0;
  uint64_t length_ = 0;
};

}  // namespace

Sha256Digest Sha256(std::span<const std::span<const uint8_t>> parts) {
  Sha256State state;
  for (const auto part : parts) state.Add(part);
  return state.End();
}

ShortDigest SaltedDigest(const Salt& salt, const void* data, size_t size) {
  const std::span<const uint8_t> parts[] = {salt, {static_cast<const uint8_t*>(data), size}};
  const Sha256Digest digest = Sha256(parts);
  ShortDigest kept;
  std::copy_n(digest.begin(), sizeof kept.bytes, kept.bytes);
  return kept;
}

}  // namespace record
