// Takes pictures of the panel.
#pragma once

#include "BoardFiles.h"
#include "core/Command.h"

namespace panel {

/// Executes the words after `camera`: writes one picture to a PNG file, or a stream to standard
/// output until the reader is gone. Throws sim::CommandError for invalid words and
/// std::runtime_error if there is no board or the file cannot be written.
void RunCamera(const sim::Words& words, const cvnsim::BoardFiles& files);

}  // namespace panel
