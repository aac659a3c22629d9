// A picture as it is judged.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Filter.h"

namespace eyes {

using Plane = std::vector<uint8_t>;
using Rgb = std::array<double, 3>;

/// Planes of red, green and blue, and luma by BT.709, all full range and without padding.
struct Pixels {
  int width = 0;
  int height = 0;
  std::array<Plane, 3> planes;
  Plane luma;

  size_t At(int x, int y) const {
    return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
  }
  size_t Count() const { return At(0, height); }
};

/// A part of a picture.
struct Region {
  int x = 0, y = 0, w = 0, h = 0;
  bool Has(int px, int py) const { return px >= x && py >= y && px < x + w && py < y + h; }
};

/// Converts a picture of any format to `width` x `height`. YCbCr is interpreted as the frame
/// specifies, by default as BT.601 in limited range. Throws std::runtime_error.
Pixels ToPixels(const AVFrame& frame, int width, int height);

/// The same in its original size.
Pixels ToPixels(const AVFrame& frame);

/// Planar RGB for the libraries. Throws std::runtime_error.
picture::Picture ToFrame(const Pixels& pixels);

/// Computes the luma from the planes.
void FillLuma(Pixels& pixels);

/// Mean colour of an area within the picture.
Rgb MeanOf(const Pixels& pixels, const Region& part);

}  // namespace eyes
