// From which golden row on a stage is compared: what its verifier leaves out is no event.
#pragma once

#include <cstdint>

#include "FrameRows.h"

class ComparedRows {
 public:
  explicit ComparedRows(const RowShape& shape) : shape_(shape) {}

  /// True once a row was compared; none need to be shown any more.
  bool HasBegun() const { return begun_; }

  /// Shows golden's next row. Returns whether it is compared.
  bool Take(const FrameRow& golden);

 private:
  bool Begins(const FrameRow& golden);
  bool IsSettled(const FrameRow& golden, int32_t rate);

  const RowShape& shape_;
  bool begun_ = false;
  int64_t settlingRows_ = -1;  // VO and Scaler: of tolerance; -1: the rate is not known yet
  bool firstSecondIsOver_ = false;
};
