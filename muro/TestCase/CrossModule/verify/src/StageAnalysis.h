// Finds out what happened to the frames of one stage: golden file and dump are aligned by the
// content of their rows, and the remaining differences become events.
#pragma once

#include <string>

#include "FrameEvent.h"

/// Analyses a stage's two files. Events have neither ids nor causes yet. Files that cannot be
/// opened have no rows. Memory grows with the number of events, and with the longest stretch that
/// differs, up to a limit.
StageEvents AnalyseStage(MODULE_TYPE module, const std::string& goldenPath,
                         const std::string& dumpPath);
