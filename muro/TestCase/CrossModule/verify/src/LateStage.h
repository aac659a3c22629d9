// Finds the stage that came too late or too early in a run, compared with its golden data.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "../../stages/src/Stage.h"

/// Path of a stage's file.
using StagePath = std::function<std::string(MODULE_TYPE stage)>;

/// The moment to be examined, by its picture and its sound, and the files of both sides.
struct LateMoment {
  int32_t frame;    // of the picture
  uint32_t pts90k;  // of the sound
  StagePath golden;
  StagePath dump;
};

/// Names the stage at which the delay against golden data begins: the first one on the picture's
/// path whose clock is further from its golden clock than the stage before it, else the sound.
/// Stages that cannot be distinguished are all named. For example "[Audio]   21 ms late".
std::string NameLateStage(const LateMoment& moment);
