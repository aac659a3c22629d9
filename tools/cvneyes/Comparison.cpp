#include "Comparison.h"

#include <algorithm>
#include <cmath>

namespace eyes {
namespace {

constexpr int kPatch = 8;    // width and height of a flat area in pixels
constexpr int kBorder = 6;   // pixels around it that must be flat, too
constexpr int kEven = 40;    // levels from the darkest to the brightest pixel of a flat area
constexpr int kMargin = 10;  // of the picture that is not judged, since captures are shifted
constexpr int kRun = 16;     // length in pixels of a run along an edge

// Tolerance for blur and compression, in percent of the range around an edge; for noise, in levels.
constexpr int kBlurPercent = 16;
constexpr int kNoise = 2;

/// The smallest or largest sample within `radius` of each, along rows and columns.
template <typename Choose>
Plane Spread(const Plane& plane, int width, int height, int radius, Choose choose) {
  Plane lines = plane;
  const auto rowAt = [&](Plane& of, int y) {
    return &of[static_cast<size_t>(y) * static_cast<size_t>(width)];
  };
  for (int y = 0; y < height; ++y) {
    const uint8_t* from = &plane[static_cast<size_t>(y) * static_cast<size_t>(width)];
    uint8_t* to = rowAt(lines, y);
    for (int by = 1; by <= radius; ++by) {
      for (int x = by; x < width; ++x) to[x] = choose(to[x], from[x - by]);
      for (int x = 0; x < width - by; ++x) to[x] = choose(to[x], from[x + by]);
    }
  }
  Plane all = lines;
  for (int y = 0; y < height; ++y) {
    uint8_t* to = rowAt(all, y);
    for (int other = std::max(0, y - radius); other <= std::min(height - 1, y + radius); ++other) {
      const uint8_t* from = rowAt(lines, other);
      for (int x = 0; x < width; ++x) to[x] = choose(to[x], from[x]);
    }
  }
  return all;
}

uint8_t Smaller(uint8_t a, uint8_t b) {
  return a < b ? a : b;
}
uint8_t Larger(uint8_t a, uint8_t b) {
  return a < b ? b : a;
}

/// 1 for the pixels that are judged.
Plane JudgedPixels(const Pixels& reference, const Judged& judged) {
  Plane pixels(reference.Count(), 0);
  const Region whole = {kMargin, kMargin, reference.width - 2 * kMargin,
                        reference.height - 2 * kMargin};
  for (int y = whole.y; y < whole.y + whole.h; ++y) {
    for (int x = whole.x; x < whole.x + whole.w; ++x) {
      const size_t at = reference.At(x, y);
      const bool isWhite = judged.mask == nullptr || judged.mask->luma[at] >= 128;
      pixels[at] = isWhite && (!judged.region || judged.region->Has(x, y)) ? 1 : 0;
    }
  }
  return pixels;
}

/// Levels from the darkest to the brightest sample of an area, the largest of the three channels;
/// some value above kEven if it is not flat.
int RangeOf(const Pixels& pixels, const Region& part) {
  int range = 0;
  for (const Plane& plane : pixels.planes) {
    int low = 255, high = 0;
    for (int y = part.y; y < part.y + part.h; ++y) {
      const uint8_t* line = &plane[pixels.At(part.x, y)];
      for (int x = 0; x < part.w; ++x) {
        low = std::min<int>(low, line[x]);
        high = std::max<int>(high, line[x]);
      }
      if (high - low > kEven) return kEven + 1;
    }
    range = std::max(range, high - low);
  }
  return range;
}

bool IsJudged(const Plane& pixels, const Pixels& reference, const Region& part) {
  for (int y = part.y; y < part.y + part.h; ++y) {
    const uint8_t* line = &pixels[reference.At(part.x, y)];
    if (std::any_of(line, line + part.w, [](uint8_t judged) { return judged == 0; })) return false;
  }
  return true;
}

struct Patches {
  std::vector<Patch> patches;
  std::vector<double> allowances;  // tolerance for the unevenness of each
};

/// The flat areas of the reference and their counterparts in the capture, shifted by whole pixels.
Patches EvenParts(const Pixels& reference, const Pixels& capture, const Plane& judged, int right,
                  int down) {
  Patches found;
  const double halfWidth = reference.width / 2.0, halfHeight = reference.height / 2.0;
  const double corner = halfWidth * halfWidth + halfHeight * halfHeight;
  for (int y = kMargin + kBorder; y + kPatch + kBorder <= reference.height - kMargin; y += kPatch) {
    for (int x = kMargin + kBorder; x + kPatch + kBorder <= reference.width - kMargin;
         x += kPatch) {
      const Region part = {x, y, kPatch, kPatch};
      if (!IsJudged(judged, reference, part)) continue;
      const int range = RangeOf(
          reference, {x - kBorder, y - kBorder, kPatch + 2 * kBorder, kPatch + 2 * kBorder});
      if (range > kEven) continue;
      const double toRight = x + kPatch / 2.0 - halfWidth, toBottom = y + kPatch / 2.0 - halfHeight;
      found.patches.push_back({MeanOf(reference, part),
                               MeanOf(capture, {x + right, y + down, kPatch, kPatch}),
                               (toRight * toRight + toBottom * toBottom) / corner});
      found.allowances.push_back(range * 0.1);
    }
  }
  return found;
}

double WorstColor(const Patches& parts, const Rig& rig) {
  const RigColors colors(rig);
  double worst = 0;
  for (size_t i = 0; i < parts.patches.size(); ++i) {
    const Patch& patch = parts.patches[i];
    const Rgb expected = colors.Seen(patch.shown, patch.distance);
    for (size_t plane = 0; plane < expected.size(); ++plane) {
      worst = std::max(worst, std::abs(expected[plane] - patch.seen[plane]) - parts.allowances[i]);
    }
  }
  return worst;
}

/// By how many levels each judged pixel of the capture lies outside the range of its neighbourhood
/// in the expected picture.
Plane Unexplained(const Plane& expected, const Pixels& capture, const Plane& judged, int right,
                  int down) {
  const int width = capture.width, height = capture.height;
  const Plane low = Spread(expected, width, height, 1, Smaller);
  const Plane high = Spread(expected, width, height, 1, Larger);
  const Plane lowest = Spread(low, width, height, 2, Smaller);
  const Plane highest = Spread(high, width, height, 2, Larger);
  Plane outside(capture.Count(), 0);
  for (int y = kMargin; y < height - kMargin; ++y) {
    const size_t from = capture.At(kMargin, y), to = capture.At(width - kMargin, y);
    const uint8_t* seen = &capture.luma[capture.At(kMargin + right, y + down)];
    for (size_t at = from; at < to; ++at, ++seen) {
      const int beyond = std::max(*seen - high[at], low[at] - *seen);
      const int allowed = (highest[at] - lowest[at]) * kBlurPercent / 100 + kNoise;
      outside[at] =
          judged[at] != 0 && beyond > allowed ? static_cast<uint8_t>(beyond - allowed) : 0;
    }
  }
  return outside;
}

/// The largest mean of kRun consecutive pixels in a row or a column.
double WorstRun(const Plane& outside, int width, int height) {
  int worst = 0;
  std::vector<int> below(static_cast<size_t>(width), 0);
  const auto column = static_cast<size_t>(width);
  for (int y = 0; y < height; ++y) {
    const uint8_t* line = &outside[static_cast<size_t>(y) * column];
    int beside = 0;
    for (int x = 0; x < width; ++x) {
      const auto at = static_cast<size_t>(x);
      beside += line[x] - (x >= kRun ? line[x - kRun] : 0);
      below[at] += line[x] - (y >= kRun ? (line - column * kRun)[x] : 0);
      worst = std::max({worst, beside, below[at]});
    }
  }
  return static_cast<double>(worst) / kRun;
}

int Whole(double pixels) {
  return static_cast<int>(std::lround(pixels));
}

}  // namespace

bool Likeness::IsAlike() const {
  return patches >= kFewestPatches && color <= kMostColor && structure <= kMostStructure &&
         shift <= 0;
}

Likeness Compare(const Pixels& reference, const Pixels& capture, const Judged& judged,
                 const Rig& rig, const RigBounds& bounds) {
  const Plane pixels = JudgedPixels(reference, judged);
  const Patches parts = EvenParts(reference, capture, pixels, Whole(rig.right), Whole(rig.down));
  Likeness likeness;
  likeness.patches = parts.patches.size();
  likeness.rig = FitColors(parts.patches, rig, bounds);
  likeness.color = WorstColor(parts, likeness.rig);
  const Plane expected = SeenLuma(reference, likeness.rig);
  likeness.rig = FitShift(expected, capture, pixels, likeness.rig);
  likeness.shift = std::max({0.0, std::abs(likeness.rig.right - rig.right) - bounds.shift,
                             std::abs(likeness.rig.down - rig.down) - bounds.shift});
  // A window in the wrong place also changes the measured shift. So a measured shift within its
  // bounds is used only if the rig is not calibrated.
  const bool isMeasured = bounds.shift < 1;
  const int right = Whole(isMeasured ? rig.right : likeness.rig.right);
  const int down = Whole(isMeasured ? rig.down : likeness.rig.down);
  likeness.structure =
      WorstRun(Unexplained(expected, capture, pixels, std::clamp(right, -kMargin, kMargin),
                           std::clamp(down, -kMargin, kMargin)),
               capture.width, capture.height);
  return likeness;
}

std::optional<Rig> Calibrate(const Pixels& reference, const Pixels& capture) {
  const Rig first = Compare(reference, capture, {}, {}, kAnyRig).rig;
  const Likeness second = Compare(reference, capture, {}, first, kCalibratedRig);
  if (!second.IsAlike()) return std::nullopt;
  return second.rig;
}

}  // namespace eyes
