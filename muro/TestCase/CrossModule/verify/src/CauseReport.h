// Formats the analysis of frames, for the report and as JSON lines.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "AvSync.h"
#include "Causes.h"
#include "ReportTables.h"

/// A cause with its text in the report.
struct CauseLine {
  const FrameEvent* event;
  std::string text;  // "frame 300 (5.000 s): 1 picture dropped, time kept; seen in VO"
};

/// The causes of all events, ordered by time.
std::vector<CauseLine> CauseLines(const CaseEvents& found);

/// The earliest time stamp.
uint32_t BeginOf(const CaseEvents& found);

/// Prints the causes, one line each, and the pacing of the stages that did not pass. Prints nothing
/// if no event was found.
void PrintCauses(std::ostream& out, const CaseEvents& found, const StageResults& results);

/// All events, the pacing of all stages and the differences of `marks`, the flashes and beeps of
/// synchronisation content, as JSON lines without newlines.
std::vector<std::string> FindingsOf(const CaseEvents& found, const std::vector<SyncMark>& marks);

/// One event as a JSON object, without a newline.
std::string EventJson(const CaseEvents& found, const FrameEvent& event);

/// The pacing of a stage that has one, in the same format.
std::string PacingJson(const CaseEvents& found, const StageEvents& stage);
