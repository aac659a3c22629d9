// Determines the golden row at which the comparison of a stage starts: rows that its verifier
// ignores cause no events.
#pragma once

#include <cstdint>

#include "FrameRows.h"

class ComparedRows {
 public:
  explicit ComparedRows(const RowShape& shape) : shape_(shape) {}

  /// True once a row was compared; then `Take` need not be called any more.
  bool HasBegun() const { return begun_; }

  /// Processes the next golden row. Returns whether it is compared.
  bool Take(const FrameRow& golden);

 private:
  bool Begins(const FrameRow& golden);
  bool IsSettled(const FrameRow& golden, int32_t rate);

  const RowShape& shape_;
  bool begun_ = false;
  int64_t settlingRows_ = -1;  // VO and Scaler: length of the tolerance; -1: unknown yet
  bool firstSecondIsOver_ = false;
};
