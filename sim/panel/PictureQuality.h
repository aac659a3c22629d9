// What the picture-quality settings do to a picture, as filters. One table contains all of them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Inputs.h"
#include "core/Board.h"

namespace panel {

/// Where a setting acts: on the picture of each window, or on everything that the panel shows.
enum class Stage { kPicture, kPanel };

/// The samples that a setting's filters work on.
enum class Samples { kYuv, kRgb };

/// The picture that the settings act on.
struct Subject {
  bool isFrozen;
  AddInput add;  // for further pictures that filters need
};

struct Setting {
  std::string_view names;  // of the HAL's functions without their prefix
  Stage stage;
  Samples samples;
  /// The filters; empty if the setting leaves the picture unchanged.
  std::string (*filters)(const sim::Vpq& vpq, const Subject& subject);
};

/// All settings with a visible effect, in the order in which they act.
std::span<const Setting> Settings();

/// The filters of a stage, from planar RGB to planar RGB; empty if there is nothing to do.
std::string QualityFilters(const sim::Vpq& vpq, Stage stage, const Subject& subject);

/// The parts into which a panorama divides the picture, from left to right: each has `from` 240ths
/// of the picture's width and fills `to` 240ths of the window's. The middle keeps the shape that it
/// has in a 4:3 picture, the sides are stretched.
struct PanoramaPart {
  int from;
  int to;
};
constexpr PanoramaPart kPanorama[] = {{16, 30}, {24, 30}, {160, 120}, {24, 30}, {16, 30}};
constexpr int kPanoramaWhole = 240;

/// A demonstration, which processes one half of the picture and leaves the other unchanged.
struct Demo {
  bool on;
  bool rightSide;  // is processed; else the left one
};
Demo DemoOf(const sim::Vpq& vpq);

/// The colour of a test pattern that the chip shows instead of all pictures.
std::optional<sim::Color> PatternColor(const sim::Vpq& vpq);

}  // namespace panel
