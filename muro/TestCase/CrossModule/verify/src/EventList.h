// Collects what happens to single rows as events: consecutive equal ones are merged into one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "FrameEvent.h"
#include "FrameRows.h"

/// Something that happened at one row.
struct RowEvent {
  EventKind kind;
  int64_t place;  // number of golden rows before it
  int64_t frame;
  std::optional<uint32_t> pts = {};
  std::optional<uint32_t> lastPts = {};  // if the row represents a stretch of time
  int64_t dumpRow = 0;  // number of filled rows of the dump before it, if it is a row of the dump
  int64_t other = 0;
  int64_t ticks90k = 0;
  TimeEffect time = TimeEffect::kUnknown;
  ColumnDifference difference = {};
};

class EventList {
 public:
  explicit EventList(MODULE_TYPE stage) : stage_(stage) { last_.fill(kNone); }

  /// Adds the row, or extends the previous event. Returns the event's index.
  std::size_t Add(const RowEvent& row);

  FrameEvent& At(std::size_t index) { return events_[index]; }
  bool IsEmpty() const { return events_.empty(); }

  /// The events in golden's order.
  std::vector<FrameEvent> Take();

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  bool Continues(const FrameEvent& event, const RowEvent& row) const;
  void Grow(FrameEvent& event, const RowEvent& row);

  const MODULE_TYPE stage_;
  std::vector<FrameEvent> events_;
  std::array<std::size_t, kEventKindCount> last_;       // index of the last event of each kind
  std::array<int64_t, kEventKindCount> lastDumpRow_{};  // dump row of the last row of that event
};
