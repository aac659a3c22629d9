// Which row of a dump is which golden row, within a stretch where the files differ.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "FrameRows.h"

/// How sure it is that two rows are the same picture.
enum class Bond : uint8_t {
  kNone,
  kSame,   // pts and checksum are the same
  kMoved,  // the same too, at crossing places
  kPlace,  // the pts or the input's checksum is the same, or the number where nothing else can be
  kShown,  // checksum and number are the same, the pts is another one
};

/// What the other file has of a row.
struct Partner {
  static constexpr std::size_t kNobody = static_cast<std::size_t>(-1);

  Bond bond = Bond::kNone;
  std::size_t place = kNobody;  // in the other stretch
};

/// The partners of both stretches' rows.
struct Pairing {
  std::vector<Partner> golden;
  std::vector<Partner> dump;
  std::vector<bool> repeats;  // dump rows that show again what is just before
};

/// What is known before two stretches are paired.
struct PairingStart {
  std::optional<int32_t> frameOffset = {};  // how much higher the dump numbers its frames
  bool pairsOnlyLikeStretches = false;  // rows of stretches that have little in common stay alone
  bool firstBelongTogether = false;     // the first two rows are a pair
};

/// Pairs the rows of two stretches.
Pairing PairRows(const RowShape& shape, const std::deque<FrameRow>& golden,
                 const std::deque<FrameRow>& dump, const PairingStart& start);
