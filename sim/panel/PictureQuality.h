// What the settings of the picture quality do to a picture, as filters. One table has all of them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Inputs.h"
#include "core/Board.h"

namespace panel {

/// Where a setting acts: on the picture of each window, or on all that the panel shows.
enum class Stage { kPicture, kPanel };

/// The samples that a setting's filters work on.
enum class Samples { kYuv, kRgb };

/// The picture that the settings act on.
struct Subject {
  bool isFrozen;
  AddInput add;  // for pictures that filters need beside it
};

struct Setting {
  std::string_view names;  // of the HAL's functions without their prefix
  Stage stage;
  Samples samples;
  /// The filters; empty where the setting leaves the picture as it is.
  std::string (*filters)(const sim::Vpq& vpq, const Subject& subject);
};

/// All settings with a visible meaning, in the order in which they act.
std::span<const Setting> Settings();

/// The filters of a stage, from planar RGB to planar RGB; empty where nothing is to be done.
std::string QualityFilters(const sim::Vpq& vpq, Stage stage, const Subject& subject);

/// The parts into which a panorama divides the picture, from left to right: each takes so many
/// 240ths of the picture's width and fills so many of the window's. The middle keeps the shape that
/// it has in a 4:3 picture, the sides are stretched.
struct PanoramaPart {
  int from;
  int to;
};
constexpr PanoramaPart kPanorama[] = {{16, 30}, {24, 30}, {160, 120}, {24, 30}, {16, 30}};
constexpr int kPanoramaWhole = 240;

/// The part of the picture, from its left edge, that a demonstration leaves as it came.
struct Demo {
  bool on;
  bool rightSide;  // is processed; else the left one
};
Demo DemoOf(const sim::Vpq& vpq);

/// The colour of a test pattern that the chip shows instead of all pictures.
std::optional<sim::Color> PatternColor(const sim::Vpq& vpq);

}  // namespace panel
