// Distinguishes a dump with a different frame numbering from single wrong frame numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "EventList.h"

class FrameNumbers {
 public:
  /// Wrong numbers are added to `events`; `column` is that of the frame number.
  FrameNumbers(EventList& events, std::size_t column) : events_(events), column_(column) {}

  /// Present difference between the dump's frame numbers and golden's.
  int32_t Offset() const { return offset_; }

  /// True if rows with equal numbers need not be added.
  bool IsPlain() const { return offset_ == 0 && pending_.empty(); }

  /// Sets the difference of the frame numbers from the first row on.
  void SetOffset(int32_t offset) { offset_ = offset; }

  /// Adds the numbers of a pair of rows. `golden` is the place, `before` is the number of the
  /// dump's previous row.
  void Add(const RowEvent& golden, int32_t dumpFrame, std::optional<int32_t> before,
           bool isCompared);

  /// Signals the end of the rows.
  void End();

 private:
  struct Pair {
    RowEvent golden;
    int32_t dumpFrame;
    bool isCompared;

    int32_t Offset() const { return static_cast<int32_t>(dumpFrame - golden.frame); }
  };

  void NoteWrong(const Pair& pair);

  EventList& events_;
  const std::size_t column_;
  int32_t offset_ = 0;
  std::vector<Pair> pending_;  // with a different offset
};
