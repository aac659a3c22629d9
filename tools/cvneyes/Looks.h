// Properties of captures other than their similarity to a reference.
#pragma once

#include <span>
#include <string>

#include "Pixels.h"
#include "Rig.h"

namespace eyes {

/// A picture of one colour, 0 to 255 per channel, and one with eight 100 % colour bars in a region
/// of a black picture. Throw std::runtime_error.
Pixels PlainPicture(int width, int height, const Rgb& color);
Pixels BarsPicture(int width, int height, const Region& region);

/// Largest difference of a small area between two pictures of the same size, in levels of luma.
double LargestChange(const Pixels& before, const Pixels& now, const Region& region);

/// The same between the first picture and each later one.
double LargestChange(std::span<const Pixels> pictures, const Region& region);

/// Mean luma of a region, in levels.
double Brightness(const Pixels& pixels, const Region& region);

/// Mean difference between neighbouring pixels in a region, in levels of luma.
double Sharpness(const Pixels& pixels, const Region& region);

/// Brightest small area, in levels of its largest component.
double BrightestPart(const Pixels& pixels);

/// How well a picture fits a window, with nothing around it.
struct WindowFit {
  double edge = 0;     // pixels by which the worst edge is displaced
  double outside = 0;  // levels by which the worst area outside differs from the others there
  std::string bare;    // the first edge at which there is no picture, or ""
};
WindowFit FitWindow(const Pixels& pixels, const Region& window, const Rig& rig);

/// Whether the second of three pictures has its upper part from the first and its lower part from
/// the last.
bool IsTorn(std::span<const Pixels, 3> pictures);

}  // namespace eyes
