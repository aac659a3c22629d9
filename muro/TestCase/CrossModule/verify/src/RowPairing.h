// Finds the golden row of each dump row, within a stretch in which the files differ.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "FrameRows.h"

/// How certain it is that two rows are the same picture.
enum class Bond : uint8_t {
  kNone,
  kSame,   // pts and checksum are the same
  kMoved,  // the same as well, but in a different order
  kPlace,  // the pts or the input's checksum is the same, or the number if there is nothing else
  kShown,  // checksum and number are the same, the pts differs
};

/// The partner of a row in the other file.
struct Partner {
  static constexpr std::size_t kNobody = static_cast<std::size_t>(-1);

  Bond bond = Bond::kNone;
  std::size_t place = kNobody;  // index in the other stretch
};

/// The partners of both stretches' rows.
struct Pairing {
  std::vector<Partner> golden;
  std::vector<Partner> dump;
  std::vector<bool> repeats;  // dump rows that repeat the row just before
};

/// What is known before two stretches are paired.
struct PairingStart {
  std::optional<int32_t> frameOffset = {};  // difference of the dump's frame numbers
  bool pairsOnlyLikeStretches = false;      // leaves stretches with little in common unpaired
  bool firstBelongTogether = false;         // the first two rows are a pair
};

/// Pairs the rows of two stretches.
Pairing PairRows(const RowShape& shape, const std::deque<FrameRow>& golden,
                 const std::deque<FrameRow>& dump, const PairingStart& start);
