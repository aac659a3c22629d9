// Whether a capture shows the same picture as a reference.
#pragma once

#include <optional>

#include "Pixels.h"
#include "Rig.h"

namespace eyes {

/// Colour and structure are judged separately: colour in flat areas, structure at edges.
struct Likeness {
  Rig rig;               // with which the two agree best
  double color = 0;      // levels of 255 by which the worst flat area differs
  double structure = 0;  // levels by which the worst run along an edge differs
  double shift = 0;      // pixels beyond the rig's own shift
  size_t patches = 0;    // flat areas that were judged

  bool IsAlike() const;
};

constexpr double kMostColor = 10;
constexpr double kMostStructure = 22;
constexpr size_t kFewestPatches = 20;

/// What part of a picture is judged: a region, and within it the white parts of a mask of the same
/// size.
struct Judged {
  std::optional<Region> region;
  const Pixels* mask = nullptr;
};

/// Compares pictures of the same size. `rig` is the assumed rig of the capture, `bounds` is how far
/// the real one may differ from it.
Likeness Compare(const Pixels& reference, const Pixels& capture, const Judged& judged,
                 const Rig& rig, const RigBounds& bounds);

/// Measures the rig of a capture that shows the reference; nothing if it shows something else.
std::optional<Rig> Calibrate(const Pixels& reference, const Pixels& capture);

}  // namespace eyes
