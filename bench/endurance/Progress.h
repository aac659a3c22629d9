// The progress of a stage, and what is observed of the harness meanwhile.
#pragma once

#include <chrono>
#include <set>
#include <string>
#include <vector>

#include "NightBoard.h"
#include "Watch.h"

namespace endurance {

class Progress {
 public:
  /// `total` tests are due; samples are stored in `tenths`.
  Progress(NightBoard& board, std::size_t total, Tenths& tenths);

  /// `count` more are done. Samples the harness about forty times per tenth.
  void Done(std::size_t count);
  std::size_t DoneSoFar() const { return done_; }

  /// Files that are now in the board's /tmp and were not at the end of the first tenth, one line
  /// each.
  std::vector<std::string> LeftFiles() const;

 private:
  using Clock = std::chrono::steady_clock;

  NightBoard& board_;
  std::size_t total_;
  Tenths& tenths_;
  std::size_t done_ = 0;
  std::size_t index_ = 0;  // of the tenth
  std::size_t lookedAt_ = 0;
  Clock::time_point since_ = Clock::now();
  std::set<std::string> files_;
};

}  // namespace endurance
