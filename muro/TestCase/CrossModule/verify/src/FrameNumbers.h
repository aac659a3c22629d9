// Tells a dump that numbers its frames in its own way from single frame numbers that are wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "EventList.h"

class FrameNumbers {
 public:
  /// What is wrong goes to `events`; `column` is the frame number's.
  FrameNumbers(EventList& events, std::size_t column) : events_(events), column_(column) {}

  /// How much higher the dump numbers its frames at present.
  int32_t Offset() const { return offset_; }

  /// True when rows of equal numbers need not be shown.
  bool IsPlain() const { return offset_ == 0 && pending_.empty(); }

  /// The dump numbers its frames so much higher from its first row on.
  void SetOffset(int32_t offset) { offset_ = offset; }

  /// Shows the numbers of a pair of rows. `golden` says where, `before` is the number of the
  /// dump's row before.
  void Add(const RowEvent& golden, int32_t dumpFrame, std::optional<int32_t> before,
           bool isCompared);

  /// Nothing more comes.
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
  std::vector<Pair> pending_;  // of another offset
};
