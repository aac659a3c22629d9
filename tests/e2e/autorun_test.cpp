// All unit tests of all modules in one run, with the operator where a test prompts.
#include <gtest/gtest.h>

#include <string>

#include "BoardFixture.h"
#include "TestCounts.h"

namespace {

using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";

class AutoRunTest : public test::BoardFixture {
 protected:
  /// Enters port 0 and unplugs its cable when asked, until all tests are done.
  void PlayOperator(Pty& pty) const {
    const std::string prompts =
        "which port to test \\(0~3\\) \\? |3.1 Please Disconnect|Please enter a choice : ";
    for (;;) {
      ASSERT_TRUE(pty.ExpectRegex(prompts, 60000));
      const std::string seen = pty.Groups()[0];
      if (seen == kChoice) return;
      if (seen.starts_with("which")) {
        ASSERT_TRUE(pty.WaitReading());
        pty.SendLine("0");
      } else if (seen.starts_with("3.1")) {
        Cvnsim("unplug 0");
        Cvnsim("after 5 s plug 0 3840x2160p60 hdr");
      }
    }
  }
};

TEST_F(AutoRunTest, AllModulesRunInARowWithOneReportLinePerTest) {
  Pty& pty = Start({.timeScale = 20});
  ASSERT_TRUE(Type(pty, {{kChoice, "4"}, {kChoice, "1"}, {kChoice, "6"}}));
  PlayOperator(pty);
  pty.SendLine("q");
  EXPECT_EQ(pty.Wait(), 0);
  // 7 graphics, 12 HDCP 2, 2 thermal, 2 secure video path, 29 receiver and the picture quality; one
  // of the secure video path always fails.
  constexpr int kTests = 7 + 12 + 2 + 2 + 29 + test::kUtVpqTests;
  EXPECT_EQ(Totals(), std::to_string(kTests) + '/' + std::to_string(kTests - 1) + "/1")
      << pty.Transcript().substr(0, 4000);
  const std::string report = ReportText();
  int lines = 0;
  for (auto at = report.find("# TestCase: "); at != std::string::npos;
       at = report.find("# TestCase: ", at + 1)) {
    ++lines;
  }
  EXPECT_EQ(lines, kTests);
}

}  // namespace
