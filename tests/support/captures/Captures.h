// Pictures of a panel, defects in them, and distortions by a bad capture.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "Pixels.h"

namespace captures {

/// A picture that a panel should show, made by filters at 960x540.
struct Scene {
  const char* name;
  const char* filters;
};

/// All scenes; the first one is the calibration picture.
const std::vector<Scene>& Scenes();

/// A defect: the expected picture and the wrong one.
struct Defect {
  std::string kind;
  std::string shown;  // filters for the correct picture
  std::string seen;   // filters for the wrong picture
};

/// Returns `count` defects, grouped by kind.
std::vector<Defect> Defects(size_t count);

/// Distortions between the panel and the judged picture.
struct BadCapture {
  double gain = 1, gamma = 1;
  double vignette = 0;  // brightness lost in the corners
  double hue = 0;       // degrees
  int right = 0, down = 0;
  int noise = 0;  // levels
  bool from720p = false;
  int mjpegQuality = 0;  // 1 to 100; 0: not compressed

  std::string Text() const;
};

/// A random bad capture: every value is anywhere within its limits.
BadCapture Draw(std::mt19937& random);

/// The picture made by filters, and a capture of it.
eyes::Pixels Shown(const std::string& filters);
eyes::Pixels Captured(const eyes::Pixels& shown, const BadCapture& capture);

}  // namespace captures
