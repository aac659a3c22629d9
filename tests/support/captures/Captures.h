// Pictures of a panel, what goes wrong in them, and what a bad capture makes of them.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "Pixels.h"

namespace captures {

/// A picture that a panel should show, made by filters in 960x540.
struct Scene {
  const char* name;
  const char* filters;
};

/// All scenes; the first one is the picture for calibrations.
const std::vector<Scene>& Scenes();

/// Something that is wrong: what should be seen and what is.
struct Defect {
  std::string kind;
  std::string shown;  // filters of the right picture
  std::string seen;   // … and of the wrong one
};

/// `count` defects, those of each kind one after the other.
std::vector<Defect> Defects(size_t count);

/// What stands between panel and judgement.
struct BadCapture {
  double gain = 1, gamma = 1;
  double vignette = 0;  // what the corners lack
  double hue = 0;       // degrees
  int right = 0, down = 0;
  int noise = 0;  // levels
  bool from720p = false;
  int mjpegQuality = 0;  // of 100; 0: not compressed

  std::string Text() const;
};

/// A capture as bad as it may be: every number anywhere within its limits.
BadCapture Draw(std::mt19937& random);

/// The picture of filters, and what a capture makes of it.
eyes::Pixels Shown(const std::string& filters);
eyes::Pixels Captured(const eyes::Pixels& shown, const BadCapture& capture);

}  // namespace captures
