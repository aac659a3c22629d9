// Aligns two sequences of keys: finds the entries of one that correspond to entries of the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Indexes of two corresponding entries.
struct KeyPair {
  std::size_t golden;
  std::size_t dump;

  bool operator==(const KeyPair&) const = default;
};

/// Aligns the keys: the pairs have equal keys and ascend on both sides. Keys that occur exactly
/// once on both sides are anchors; between them the shortest edit is searched, up to a limit of
/// edits beyond which a stretch stays unaligned. The time is that of sorting; memory is linear.
std::vector<KeyPair> AlignKeys(std::span<const uint64_t> golden, std::span<const uint64_t> dump);

/// Number of keys of the dump that golden contains too; may include a few that it does not contain.
std::size_t CountCommonKeys(std::span<const uint64_t> golden, std::span<const uint64_t> dump);
