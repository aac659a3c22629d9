// The closing check of a run: which tests were to be run, and which have a result.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "RunEvents.h"

namespace runner {

/// Tests are listed when a round is planned, and stored when their result is; neither count is
/// derived from the other.
class RunLedger {
 public:
  /// Adds a test that is to be run.
  void List(const PlannedTest& test);
  /// Adds a test whose result is stored.
  void Store(const TestResult& result);
  /// Adds `rounds` rounds that will not begin.
  void SkipRounds(int rounds) { totals_.skippedRounds = rounds; }

  const Totals& Sums() const { return totals_; }
  /// The discrepancies, in one line with the tests' ids; empty if every listed test has exactly one
  /// result.
  std::string Difference() const;

 private:
  Totals totals_;
  std::multiset<std::string> due_;
  std::vector<std::string> unexpected_;
};

}  // namespace runner
