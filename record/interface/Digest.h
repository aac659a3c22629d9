// Digests of what must not be recorded itself.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace record {

using Sha256Digest = std::array<uint8_t, 32>;
using Salt = std::array<uint8_t, 16>;

/// Enough to distinguish two secrets of one recording.
struct ShortDigest {
  uint8_t bytes[8];
};

/// SHA-256 of `parts` one after the other. Written here because the recorder must not bring a
/// library along into the program that it watches.
Sha256Digest Sha256(std::span<const std::span<const uint8_t>> parts);

/// The first bytes of the SHA-256 of `salt` and `size` bytes.
ShortDigest SaltedDigest(const Salt& salt, const void* data, size_t size);

}  // namespace record
