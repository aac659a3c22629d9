// Digests of data that must not be recorded.
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

/// SHA-256 of the concatenated `parts`. Implemented here because the recorder must not load another
/// library into the program that it records.
Sha256Digest Sha256(std::span<const std::span<const uint8_t>> parts);

/// The first bytes of the SHA-256 of `salt` followed by `size` bytes of `data`.
ShortDigest SaltedDigest(const Salt& salt, const void* data, size_t size);

}  // namespace record
