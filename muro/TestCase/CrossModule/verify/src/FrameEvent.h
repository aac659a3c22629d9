// What happened to the frames of one stage, as plain data: the differences between golden file and
// dump after their rows have been aligned by content.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../../stages/src/Stage.h"

enum class EventKind : uint8_t {
  kDropped,    // golden rows that are missing in the dump
  kRepeated,   // repeated rows
  kReordered,  // rows in another order
  kDamaged,    // the same picture with a different checksum
  kChanged,    // other compared columns differ
  kLate,       // from here on the counter is further ahead of golden's
  kEarly,      // … or less far ahead
  kUneven,     // single pictures shown too long or too short
  kCut,        // the dump ends early
  kExtra,      // rows that are not in golden
  kBroken,     // malformed rows
};
inline constexpr std::size_t kEventKindCount = 11;

/// The kind's name in results, such as "dropped".
const char* NameOf(EventKind kind);

/// Effect of dropped or repeated rows on the time of the rows after them.
enum class TimeEffect : uint8_t {
  kUnknown,  // the stage has no counter, or the kind has no such effect
  kKept,     // later rows keep golden's time
  kMoved,    // later rows come earlier (time lost) or later (time added)
};

/// A stretch of golden's time, by the pts of its first and last row.
struct PtsRange {
  uint32_t first;
  uint32_t last;
};

/// One event. Frame numbers are those of the golden rows.
struct FrameEvent {
  EventKind kind = EventKind::kDropped;
  MODULE_TYPE stage = MODULE_OMXIN;
  int64_t first = 0;         // frame; for `kCut` the last existing frame
  int64_t lastPossible = 0;  // differs from `first` if repeated content makes the place ambiguous
  int64_t count = 1;         // rows
  int64_t other = 0;         // kReordered: last frame of the stretch
  int64_t row = 0;           // kBroken: line of the dump, starting at 1
  std::optional<PtsRange> pts = {};
  TimeEffect time = TimeEffect::kUnknown;
  int64_t ticks90k = 0;          // kLate, kEarly: the step; kUneven: the worst deviation; kDropped:
                                 // golden's time of the rows
  uint32_t columns = 0;          // kChanged: bit n: column n of the stage
  std::string goldenValue = {};  // kChanged: of the first row's first column
  std::string dumpValue = {};
  int64_t place = 0;     // number of golden rows before it
  int64_t placeEnd = 0;  // number of golden rows before its last possible end
  int id = 0;            // unique in the run, starting at 1
  int cause = 0;         // id of the event that it follows from; 0: it is a cause
};

/// How evenly a stage with a counter showed its rows.
struct Pacing {
  double ratePerSecond = 0;    // rows per second
  int64_t worstInterval = 0;   // longest time between two rows, in 90 kHz ticks
  int64_t unevenPictures = 0;  // shown too long or too short
  double driftPpm = 0;         // how much faster than the time stamps the counter runs
};

/// All results of the analysis of one stage.
struct StageEvents {
  MODULE_TYPE stage = MODULE_OMXIN;
  std::vector<FrameEvent> events;  // in golden's order
  std::optional<Pacing> pacing = {};
  std::optional<PtsRange> shown = {};  // of the golden file
  int64_t goldenRows = 0;
};
