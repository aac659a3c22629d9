#include "Looks.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <tuple>

namespace eyes {
namespace {

constexpr int kPart = 8;  // width and height of a small area in pixels
constexpr int kBars = 8;

Region Within(const Pixels& pixels, const Region& region) {
  const int x = std::clamp(region.x, 0, pixels.width), y = std::clamp(region.y, 0, pixels.height);
  return {x, y, std::clamp(region.x + region.w, x, pixels.width) - x,
          std::clamp(region.y + region.h, y, pixels.height) - y};
}

/// Calls `look` for every small area that lies entirely within the region.
template <typename Look>
void ForParts(const Pixels& pixels, const Region& region, Look look) {
  const Region within = Within(pixels, region);
  for (int y = within.y; y + kPart <= within.y + within.h; y += kPart) {
    for (int x = within.x; x + kPart <= within.x + within.w; x += kPart)
      look(Region{x, y, kPart, kPart});
  }
}

double MeanLuma(const Pixels& pixels, const Region& part) {
  uint64_t sum = 0;
  for (int y = part.y; y < part.y + part.h; ++y) {
    const uint8_t* line = &pixels.luma[pixels.At(part.x, y)];
    for (int x = 0; x < part.w; ++x) sum += line[x];
  }
  return static_cast<double>(sum) / std::max(1, part.w * part.h);
}

double Difference(const Rgb& a, const Rgb& b) {
  double largest = 0;
  for (size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

/// The areas of the picture above, below, left and right of a window, at a distance from it.
std::array<Region, 4> Around(const Pixels& pixels, const Region& window, int distance) {
  const int right = window.x + window.w + distance, bottom = window.y + window.h + distance;
  return {Region{0, 0, pixels.width, window.y - distance},
          Region{0, bottom, pixels.width, pixels.height - bottom},
          Region{0, window.y, window.x - distance, window.h},
          Region{right, window.y, pixels.width - right, window.h}};
}

/// The prevailing colour around a window: the median of the small areas there.
Rgb GroundOf(const Pixels& pixels, const Region& window) {
  std::array<std::vector<double>, 3> means;
  for (const Region& side : Around(pixels, window, kPart)) {
    ForParts(pixels, side, [&](const Region& part) {
      const Rgb mean = MeanOf(pixels, part);
      for (size_t i = 0; i < mean.size(); ++i) means[i].push_back(mean[i]);
    });
  }
  Rgb ground = {};
  for (size_t i = 0; i < ground.size(); ++i) {
    if (means[i].empty()) continue;
    auto middle = means[i].begin() + static_cast<std::ptrdiff_t>(means[i].size() / 2);
    std::nth_element(means[i].begin(), middle, means[i].end());
    ground[i] = *middle;
  }
  return ground;
}

/// One edge of a window, examined in the direction across it.
struct Edge {
  const char* name;
  int at;                            // first line or column inside the window, coming from outside
  int inwards;                       // 1 or -1
  int length;                        // of the picture across the edge
  std::function<Region(int)> strip;  // one line or column along the edge
};

/// Where the picture begins across an edge, in pixels inwards of the expected place; nothing if
/// there is no picture inside.
std::optional<double> MissOf(const Pixels& pixels, const Edge& edge, const Rgb& ground) {
  constexpr int kReach = 12;
  constexpr double kLeastPicture = 24;
  const auto strength = [&](int step) {
    const int at = edge.at + step * edge.inwards;
    if (at < 0 || at >= edge.length) return 0.0;
    return Difference(MeanOf(pixels, edge.strip(at)), ground);
  };
  double inside = 0;
  for (int step = 3; step < 11; ++step) inside += strength(step) / 8;
  if (inside < kLeastPicture) return std::nullopt;
  double before = strength(-kReach - 1);
  for (int step = -kReach; step <= kReach; ++step) {
    const double now = strength(step);
    if (now >= inside / 2) return step - (now - inside / 2) / std::max(1.0, now - before) + 0.5;
    before = now;
  }
  return kReach;
}

}  // namespace

Pixels PlainPicture(int width, int height, const Rgb& color) {
  Pixels pixels;
  pixels.width = width;
  pixels.height = height;
  for (size_t i = 0; i < color.size(); ++i)
    pixels.planes[i].assign(pixels.Count(), static_cast<uint8_t>(std::lround(color[i])));
  FillLuma(pixels);
  return pixels;
}

Pixels BarsPicture(int width, int height, const Region& region) {
  Pixels pixels = PlainPicture(width, height, {0, 0, 0});
  const Region within = Within(pixels, region);
  for (int y = within.y; y < within.y + within.h; ++y) {
    for (int x = within.x; x < within.x + within.w; ++x) {
      // White, yellow, cyan, green, magenta, red, blue, black: bits are green, red, blue.
      const int bar = 7 - (x - region.x) * kBars / region.w;
      const int bits[] = {2, 4, 1};
      for (size_t plane = 0; plane < pixels.planes.size(); ++plane)
        pixels.planes[plane][pixels.At(x, y)] = (bar & bits[plane]) != 0 ? 255 : 0;
    }
  }
  FillLuma(pixels);
  return pixels;
}

double LargestChange(const Pixels& before, const Pixels& now, const Region& region) {
  double largest = 0;
  ForParts(now, region, [&](const Region& part) {
    largest = std::max(largest, std::abs(MeanLuma(now, part) - MeanLuma(before, part)));
  });
  return largest;
}

double LargestChange(std::span<const Pixels> pictures, const Region& region) {
  double largest = 0;
  for (size_t i = 1; i < pictures.size(); ++i)
    largest = std::max(largest, LargestChange(pictures[0], pictures[i], region));
  return largest;
}

double Brightness(const Pixels& pixels, const Region& region) {
  return MeanLuma(pixels, Within(pixels, region));
}

double Sharpness(const Pixels& pixels, const Region& region) {
  const Region within = Within(pixels, region);
  uint64_t sum = 0;
  for (int y = within.y; y < within.y + within.h - 1; ++y) {
    const uint8_t* line = &pixels.luma[pixels.At(within.x, y)];
    const uint8_t* below = line + pixels.width;
    for (int x = 0; x < within.w - 1; ++x)
      sum += static_cast<unsigned>(std::abs(line[x] - line[x + 1]) + std::abs(line[x] - below[x]));
  }
  return static_cast<double>(sum) / std::max(1, within.w * within.h);
}

double BrightestPart(const Pixels& pixels) {
  double brightest = 0;
  ForParts(pixels, {0, 0, pixels.width, pixels.height}, [&](const Region& part) {
    for (const double channel : MeanOf(pixels, part)) brightest = std::max(brightest, channel);
  });
  return brightest;
}

WindowFit FitWindow(const Pixels& pixels, const Region& window, const Rig& rig) {
  WindowFit fit;
  const Rgb ground = GroundOf(pixels, window);
  for (const Region& side : Around(pixels, window, kPart)) {
    ForParts(pixels, side, [&](const Region& part) {
      fit.outside = std::max(fit.outside, Difference(MeanOf(pixels, part), ground));
    });
  }
  const auto column = [&](int x) { return Region{x, window.y + kPart, 1, window.h - 2 * kPart}; };
  const auto line = [&](int y) { return Region{window.x + kPart, y, window.w - 2 * kPart, 1}; };
  const Edge edges[] = {
      {"left", window.x, 1, pixels.width, column},
      {"right", window.x + window.w - 1, -1, pixels.width, column},
      {"upper", window.y, 1, pixels.height, line},
      {"lower", window.y + window.h - 1, -1, pixels.height, line},
  };
  for (const Edge& edge : edges) {
    // At the edge of the whole picture nothing can be missing.
    if (edge.at == 0 || edge.at == edge.length - 1) continue;
    const auto miss = MissOf(pixels, edge, ground);
    if (!miss) {
      if (fit.bare.empty()) fit.bare = edge.name;
      continue;
    }
    const double moved = edge.strip(0).w == 1 ? rig.right : rig.down;
    fit.edge = std::max(fit.edge, std::abs(*miss - moved * edge.inwards));
  }
  return fit;
}

bool IsTorn(std::span<const Pixels, 3> pictures) {
  constexpr double kSame = 3, kOther = 12;  // mean levels of the differing part of a line
  const auto& [first, second, last] = std::tie(pictures[0], pictures[1], pictures[2]);
  const int width = second.width;
  const auto difference = [width](const Pixels& a, const Pixels& b, int y) {
    double worst = 0;
    for (int x = 0; x + kPart <= width; x += kPart)
      worst =
          std::max(worst, std::abs(MeanLuma(a, {x, y, kPart, 1}) - MeanLuma(b, {x, y, kPart, 1})));
    return worst;
  };
  int fromFirst = 0, fromLast = 0;
  for (int y = 0; y < second.height; ++y) {
    const double toFirst = difference(first, second, y);
    if (difference(first, last, y) < kOther) {
      if (toFirst >= kOther) return false;  // it has content of its own
      continue;
    }
    const double toLast = difference(second, last, y);
    if (toFirst <= kSame + kOther / 3 && toLast >= kOther && fromLast == 0) {
      ++fromFirst;
    } else if (toLast <= kSame + kOther / 3 && toFirst >= kOther && fromFirst > 0) {
      ++fromLast;
    } else {
      return false;
    }
  }
  return fromFirst > 0 && fromLast > 0;
}

}  // namespace eyes
