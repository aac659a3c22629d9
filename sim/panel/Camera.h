// Takes pictures of the panel.
#pragma once

#include "BoardFiles.h"
#include "core/Command.h"

namespace panel {

/// Does what the words after `camera` say: writes one picture to a PNG file, or a stream to
/// standard output until nobody reads it. Throws sim::CommandError on wrong words and
/// std::runtime_error without a board, or if the file cannot be written.
void RunCamera(const sim::Words& words, const cvnsim::BoardFiles& files);

}  // namespace panel
