// What happened to the frames of a run, over all stages: which event is a cause, and which follows
// from another one.
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

/// Analyses all stages whose files are there, and links the events: each gets an id, unique in this
/// process, and names the cause that it follows from.
CaseEvents AnalyseCase(const std::string& testCase, const StagePath& golden, const StagePath& dump);

/// Gives ids from 1 on, or goes on behind `lastId`; links events along the picture's way by their
/// time stamps.
void LinkEvents(std::vector<StageEvents>& stages, int lastId = 0);

/// Ids that were given so far. A process that goes on for another one sets it.
int LastEventId();
void SetLastEventId(int id);
