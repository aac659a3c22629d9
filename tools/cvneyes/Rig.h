// What a camera or a capture card does to the panel's picture.
#pragma once

#include <span>
#include <string>

#include "Pixels.h"

namespace eyes {

/// The rig between panel and verdict: how captures differ from what is shown.
struct Rig {
  double gain = 1;
  double gamma = 1;     // exponent
  double vignette = 0;  // loss of light in the corners, 0 to 1
  double hue = 0;       // degrees
  double right = 0;     // shift of captures in pixels of the judged picture
  double down = 0;
};

/// How far the rig of a capture may differ from the assumed rig.
struct RigBounds {
  double gain, gamma, vignette, hue, shift;
};

/// For an unmeasured rig, for a calibrated one, and for measuring.
constexpr RigBounds kUnknownRig = {0.065, 0.065, 0.12, 2.6, 1.3};
constexpr RigBounds kCalibratedRig = {0.02, 0.02, 0.025, 0.7, 0.5};
constexpr RigBounds kAnyRig = {0.4, 0.6, 0.5, 15, 6};

/// The colour mapping of a rig, prepared for many colours.
class RigColors {
 public:
  explicit RigColors(const Rig& rig);

  /// The result for a colour of 0 to 255 at a place whose squared distance from the centre is
  /// `distance` times that of the corners.
  Rgb Seen(const Rgb& shown, double distance) const;

 private:
  Rig rig_;
  double cosine_, sine_;  // of the hue
};

/// A flat area of the picture: the expected and the actual colour.
struct Patch {
  Rgb shown;
  Rgb seen;
  double distance;  // as above
};

/// The colour parameters, within `bounds` of `rig`, that fit the patches best.
Rig FitColors(std::span<const Patch> patches, const Rig& rig, const RigBounds& bounds);

/// Luma of the reference as seen through the rig, without its shift.
Plane SeenLuma(const Pixels& reference, const Rig& rig);

/// Measures the shift of the capture against the expected luma, starting from `rig`, using the
/// pixels that are `judged` (1, others 0). If these have no edges in a direction, the shift of
/// `rig` is kept.
Rig FitShift(const Plane& expected, const Pixels& capture, const Plane& judged, const Rig& rig);

/// "gain 0.98, gamma 1.02, vignette 0.05, hue 1.2, right 0.50, down -0.25".
std::string Text(const Rig& rig);

}  // namespace eyes
