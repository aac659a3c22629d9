// A short endurance run, to detect leaks every day; bench/endurance runs whole nights.
#include <gtest/gtest.h>

#include "BoardFixture.h"

namespace {

constexpr int kNoSandbox = 77;

TEST(EnduranceTest, ShortRunLeaksNothingAndReportsEveryTest) {
  const auto night =
      test::RunShell(test::Quoted(CVN_ENDURANCE) + " --tests 300 --verifications 20");
  if (night.status == kNoSandbox) GTEST_SKIP() << night.output;
  EXPECT_EQ(night.status, 0) << night.output;
}

}  // namespace
