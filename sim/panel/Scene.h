// What the panel shows, as a list of pictures and the filters that put them together.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Filter.h"
#include "Inputs.h"
#include "core/Board.h"

namespace panel {

using namespace picture;

// The view has every fourth pixel of every fourth line of the panel, like the board's own captures.
constexpr int kViewWidth = K2V_CAPTURE_WIDTH;
constexpr int kViewHeight = K2V_CAPTURE_HEIGHT;

struct Scene {
  std::vector<SceneInput> inputs;
  std::string filters;   // their inputs are [in0] and so on
  bool changes = false;  // with every look, even if nothing on the board changes
};

/// The scene at a simulated time. `isPlaying`: the player has a picture on the panel.
Scene SceneOf(const sim::Board& board, int64_t nowMs, bool isPlaying);

/// The size in which a source's picture is made: its own, or for large ones that divided by a whole
/// number.
struct Size {
  int width;
  int height;
};
Size CanvasOf(const sim::Picture& picture);

}  // namespace panel
