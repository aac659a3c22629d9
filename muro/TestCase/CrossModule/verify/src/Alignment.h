// Aligns two sequences of keys: which entry of one is which of the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Places of two entries that belong together.
struct KeyPair {
  std::size_t golden;
  std::size_t dump;

  bool operator==(const KeyPair&) const = default;
};

/// Aligns the keys: the pairs have equal keys and ascend on both sides. Keys that occur once on
/// both sides are the anchors; between them the shortest edit is looked for, up to a limit of
/// edits beyond which a stretch stays unaligned. Time is that of sorting, memory is linear.
std::vector<KeyPair> AlignKeys(std::span<const uint64_t> golden, std::span<const uint64_t> dump);

/// How many keys of the dump golden has too; a few that it does not have may be among them.
std::size_t CountCommonKeys(std::span<const uint64_t> golden, std::span<const uint64_t> dump);
