// Durations of a large number of calls, in little memory.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace record {

/// Counts durations in steps of at most 1/64; the sum and the maximum are exact.
class Histogram {
 public:
  void Add(uint64_t ns) {
    const size_t step = StepOf(ns);
    if (step >= counts_.size()) counts_.resize(step + 1);
    ++counts_[step];
    ++count_;
    sumNs_ += ns;
    worstNs_ = std::max(worstNs_, ns);
  }

  uint64_t Count() const { return count_; }
  uint64_t SumNs() const { return sumNs_; }
  uint64_t WorstNs() const { return worstNs_; }

  /// The duration that `share` (0 to 1) of the calls do not exceed.
  uint64_t Quantile(double share) const {
    uint64_t below = 0;
    const auto wanted = static_cast<double>(count_) * share;
    for (size_t step = 0; step < counts_.size(); ++step) {
      below += counts_[step];
      if (static_cast<double>(below) >= wanted && below != 0)
        return std::min(EndOf(step), worstNs_);
    }
    return worstNs_;
  }

 private:
  static constexpr unsigned kBits = 6;
  static constexpr uint64_t kSteps = 1 << kBits;

  static size_t StepOf(uint64_t ns) {
    if (ns < 2 * kSteps) return static_cast<size_t>(ns);
    const auto shift = static_cast<unsigned>(std::bit_width(ns)) - kBits - 1;
    return static_cast<size_t>(shift * kSteps + (ns >> shift));
  }
  static uint64_t EndOf(size_t step) {
    if (step < 2 * kSteps) return step;
    const uint64_t shift = step / kSteps - 1;
    return ((step % kSteps + kSteps + 1) << shift) - 1;
  }

  std::vector<uint32_t> counts_;
  uint64_t count_ = 0;
  uint64_t sumNs_ = 0;
  uint64_t worstNs_ = 0;
};

}  // namespace record
