#include "ClockJudge.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

namespace {

/// Rows that have to stay on a new level to count as a step.
constexpr std::size_t kConfirming = 5;
/// How often another duration has to be seen before it counts as the pictures' duration.
constexpr int kDurationSeen = 3;
/// Maximum number of events of one gap whose effects on time are distinguished.
constexpr std::size_t kMostShifts = 6;

int64_t Ticks(uint32_t from, uint32_t to) {
  return static_cast<int32_t>(to - from);
}

}  // namespace

int64_t ClockJudge::DistanceOf(const ClockPoint& point) const {
  return Ticks(base_, point.dump - point.golden);
}

int64_t ClockJudge::Deviation(const ClockPoint& point) const {
  return DistanceOf(point) - std::llround(level_);
}

/// A row that is off by more than a quarter of a picture's duration is no longer on the level.
bool ClockJudge::IsOnLevel(const ClockPoint& point) const {
  return 4 * std::abs(Deviation(point)) <= duration_;
}

void ClockJudge::LearnDuration(int64_t interval) {
  if (interval <= 0 || 8 * std::abs(interval - duration_) <= duration_) {
    otherSeen_ = 0;
    return;
  }
  otherSeen_ = 8 * std::abs(interval - otherDuration_) <= otherDuration_ ? otherSeen_ + 1 : 1;
  otherDuration_ = interval;
  if (otherSeen_ == kDurationSeen || rows_ == 1) duration_ = interval;
}

void ClockJudge::Count(const ClockPoint& point) {
  if (rows_ == 0) {
    base_ = point.dump - point.golden;
  } else {
    const int64_t interval = Ticks(lastDump_, point.dump);
    elapsed_ += interval;
    worstInterval_ = std::max(worstInterval_, interval);
    LearnDuration(Ticks(lastGolden_, point.golden));
  }
  ++rows_;
  lastGolden_ = point.golden;
  lastDump_ = point.dump;
}

void ClockJudge::Add(const ClockPoint& point) {
  Count(point);
  Judge(point);
}

void ClockJudge::Judge(const ClockPoint& point) {
  if (!afterGap_ && IsOnLevel(point)) {
    if (!pending_.empty()) FlushUneven();
    level_ += (static_cast<double>(DistanceOf(point)) - level_) / 8;  // follows the drift
    return;
  }
  pending_.push_back(point);
  if (pending_.size() < kConfirming) return;
  afterGap_ ? JudgeGap() : JudgePending();
}

bool ClockJudge::TakeOnLevel(uint32_t golden, uint32_t dump) {
  const ClockPoint point{0, 0, {}, golden, dump, false};
  if (rows_ == 0 || afterGap_ || !pending_.empty() || !IsOnLevel(point)) return false;
  Add(point);
  return true;
}

int64_t ClockJudge::MedianDistance() const {
  std::vector<int64_t> distances;
  for (const ClockPoint& point : pending_) distances.push_back(DistanceOf(point));
  const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
  std::nth_element(distances.begin(), middle, distances.end());
  return *middle;
}

bool ClockJudge::IsOneLevel() const {
  const int64_t median = MedianDistance();
  return std::ranges::all_of(pending_, [&](const ClockPoint& point) {
    return 4 * std::abs(DistanceOf(point) - median) <= duration_;
  });
}

/// Treats the pending rows, which are off the level, as a step to a common new level. Returns false
/// if they have none.
bool ClockJudge::TakeStep() {
  if (!IsOneLevel()) return false;
  const int64_t distance = MedianDistance();
  NoteStep(pending_.front(), distance - std::llround(level_));
  level_ = static_cast<double>(distance);
  pending_.clear();
  return true;
}

/// Rows that stay off the level are a step; otherwise the first one was uneven.
void ClockJudge::JudgePending() {
  if (TakeStep()) return;
  NoteUneven(pending_.front());
  const std::vector<ClockPoint> rest(pending_.begin() + 1, pending_.end());
  pending_.clear();
  for (const ClockPoint& point : rest) Judge(point);
}

void ClockJudge::Gap(std::vector<ClockShift> shifts) {
  if (rows_ == 0) return;
  End();
  afterGap_ = true;
  isBroken_ = true;
  shifts_ = std::move(shifts);
  if (shifts_.size() > kMostShifts) shifts_.resize(kMostShifts);
}

/// Finds the events of the gap that moved the following rows; a difference that no event explains
/// is a step.
void ClockJudge::JudgeGap() {
  afterGap_ = false;
  const std::vector<ClockShift> shifts = std::exchange(shifts_, {});
  if (pending_.empty()) return;
  const int64_t step = MedianDistance() - std::llround(level_);
  int64_t least = std::numeric_limits<int64_t>::max();
  unsigned best = 0;
  for (unsigned moved = 0; moved < 1U << shifts.size(); ++moved) {
    int64_t left = step;
    for (std::size_t i = 0; i < shifts.size(); ++i)
      left -= (moved >> i & 1U) != 0 ? shifts[i].ticks : 0;
    if (std::abs(left) >= std::abs(least)) continue;
    least = left;
    best = moved;
  }
  for (std::size_t i = 0; i < shifts.size(); ++i) {
    if (!shifts[i].event || events_.At(*shifts[i].event).kind == EventKind::kExtra) continue;
    events_.At(*shifts[i].event).time =
        (best >> i & 1U) != 0 ? TimeEffect::kMoved : TimeEffect::kKept;
  }
  const std::vector<ClockPoint> points = std::exchange(pending_, {});
  level_ += static_cast<double>(step);
  if (4 * std::abs(least) > duration_) NoteStep(points.front(), least);
  for (const ClockPoint& point : points) Judge(point);
}

void ClockJudge::NoteStep(const ClockPoint& point, int64_t ticks) {
  isBroken_ = true;
  if (!point.isCompared) return;
  events_.Add({.kind = ticks > 0 ? EventKind::kLate : EventKind::kEarly,
               .place = point.place,
               .frame = point.frame,
               .pts = point.pts,
               .ticks90k = ticks});
}

void ClockJudge::NoteUneven(const ClockPoint& point) {
  if (2 * std::abs(Deviation(point)) <= duration_) return;
  ++uneven_;
  if (!point.isCompared) return;
  events_.Add({.kind = EventKind::kUneven,
               .place = point.place,
               .frame = point.frame,
               .pts = point.pts,
               .ticks90k = Deviation(point)});
}

void ClockJudge::FlushUneven() {
  for (const ClockPoint& point : pending_) NoteUneven(point);
  pending_.clear();
}

void ClockJudge::Sample(uint32_t clock, uint32_t pts) {
  constexpr int64_t kDiscontinuity = 20;  // time stamps that jump by a 20th say nothing about drift
  if (!pending_.empty() || afterGap_) return;
  const int64_t clockTicks = Ticks(sampleClock_, clock);
  const int64_t ptsTicks = Ticks(samplePts_, pts);
  if (hasSample_ && !isBroken_ && ptsTicks > 0 &&
      kDiscontinuity * std::abs(clockTicks - ptsTicks) < ptsTicks) {
    driftTicks_ += clockTicks - ptsTicks;
    driftPts_ += ptsTicks;
  }
  hasSample_ = true;
  isBroken_ = false;
  sampleClock_ = clock;
  samplePts_ = pts;
}

void ClockJudge::End() {
  if (afterGap_) JudgeGap();
  if (!pending_.empty() && !TakeStep()) FlushUneven();
}

std::optional<Pacing> ClockJudge::Figures() const {
  if (rows_ < 2 || elapsed_ <= 0) return std::nullopt;
  Pacing pacing;
  pacing.ratePerSecond = 90000.0 * static_cast<double>(rows_ - 1) / static_cast<double>(elapsed_);
  pacing.worstInterval = worstInterval_;
  pacing.unevenPictures = uneven_;
  if (driftPts_ > 0)
    pacing.driftPpm = 1e6 * static_cast<double>(driftTicks_) / static_cast<double>(driftPts_);
  return pacing;
}
