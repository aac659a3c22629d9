// What a camera or a capture card makes of the panel's picture.
#pragma once

#include <span>
#include <string>

#include "Pixels.h"

namespace eyes {

/// The rig between panel and judgement: how captures differ from what is shown.
struct Rig {
  double gain = 1;
  double gamma = 1;     // exponent
  double vignette = 0;  // what the corners lack, of 1
  double hue = 0;       // degrees
  double right = 0;     // pixels of the judged picture by which captures are moved
  double down = 0;
};

/// How far the rig of a capture may differ from the assumed one.
struct RigBounds {
  double gain, gamma, vignette, hue, shift;
};

/// For a rig that nobody has measured, for one that was, and for measuring it.
constexpr RigBounds kUnknownRig = {0.065, 0.065, 0.12, 2.6, 1.3};
constexpr RigBounds kCalibratedRig = {0.02, 0.02, 0.025, 0.7, 0.5};
constexpr RigBounds kAnyRig = {0.4, 0.6, 0.5, 15, 6};

/// A rig's way to show colours, prepared for many of them.
class RigColors {
 public:
  explicit RigColors(const Rig& rig);

  /// What a colour of 0 to 255 becomes at a place whose squared distance from the centre is
  /// `distance` of the corners'.
  Rgb Seen(const Rgb& shown, double distance) const;

 private:
  Rig rig_;
  double cosine_, sine_;  // of the hue
};

/// An even part of the picture: what should be there and what is.
struct Patch {
  Rgb shown;
  Rgb seen;
  double distance;  // as above
};

/// Colours of the rig, within `bounds` of `rig`, with which the patches agree best.
Rig FitColors(std::span<const Patch> patches, const Rig& rig, const RigBounds& bounds);

/// Luma of the reference as the rig shows it, without its shift.
Plane SeenLuma(const Pixels& reference, const Rig& rig);

/// Measures by how much the capture is moved against the luma that is expected, from `rig` on, by
/// the pixels that are `judged` (1, others 0). Where these have no edges in a direction, the shift
/// of `rig` stays.
Rig FitShift(const Plane& expected, const Pixels& capture, const Plane& judged, const Rig& rig);

/// "gain 0.98, gamma 1.02, vignette 0.05, hue 1.2, right 0.50, down -0.25".
std::string Text(const Rig& rig);

}  // namespace eyes
