// Whether a capture shows the same picture as a reference.
#pragma once

#include <optional>

#include "Pixels.h"
#include "Rig.h"

namespace eyes {

/// Colour and structure are judged apart: colour where the reference is even, structure at edges.
struct Likeness {
  Rig rig;               // with which the two agree best
  double color = 0;      // levels of 255 by which the worst even part differs
  double structure = 0;  // levels by which the worst line of edges differs
  double shift = 0;      // pixels more than the rig's own
  size_t patches = 0;    // even parts that were judged

  bool IsAlike() const;
};

constexpr double kMostColor = 10;
constexpr double kMostStructure = 22;
constexpr size_t kFewestPatches = 20;

/// What of a picture is judged: a region, and in it the white parts of a mask of the same size.
struct Judged {
  std::optional<Region> region;
  const Pixels* mask = nullptr;
};

/// Compares pictures of the same size. `rig` is the capture's as far as it is known, `bounds` how
/// far it may be off.
Likeness Compare(const Pixels& reference, const Pixels& capture, const Judged& judged,
                 const Rig& rig, const RigBounds& bounds);

/// Measures the rig of a capture that shows the reference. Nothing where it shows something else.
std::optional<Rig> Calibrate(const Pixels& reference, const Pixels& capture);

}  // namespace eyes
