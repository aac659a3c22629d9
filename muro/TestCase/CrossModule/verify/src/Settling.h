// Turns paired and unpaired rows into events, stretch by stretch in golden's order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ClockJudge.h"
#include "ComparedRows.h"
#include "EventList.h"
#include "FrameNumbers.h"
#include "FrameRows.h"
#include "RowPairing.h"

/// Two stretches with paired rows, and how much of them is to be settled.
struct PairedStretch {
  const std::deque<FrameRow>& golden;
  const std::deque<FrameRow>& dump;
  const Pairing& pairing;
  std::size_t goldenEnd;
  std::size_t dumpEnd;
  bool isLast;              // both files end with them
  std::size_t context = 0;  // rows before both that are already settled
};

class Settling {
 public:
  Settling(const RowShape& shape, EventList& events);

  /// Present difference between the dump's frame numbers and golden's.
  int32_t FrameOffset() const { return numbers_.Offset(); }
  void SetFrameOffset(int32_t offset) { numbers_.SetOffset(offset); }

  /// Adds two rows that are the same except for the counter, which begins at `counter` in both.
  /// `dump` may continue after its row.
  void TakeSame(std::string_view golden, int64_t place, std::string_view dump, std::size_t counter);

  /// Adds a pair of rows.
  void TakePair(const FrameRow& golden, const FrameRow& dump, Bond bond);

  /// The last pair of rows; empty at the beginning.
  std::optional<std::pair<FrameRow, FrameRow>> LastPair();

  void Take(const PairedStretch& stretch);

  /// Signals the end of the rows and returns the results.
  void End(StageEvents& result);

 private:
  struct Gap;
  struct Work;

  /// Where rows of the same content began.
  struct Run {
    int64_t place = 0;
    int64_t frame = 0;
    std::optional<uint32_t> pts = {};
  };

  bool ParseLast();
  std::optional<uint32_t> PtsOf(const FrameRow& row) const;
  RowEvent EventAt(EventKind kind, const FrameRow& golden) const;
  void NoteShown(const FrameRow& golden);
  void Pair(const FrameRow& golden, const FrameRow& dump, Bond bond, bool isCompared,
            bool isInOrder);
  void NoteDifference(const FrameRow& golden, const FrameRow& dump, Bond bond);
  bool IsFrozen(const FrameRow& golden, const FrameRow& dump) const;
  void KeepPair(const FrameRow& golden, const FrameRow& dump);
  void SamplePts(uint32_t pts, uint32_t clock);

  std::optional<std::size_t> AddIf(bool isCompared, const RowEvent& event);
  void TakeMoved(Work& work, std::size_t g);
  void TakeGap(const Work& work, Gap& gap);
  void TakeRepeat(const Work& work, Gap& gap, std::size_t d);
  void TakeStranger(const Work& work, Gap& gap, std::size_t d);
  void TakeLost(const Work& work, Gap& gap);
  void TakeCut(const Work& work, const Gap& gap);
  void LeaveOpen(const Work& work, const Gap& gap, FrameEvent& event) const;
  bool NumbersTell(const Work& work, const Gap& gap) const;
  Run RunFrom(const Work& work, std::size_t g) const;
  void PlaceByClock(std::vector<FrameEvent>& events) const;

  const RowShape& shape_;
  EventList& events_;
  ClockJudge clock_;
  ComparedRows compared_;
  FrameNumbers numbers_;
  int64_t pairs_ = 0;
  bool hasLast_ = false;
  bool lastIsText_ = false;  // the last pair was the same row; `lastText_` is golden's text
  std::string lastText_;
  std::size_t lastTail_ = 0;  // position after the counter
  uint32_t lastDumpClock_ = 0;
  FrameRow lastGolden_;
  FrameRow lastDump_;
  Run run_;
  std::optional<int32_t> frameBefore_;  // of a row of the dump that is not part of a pair
  std::optional<FrameRow> frozen_;      // golden's row of the picture that the dump keeps repeating
  std::optional<PtsRange> shown_;
};
