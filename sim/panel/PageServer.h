// The page that shows the panel and the board to a browser of this machine.
#pragma once

#include "BoardFiles.h"
#include "core/Command.h"

namespace panel {

/// Serves the page on 127.0.0.1 and prints its address, until a signal ends the process or the
/// process named by `--with` is gone. The address contains a token that is new at every start;
/// requests without it, from another origin or for another host name are refused. Throws
/// sim::CommandError for invalid words and std::runtime_error if the port is not available.
void RunPage(const sim::Words& words, const cvnsim::BoardFiles& files);

}  // namespace panel
