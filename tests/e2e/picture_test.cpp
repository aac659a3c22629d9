// Picture-quality sessions on the simulated board: keys at a terminal, and the unit tests in a row.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "BoardFixture.h"
#include "TestCounts.h"

namespace {

using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kKeys[] = "'?' to test Random Value\n";
constexpr std::size_t kUnitTests = test::kUtVpqTests;

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class PictureTest : public test::BoardFixture {};

TEST_F(PictureTest, BrightnessIsAdjustedKeyByKey) {
  Pty& pty = Start();
  ASSERT_TRUE(Type(pty, {{kChoice, "3"}, {kChoice, "5"}, {kChoice, "2"}}));
  for (const char* key : {"0", "x0", ">", "1", "q"}) {  // 'x' means nothing
    ASSERT_TRUE(pty.Expect(kKeys));
    ASSERT_TRUE(pty.WaitReading());
    pty.Send(key);
  }
  ASSERT_TRUE(Type(pty, {{kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), "1/1/0");
  EXPECT_EQ(Trace(),
            (std::vector<std::string>{
                "K2V_RHAL_VPQ_GetBrightness({50}) = 0", "K2V_RHAL_VPQ_SetBrightness(50) = 0",
                "K2V_RHAL_VPQ_SetBrightness(51) = 0", "K2V_RHAL_VPQ_SetBrightness(52) = 0",
                "K2V_RHAL_VPQ_SetBrightness(100) = 0", "K2V_RHAL_VPQ_SetBrightness(99) = 0"}));
}

TEST_F(PictureTest, TheWrapperRunsAllUnitTestsIntoTheReport) {
  Pty& pty = Start();
  ASSERT_TRUE(Type(pty, {{kChoice, "4"}, {kChoice, "1"}, {kChoice, "5"}, {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  const std::string count = std::to_string(kUnitTests);
  EXPECT_EQ(Totals(), count + '/' + count + "/0");
  EXPECT_EQ(CountOf(ReportText(), "# TestCase: UTVpq Function Test "), kUnitTests);
  EXPECT_GT(Trace().size(), 2 * kUnitTests);
}

}  // namespace
