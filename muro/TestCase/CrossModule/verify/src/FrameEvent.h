// What happened to the frames of one stage, as plain data: what differs between golden file and
// dump once their rows are aligned by what they show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../../stages/src/Stage.h"

enum class EventKind : uint8_t {
  kDropped,    // golden rows that the dump does not have
  kRepeated,   // rows that are there once more
  kReordered,  // rows in another order
  kDamaged,    // the same picture with another checksum
  kChanged,    // other compared columns differ
  kLate,       // from here on the counter is further from golden's
  kEarly,      // … or nearer
  kUneven,     // single pictures shown too long or too short
  kCut,        // the dump ends early
  kExtra,      // rows that golden never had
  kBroken,     // malformed rows
};
inline constexpr std::size_t kEventKindCount = 11;

/// The kind's name in results, such as "dropped".
const char* NameOf(EventKind kind);

/// What dropped or repeated rows did to the time of the rows after them.
enum class TimeEffect : uint8_t {
  kUnknown,  // the stage has no counter, or the kind has no such effect
  kKept,     // what follows comes when golden's does
  kMoved,    // what follows comes earlier (time lost) or later (time added)
};

/// A stretch of time on golden's way, by the pts of its first and last row.
struct PtsRange {
  uint32_t first;
  uint32_t last;
};

/// One event. Frames are numbered as in golden's rows.
struct FrameEvent {
  EventKind kind = EventKind::kDropped;
  MODULE_TYPE stage = MODULE_OMXIN;
  int64_t first = 0;         // frame; of `kCut` the last frame that is there
  int64_t lastPossible = 0;  // differs from `first` where repeated content leaves the place open
  int64_t count = 1;         // rows
  int64_t other = 0;         // kReordered: last frame of the stretch
  int64_t row = 0;           // kBroken: line of the dump, from 1
  std::optional<PtsRange> pts = {};
  TimeEffect time = TimeEffect::kUnknown;
  int64_t ticks90k = 0;          // kLate, kEarly: the step; kUneven: the worst deviation;
                                 // kDropped: golden's time of the rows
  uint32_t columns = 0;          // kChanged: bit n: column n of the stage
  std::string goldenValue = {};  // kChanged: of the first row's first column
  std::string dumpValue = {};
  int64_t place = 0;     // golden rows before it
  int64_t placeEnd = 0;  // golden rows before its last possible end
  int id = 0;            // unique in the run, from 1 on
  int cause = 0;         // id of the event that it follows from; 0: it is a cause
};

/// How evenly a stage with a counter showed its rows.
struct Pacing {
  double ratePerSecond = 0;    // rows a second
  int64_t worstInterval = 0;   // longest time between two rows, in ticks of 90 kHz
  int64_t unevenPictures = 0;  // shown too long or too short
  double driftPpm = 0;         // how much faster than the time stamps the counter runs
};

/// All that the analysis of one stage found.
struct StageEvents {
  MODULE_TYPE stage = MODULE_OMXIN;
  std::vector<FrameEvent> events;  // in golden's order
  std::optional<Pacing> pacing = {};
  std::optional<PtsRange> shown = {};  // of the golden file
  int64_t goldenRows = 0;
};
