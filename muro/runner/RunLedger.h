// The closing check of a run: who was to be run, and who has a result.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "RunEvents.h"

namespace runner {

/// Tests are listed when a round's list is made, and stored when their result is; neither count is
/// taken from the other.
class RunLedger {
 public:
  /// A test is due.
  void List(const PlannedTest& test);
  /// Its result is stored.
  void Store(const TestResult& result);
  /// `rounds` more rounds will not begin.
  void SkipRounds(int rounds) { totals_.skippedRounds = rounds; }

  const Totals& Sums() const { return totals_; }
  /// What does not add up, in one line with the tests' ids; empty when every test that was listed
  /// has one result.
  std::string Difference() const;

 private:
  Totals totals_;
  std::multiset<std::string> due_;
  std::vector<std::string> unexpected_;
};

}  // namespace runner
