// The pictures that a scene is made of, as orders.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "core/Board.h"

namespace panel {

/// Which frames of a source are wanted where those of two eyes take turns.
enum class Frames : uint8_t { kAll, kEven, kOdd };

/// What filters generate without any other picture.
struct GeneratedInput {
  std::string filters;
};

/// What a source sends, whole.
struct SentInput {
  sim::Picture picture;
  Frames frames;
};

/// What the player decoded last, or a picture of it that was frozen.
struct PlayedInput {
  uint32_t held;  // number of the frozen picture; 0: the last one
};

/// The pixels that were written to a window's frame buffer.
struct WrittenInput {
  unsigned wid;
  uint32_t colorStandard;
};

/// A table of colours for the `haldclut` filter, from one of the records.
struct CubeInput {
  K2V_VPQ_HDR_3D_LUT_T sim::VpqRecords::*table;
};

using SceneInput = std::variant<GeneratedInput, SentInput, PlayedInput, WrittenInput, CubeInput>;

/// Takes an input of a scene and returns its name in the graph, with brackets.
using AddInput = std::function<std::string(const SceneInput&)>;

}  // namespace panel
