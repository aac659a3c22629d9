// The harness on the simulated board: from the first menu to the report, as an operator types.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "BoardFixture.h"
#include "Expected.h"

namespace {

using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kJudge[] = "Please check the result PASS or FAIL by 'Y' or 'N' ";
constexpr char kUserSel[] = "User Sel, 0(Continue); 1(Exit); 2(ChangSrc)";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

class HarnessTest : public test::BoardFixture {
 protected:
  /// Opens the scaler module's menu and starts test number `index`.
  static testing::AssertionResult StartScalerTest(Pty& pty, const char* index) {
    return Type(pty, {{kChoice, "3"}, {kChoice, "2"}, {kChoice, index}});
  }

  /// Shows HDMI port 0 in the main window, up to the first prompt of the watch loop.
  static testing::AssertionResult ShowPortZero(Pty& pty) {
    if (auto started = StartScalerTest(pty, "18"); !started) return started;
    return Type(pty, {{"Switch_Source Exit, 0(No) 1(YES)", "0"},
                      {"Please choose Input Src for Main:", "2"},
                      {"Please choose HDMI InputPort 0 ~ 3", "0"},
                      {"Blank Window 0(Win0), 1(Win1)", "0"},
                      {"Choose VSC connect Window 0(Win0), 1(Win1)", "0"},
                      {"Choose output mode:", "0"},
                      {"Blank Window 0(Win0), 1(Win1)", "0"},
                      {"SetInOutregion video wid:0(wid_0),1(wid_1)", "0"},
                      {"set display size:0(1920x1080),1(3840x2160),2(960*540)", "1"},
                      {"Blank Window 0(Win0), 1(Win1)", "0"}});
  }
};

TEST_F(HarnessTest, OneTestFromTheMenuToTheReport) {
  Pty& pty = Start();
  ASSERT_TRUE(StartScalerTest(pty, "37"));
  ASSERT_TRUE(Type(pty, {{"VSC_SetWinBlank 0(Disable), 1(Enable)=", "1"},
                         {kJudge, "y"},
                         {kChoice, "p"},
                         {kChoice, "P"},
                         {kChoice, "p"}}));
  EXPECT_EQ(pty.Wait(), 0) << "P in the main menu ends the program";
  EXPECT_EQ(Trace(), std::vector<std::string>{"K2V_RHAL_VSC_SetWinBlank(0, 1, 0) = 0"});
  EXPECT_TRUE(Contains(ReportText(),
                       "# TestCase: Vsc Function Test         037.Vsc MURO 37              "
                       "(K2V_RHAL_VSC_SetWinBlank (37) )       PASS       #\n"));
  EXPECT_EQ(Totals(), "1/1/0");
  EXPECT_TRUE(Contains(pty.Transcript(), "Test Report file generated at /tmp/var/log/" +
                                             ReportPath().filename().string() + "\n"));
}

TEST_F(HarnessTest, ShowsAPictureAndWatchesIt) {
  Pty& pty = Start({.timeScale = 100});
  ASSERT_TRUE(ShowPortZero(pty));
  ASSERT_TRUE(Type(pty, {{kUserSel, "1"}, {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  // From the test's first prompt to its report line; this part does not depend on timing.
  const std::string& transcript = pty.Transcript();
  const std::size_t begin = transcript.find("Exit, 0(No) 1(YES)");
  const std::size_t end = transcript.find("Test Report file generated at", begin);
  EXPECT_TRUE(test::IsAsExpected("vsc_functionality.txt", transcript.substr(begin, end - begin)));
  const auto trace = Trace();
  for (const std::string call : {"SetInputRegion", "SetOutputRegion"})
    EXPECT_EQ(
        std::ranges::count(trace, "K2V_RHAL_VSC_" + call + "(0, {x=0, y=0, w=3840, h=2160}) = 0"),
        1);
  EXPECT_EQ(Totals(), "1/0/1") << "a run that the operator ends counts as failed";
  EXPECT_TRUE(Contains(Cvnsim("state"), "3840x2160"));
}

TEST_F(HarnessTest, RunsWithoutATerminal) {
  for (const char* input : {"</dev/null", "<&-", "</dev/null | cat"}) {
    std::string command;
    for (const std::string& word : CommandLine({"cvntester"})) command += test::Quoted(word) + ' ';
    const auto run = test::RunShell(command + input);
    EXPECT_EQ(run.status, 0) << input;
    EXPECT_TRUE(run.output.ends_with(std::string(kChoice) + "\033[1;37m")) << run.output;
  }
}

TEST_F(HarnessTest, CtrlCAtAPromptEndsTheHarnessAndKeepsTheReport) {
  Pty& pty = Start();
  ASSERT_TRUE(StartScalerTest(pty, "15"));
  ASSERT_TRUE(Type(pty, {{kJudge, "Y"}, {kChoice, "37"}}));
  ASSERT_TRUE(pty.Expect("1(Enable)="));
  ASSERT_TRUE(pty.WaitReading());
  pty.Send("\x03");
  EXPECT_EQ(pty.Wait(), 130);
  EXPECT_EQ(Totals(), "1/1/0");
}

}  // namespace
