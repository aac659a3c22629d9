// What the board's driver nodes and marker files require of a playback.
#pragma once

#include <array>
#include <filesystem>
#include <iterator>

#include "DumpFormat.h"

namespace player {

/// How the display path treats the pictures.
struct DisplayMode {
  bool freeRun = false;    // the panel keeps its own rate
  bool adaptive = false;   // the panel follows the source's rate
  int pictureQuality = 0;  // test mode of the picture quality's driver
};

/// The path of each stage's dump, by Stage; empty if its driver is not in test mode.
using DumpPaths = std::array<std::filesystem::path, std::size(kAllStages)>;

struct TestMode {
  DumpPaths dumps;
  DisplayMode display;
};

/// Reads the board's nodes and markers. `root` is the board's root directory; dump paths are below
/// it.
TestMode ReadTestMode(const std::filesystem::path& root);

}  // namespace player
