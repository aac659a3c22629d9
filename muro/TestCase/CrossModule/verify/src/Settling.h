// Makes events of paired and unpaired rows, stretch by stretch in golden's order.
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

/// Two stretches whose rows are paired, and how much of them is to be settled.
struct PairedStretch {
  const std::deque<FrameRow>& golden;
  const std::deque<FrameRow>& dump;
  const Pairing& pairing;
  std::size_t goldenEnd;
  std::size_t dumpEnd;
  bool isLast;              // both files end with them
  std::size_t context = 0;  // rows before both that are settled already
};

class Settling {
 public:
  Settling(const RowShape& shape, EventList& events);

  /// How much higher the dump numbers its frames at present.
  int32_t FrameOffset() const { return numbers_.Offset(); }
  void SetFrameOffset(int32_t offset) { numbers_.SetOffset(offset); }

  /// Takes two rows that are the same but for the counter, which begins at `counter` of both.
  /// `dump` may go on behind its row.
  void TakeSame(std::string_view golden, int64_t place, std::string_view dump, std::size_t counter);

  /// Takes a pair of rows.
  void TakePair(const FrameRow& golden, const FrameRow& dump, Bond bond);

  /// The last pair of rows; nothing at the beginning.
  std::optional<std::pair<FrameRow, FrameRow>> LastPair();

  void Take(const PairedStretch& stretch);

  /// Nothing more comes: hands out what was found.
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
  bool lastIsText_ = false;  // the last pair was the same row, of which `lastText_` is golden's
  std::string lastText_;
  std::size_t lastTail_ = 0;  // where it goes on behind the counter
  uint32_t lastDumpClock_ = 0;
  FrameRow lastGolden_;
  FrameRow lastDump_;
  Run run_;
  std::optional<int32_t> frameBefore_;  // of a row of the dump that is no pair's
  std::optional<FrameRow> frozen_;      // golden's row of the picture that the dump shows on and on
  std::optional<PtsRange> shown_;
};
