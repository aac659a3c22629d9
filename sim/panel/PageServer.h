// The page that shows the panel and the board to a browser of this machine.
#pragma once

#include "BoardFiles.h"
#include "core/Command.h"

namespace panel {

/// Serves the page on 127.0.0.1 and prints its address, until a signal ends the process or the one
/// that `--with` names is gone. The address holds a token, new at every start; without it, from
/// another origin or under another name nothing is answered. Throws sim::CommandError on wrong
/// words and std::runtime_error where the port cannot be had.
void RunPage(const sim::Words& words, const cvnsim::BoardFiles& files);

}  // namespace panel
