// The final consistency check of a run.
#include <gtest/gtest.h>

#include "runner/RunLedger.h"

namespace {

using runner::RunLedger;
using runner::Verdict;

TEST(LedgerTest, TestsWithoutExactlyOneResultAreReported) {
  const auto test = [](const char* id) { return runner::PlannedTest{1, 1, id, "A", "", ""}; };
  RunLedger ledger;
  for (const char* id : {"A/1", "A/2", "A/3"}) ledger.List(test(id));
  ledger.Store({test("A/1"), Verdict::kPass, "", 1.5, "", ""});
  EXPECT_EQ(ledger.Difference(), "no result for A/2, A/3");
  ledger.Store({test("A/3"), Verdict::kBlocked, "", 0.25, "", ""});
  // A duplicate result does not make up for a missing one.
  ledger.Store({test("A/3"), Verdict::kSkipped, "", 0, "", ""});
  EXPECT_TRUE(ledger.Sums().AddUp());
  EXPECT_EQ(ledger.Sums().seconds, 1.75);
  EXPECT_EQ(ledger.Difference(), "no result for A/2; more than one result for A/3");
}

}  // namespace
