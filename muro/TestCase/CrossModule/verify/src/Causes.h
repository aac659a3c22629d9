// What happened to the frames of a run, over all stages: which events are causes and which follow
// from others.
#pragma once

#include <string>
#include <vector>

#include "FrameEvent.h"
#include "LateStage.h"

/// The events of all stages of a test case.
struct CaseEvents {
  std::string testCase;             // "101-h264-FrtChg"
  std::vector<StageEvents> stages;  // in the order of the stages
};

/// Analyses all stages whose files exist, and links the events: each gets an id, unique in this
/// process, and the id of the cause that it follows from.
CaseEvents AnalyseCase(const std::string& testCase, const StagePath& golden, const StagePath& dump);

/// Assigns ids starting at `lastId` + 1 and links events along the picture's path by their time
/// stamps.
void LinkEvents(std::vector<StageEvents>& stages, int lastId = 0);

/// The last id assigned. A process that continues the work of another one sets it.
int LastEventId();
void SetLastEventId(int id);
