// Descriptions of the pictures that a scene is made of.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "core/Board.h"

namespace panel {

/// Which frames of a source to use if its frames alternate between the eyes.
enum class Frames : uint8_t { kAll, kEven, kOdd };

/// A picture that filters generate without any input.
struct GeneratedInput {
  std::string filters;
};

/// The whole picture that a source sends.
struct SentInput {
  sim::Picture picture;
  Frames frames;
};

/// The last picture that the player decoded, or a frozen one.
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

/// Adds an input to a scene and returns its name in the graph, with brackets.
using AddInput = std::function<std::string(const SceneInput&)>;

}  // namespace panel
