// Compares a stage's 90 kHz counter with golden's, row by row: finds lasting steps, single pictures
// shown too long or too short, and the effect of lost or repeated rows on the time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "EventList.h"
#include "FrameEvent.h"

/// The counters of a pair of rows.
struct ClockPoint {
  int64_t place;  // number of golden rows before it
  int64_t frame;
  std::optional<uint32_t> pts;
  uint32_t golden;
  uint32_t dump;
  bool isCompared;  // the stage's rules select the row
};

/// Shift of the time after a gap if the event removes or adds its rows' time.
struct ClockShift {
  std::optional<std::size_t> event;  // index in the list; empty: the rows are not compared
  int64_t ticks;
};

class ClockJudge {
 public:
  explicit ClockJudge(EventList& events) : events_(events) {}

  /// Adds the next pair of rows.
  void Add(const ClockPoint& point);

  /// As `Add` for a pair with nothing to report. Returns false, without adding the pair, if there
  /// may be something.
  bool TakeOnLevel(uint32_t golden, uint32_t dump);

  /// Rows are missing or extra before the next pair.
  void Gap(std::vector<ClockShift> shifts);

  /// Adds a pair of dump counter and pts, taken occasionally, for the drift.
  void Sample(uint32_t clock, uint32_t pts);

  /// Signals the end of the rows, or of those that follow without a gap.
  void End();

  /// Present duration of golden's pictures, in ticks.
  int64_t Duration() const { return duration_; }

  /// Empty if there are fewer than two rows.
  std::optional<Pacing> Figures() const;

 private:
  void Count(const ClockPoint& point);
  void LearnDuration(int64_t interval);
  int64_t Deviation(const ClockPoint& point) const;
  int64_t DistanceOf(const ClockPoint& point) const;
  bool IsOnLevel(const ClockPoint& point) const;
  bool IsOneLevel() const;
  int64_t MedianDistance() const;
  void Judge(const ClockPoint& point);
  bool TakeStep();
  void JudgePending();
  void JudgeGap();
  void NoteStep(const ClockPoint& point, int64_t ticks);
  void NoteUneven(const ClockPoint& point);
  void FlushUneven();

  EventList& events_;
  int64_t rows_ = 0;
  int64_t elapsed_ = 0;  // of the dump's counter
  int64_t worstInterval_ = 0;
  int64_t uneven_ = 0;
  uint32_t lastGolden_ = 0;
  uint32_t lastDump_ = 0;
  uint32_t base_ = 0;  // difference of the counters at the first row
  double level_ = 0;   // current difference of the rows, without the base
  int64_t duration_ = 1500;
  int64_t otherDuration_ = 0;  // duration seen lately instead, and how often
  int otherSeen_ = 0;
  std::vector<ClockPoint> pending_;  // off the level, or the first ones after a gap
  bool afterGap_ = false;
  std::vector<ClockShift> shifts_;

  bool hasSample_ = false;
  bool isBroken_ = false;  // there was a step since the last sample
  uint32_t sampleClock_ = 0;
  uint32_t samplePts_ = 0;
  int64_t driftTicks_ = 0;
  int64_t driftPts_ = 0;
};
