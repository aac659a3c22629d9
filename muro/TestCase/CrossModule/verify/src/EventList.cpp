#include "EventList.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

/// Uneven pictures with at most this many even ones between them are one event.
constexpr int64_t kUnevenDistance = 8;

}  // namespace

bool EventList::Continues(const FrameEvent& event, const RowEvent& row) const {
  const int64_t dumpStep = row.dumpRow - lastDumpRow_[static_cast<std::size_t>(row.kind)];
  switch (row.kind) {
    case EventKind::kDropped:
    case EventKind::kDamaged:
    case EventKind::kChanged:
    case EventKind::kCut:
      return row.place == event.placeEnd;
    case EventKind::kRepeated:
      // Each row of a stretch may be repeated once, or a single row many times.
      return dumpStep >= 1 && dumpStep <= 2 && row.place >= event.placeEnd - 1 &&
             row.place <= event.placeEnd;
    case EventKind::kExtra:
    case EventKind::kBroken:
      return dumpStep == 1;
    case EventKind::kReordered:
      return row.frame <= event.other && row.place <= event.placeEnd;
    case EventKind::kUneven:
      return row.place <= event.placeEnd + kUnevenDistance;
    case EventKind::kLate:
    case EventKind::kEarly:
      break;
  }
  return false;
}

void EventList::Grow(FrameEvent& event, const RowEvent& row) {
  ++event.count;
  event.placeEnd = std::max(event.placeEnd, row.place + 1);
  event.columns |= row.difference.columns;
  event.other = std::max(event.other, row.other);
  if (std::abs(row.ticks90k) > std::abs(event.ticks90k)) event.ticks90k = row.ticks90k;
  if (row.pts && event.pts) event.pts->last = row.lastPts.value_or(*row.pts);
}

std::size_t EventList::Add(const RowEvent& row) {
  const auto kind = static_cast<std::size_t>(row.kind);
  std::size_t& last = last_[kind];
  if (last != kNone && Continues(events_[last], row)) {
    Grow(events_[last], row);
  } else {
    last = events_.size();
    FrameEvent event;
    event.kind = row.kind;
    event.stage = stage_;
    event.first = event.lastPossible = row.frame;
    event.other = row.other;
    if (row.pts) event.pts = PtsRange{*row.pts, row.lastPts.value_or(*row.pts)};
    event.time = row.time;
    event.ticks90k = row.ticks90k;
    event.columns = row.difference.columns;
    event.goldenValue = row.difference.goldenValue;
    event.dumpValue = row.difference.dumpValue;
    if (row.kind == EventKind::kBroken) event.row = row.dumpRow + 2;  // after the title
    event.place = row.place;
    event.placeEnd = row.place + 1;
    events_.push_back(std::move(event));
  }
  lastDumpRow_[kind] = row.dumpRow;
  return last;
}

std::vector<FrameEvent> EventList::Take() {
  std::ranges::stable_sort(events_, {}, &FrameEvent::place);
  last_.fill(kNone);
  return std::exchange(events_, {});
}
