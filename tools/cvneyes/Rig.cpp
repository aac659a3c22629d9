#include "Rig.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace eyes {
namespace {

constexpr size_t kColors = 4;  // parameters of a rig that describe colour
using Numbers = std::array<double, kColors>;
using Matrix = std::array<Numbers, kColors>;

// Step widths for the parameters, and their members.
constexpr Numbers kSteps = {0.005, 0.005, 0.005, 0.25};
constexpr double Rig::*kMembers[] = {&Rig::gain, &Rig::gamma, &Rig::vignette, &Rig::hue};
constexpr double RigBounds::*kBounds[] = {&RigBounds::gain, &RigBounds::gamma, &RigBounds::vignette,
                                          &RigBounds::hue};

constexpr size_t kMostPatches = 700;  // more add nothing
constexpr int kRounds = 8;
constexpr int kHalves = 4;          // of a step in the wrong direction
constexpr double kEnough = 0.9999;  // the search ends when a step improves less
constexpr double kOutlier = 12;     // levels; beyond that a patch is an outlier

void KeepWithin(Rig& rig, const Rig& center, const RigBounds& bounds) {
  for (size_t i = 0; i < kColors; ++i) {
    double& number = rig.*kMembers[i];
    const double middle = center.*kMembers[i], reach = bounds.*kBounds[i];
    number = std::clamp(number, middle - reach, middle + reach);
  }
}

Rig Between(const Rig& a, const Rig& b) {
  Rig middle = a;
  for (const auto member : kMembers) middle.*member = (a.*member + b.*member) / 2;
  return middle;
}

/// Solves a * x = b for a symmetric matrix with a dominant diagonal.
Numbers Solve(Matrix a, Numbers b) {
  for (size_t i = 0; i < kColors; ++i) {
    for (size_t row = i + 1; row < kColors; ++row) {
      const double factor = a[row][i] / a[i][i];
      for (size_t column = i; column < kColors; ++column) a[row][column] -= factor * a[i][column];
      b[row] -= factor * b[i];
    }
  }
  for (size_t i = kColors; i-- > 0;) {
    for (size_t column = i + 1; column < kColors; ++column) b[i] -= a[i][column] * b[column];
    b[i] /= a[i][i];
  }
  return b;
}

/// How badly the patches fit a rig.
double MissOf(std::span<const Patch> patches, size_t stride, const Rig& rig) {
  const RigColors colors(rig);
  double sum = 0;
  for (size_t at = 0; at < patches.size(); at += stride) {
    const Rgb expected = colors.Seen(patches[at].shown, patches[at].distance);
    for (size_t plane = 0; plane < expected.size(); ++plane) {
      const double miss = std::abs(patches[at].seen[plane] - expected[plane]);
      sum += miss < kOutlier ? miss * miss : kOutlier * (2 * miss - kOutlier);
    }
  }
  return sum;
}

/// One Gauss-Newton step towards the rig that fits the patches best.
Rig Step(std::span<const Patch> patches, size_t stride, const Rig& rig) {
  const RigColors colors(rig);
  std::vector<RigColors> tried;
  for (size_t i = 0; i < kColors; ++i) {
    Rig changed = rig;
    changed.*kMembers[i] += kSteps[i];
    tried.emplace_back(changed);
  }
  Matrix squares = {};
  Numbers products = {};
  for (size_t at = 0; at < patches.size(); at += stride) {
    const Patch& patch = patches[at];
    const Rgb now = colors.Seen(patch.shown, patch.distance);
    std::array<Rgb, kColors> slopes;
    for (size_t i = 0; i < kColors; ++i) slopes[i] = tried[i].Seen(patch.shown, patch.distance);
    for (size_t plane = 0; plane < now.size(); ++plane) {
      const double miss = patch.seen[plane] - now[plane];
      const double weight = std::min(1.0, kOutlier / std::max(1e-9, std::abs(miss)));
      for (size_t i = 0; i < kColors; ++i) {
        const double slope = slopes[i][plane] - now[plane];
        products[i] += weight * slope * miss;
        for (size_t j = 0; j < kColors; ++j)
          squares[i][j] += weight * slope * (slopes[j][plane] - now[plane]);
      }
    }
  }
  for (size_t i = 0; i < kColors; ++i) squares[i][i] = squares[i][i] * 1.0001 + 1e-3;
  const Numbers steps = Solve(squares, products);
  Rig next = rig;
  for (size_t i = 0; i < kColors; ++i) next.*kMembers[i] += steps[i] * kSteps[i];
  return next;
}

/// The slope if it belongs to an edge, not to a gradient of the picture or the vignette; otherwise
/// 0.
int Edge(int slope) {
  constexpr int kLeast = 30;
  return slope > kLeast || slope < -kLeast ? slope : 0;
}

struct Moved {
  double right, down;
};

/// The shift that explains the differences by the slopes of the picture (Lucas-Kanade), in addition
/// to the known whole pixels; `without` in a direction that has no edges.
Moved Remainder(const Plane& expected, const Pixels& capture, const Plane& judged, int right,
                int down, const Moved& without) {
  constexpr int kMargin = 8;
  constexpr double kFewEdges = 20000;
  double xx = 0, yy = 0, xy = 0, xd = 0, yd = 0;
  for (int y = kMargin; y < capture.height - kMargin; ++y) {
    const uint8_t* line = &expected[capture.At(0, y)];
    const uint8_t* above = line - capture.width;
    const uint8_t* below = line + capture.width;
    const uint8_t* seen = &capture.luma[capture.At(right, y + down)];
    const uint8_t* counts = &judged[capture.At(0, y)];
    int lineXx = 0, lineYy = 0, lineXy = 0, lineXd = 0, lineYd = 0;
    for (int x = kMargin; x < capture.width - kMargin; ++x) {
      const int slopeX = counts[x] * Edge(line[x + 1] - line[x - 1]);
      const int slopeY = counts[x] * Edge(below[x] - above[x]);
      const int difference = line[x] - seen[x];
      lineXx += slopeX * slopeX;
      lineYy += slopeY * slopeY;
      lineXy += slopeX * slopeY;
      lineXd += slopeX * difference;
      lineYd += slopeY * difference;
    }
    xx += lineXx;
    yy += lineYy;
    xy += lineXy;
    xd += lineXd;
    yd += lineYd;
  }
  if (xx < kFewEdges && yy < kFewEdges) return without;
  if (xx < kFewEdges) return {without.right, 2 * yd / yy};
  if (yy < kFewEdges) return {2 * xd / xx, without.down};
  const double determinant = xx * yy - xy * xy;
  if (determinant < 1e-3 * xx * yy) return without;
  return {2 * (xd * yy - yd * xy) / determinant, 2 * (yd * xx - xd * xy) / determinant};
}

}  // namespace

RigColors::RigColors(const Rig& rig)
    : rig_(rig),
      cosine_(std::cos(rig.hue * std::numbers::pi / 180)),
      sine_(std::sin(rig.hue * std::numbers::pi / 180)) {}

Rgb RigColors::Seen(const Rgb& shown, double distance) const {
  const double gain = 255 * rig_.gain * (1 - rig_.vignette * distance);
  Rgb seen;
  for (size_t i = 0; i < seen.size(); ++i)
    seen[i] = gain * std::pow(std::max(0.0, shown[i]) / 255, rig_.gamma);
  const double luma = 0.2126 * seen[0] + 0.7152 * seen[1] + 0.0722 * seen[2];
  const double cb = (seen[2] - luma) / 1.8556, cr = (seen[0] - luma) / 1.5748;
  const double turnedCb = cosine_ * cb - sine_ * cr, turnedCr = sine_ * cb + cosine_ * cr;
  seen[0] = luma + 1.5748 * turnedCr;
  seen[2] = luma + 1.8556 * turnedCb;
  seen[1] = (luma - 0.2126 * seen[0] - 0.0722 * seen[2]) / 0.7152;
  for (double& channel : seen) channel = std::clamp(channel, 0.0, 255.0);
  return seen;
}

Rig FitColors(std::span<const Patch> patches, const Rig& rig, const RigBounds& bounds) {
  const size_t stride = std::max<size_t>(1, patches.size() / kMostPatches);
  Rig fitted = rig;
  double miss = MissOf(patches, stride, fitted);
  for (int round = 0; round < kRounds && !patches.empty(); ++round) {
    Rig next = Step(patches, stride, fitted);
    KeepWithin(next, rig, bounds);
    // Where levels are clipped, a whole step can worsen the fit.
    double nextMiss = MissOf(patches, stride, next);
    for (int half = 0; half < kHalves && nextMiss > miss; ++half) {
      next = Between(fitted, next);
      nextMiss = MissOf(patches, stride, next);
    }
    if (nextMiss >= miss * kEnough) break;
    fitted = next;
    miss = nextMiss;
  }
  return fitted;
}

Plane SeenLuma(const Pixels& reference, const Rig& rig) {
  constexpr float kToNearest = 0.5F;
  std::array<float, 256> levels;
  for (size_t i = 0; i < levels.size(); ++i) {
    levels[i] =
        static_cast<float>(255 * rig.gain * std::pow(static_cast<double>(i) / 255, rig.gamma));
  }
  const auto& [red, green, blue] = reference.planes;
  Plane seen(reference.Count());
  const double halfWidth = reference.width / 2.0, halfHeight = reference.height / 2.0;
  const double corner = halfWidth * halfWidth + halfHeight * halfHeight;
  size_t at = 0;
  for (int y = 0; y < reference.height; ++y) {
    const double down = y - halfHeight;
    for (int x = 0; x < reference.width; ++x, ++at) {
      const double right = x - halfWidth;
      const auto light =
          static_cast<float>(1 - rig.vignette * (right * right + down * down) / corner);
      const auto channel = [&](const Plane& plane) {
        return std::min(255.F, light * levels[plane[at]]);
      };
      seen[at] = static_cast<uint8_t>(0.2126F * channel(red) + 0.7152F * channel(green) +
                                      0.0722F * channel(blue) + kToNearest);
    }
  }
  return seen;
}

Rig FitShift(const Plane& expected, const Pixels& capture, const Plane& judged, const Rig& rig) {
  constexpr int kTries = 5, kMost = 6;
  Rig fitted = rig;
  int right = static_cast<int>(std::lround(rig.right)),
      down = static_cast<int>(std::lround(rig.down));
  for (int i = 0; i < kTries; ++i) {
    const Moved rest =
        Remainder(expected, capture, judged, right, down, {rig.right - right, rig.down - down});
    fitted.right = std::clamp<double>(right + rest.right, -kMost, kMost);
    fitted.down = std::clamp<double>(down + rest.down, -kMost, kMost);
    const int nextRight = static_cast<int>(std::lround(fitted.right));
    const int nextDown = static_cast<int>(std::lround(fitted.down));
    if (nextRight == right && nextDown == down) break;
    right = nextRight;
    down = nextDown;
  }
  return fitted;
}

std::string Text(const Rig& rig) {
  return picture::Printed("gain %.3f, gamma %.3f, vignette %.3f, hue %.2f, right %.2f, down %.2f",
                          rig.gain, rig.gamma, rig.vignette, rig.hue, rig.right, rig.down);
}

}  // namespace eyes
