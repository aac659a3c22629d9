// The harness on the simulated board: from the first menu to the report, as an operator types.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <sstream>
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
  /// A harness whose waits pass a hundred times faster.
  Pty& StartFast() { return Start({.timeScale = 100}); }

  /// Walks to test number `index` of the scaler module and starts it.
  static testing::AssertionResult StartScalerTest(Pty& pty, const char* index) {
    return Type(pty, {{kChoice, "3"}, {kChoice, "2"}, {kChoice, index}});
  }

  /// Brings HDMI port 0 up in the main window up to the first question of the watch.
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

  bool Traced(const std::string& call) const {
    const auto trace = Trace();
    return std::find(trace.begin(), trace.end(), call) != trace.end();
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

TEST_F(HarnessTest, BringsAPictureUpAndWatchesIt) {
  Pty& pty = StartFast();
  ASSERT_TRUE(ShowPortZero(pty));
  ASSERT_TRUE(Type(pty, {{kUserSel, "1"}, {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  // From the test's first question to its report line; nothing in between depends on the time.
  const std::string& transcript = pty.Transcript();
  const std::size_t begin = transcript.find("Exit, 0(No) 1(YES)");
  const std::size_t end = transcript.find("Test Report file generated at", begin);
  EXPECT_TRUE(test::IsAsExpected("vsc_functionality.txt", transcript.substr(begin, end - begin)));
  EXPECT_TRUE(Traced("K2V_RHAL_VSC_SetInputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0"));
  EXPECT_TRUE(Traced("K2V_RHAL_VSC_SetOutputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0"));
  EXPECT_EQ(Totals(), "1/0/1") << "a run that the operator ends counts as failed";
  EXPECT_TRUE(Contains(Cvnsim("state"), "3840x2160"));
}

TEST_F(HarnessTest, SeesUnplugAndAnotherTimingWhileWatching) {
  Pty& pty = StartFast();
  ASSERT_TRUE(ShowPortZero(pty));
  ASSERT_TRUE(pty.Expect(kUserSel));
  Cvnsim("unplug 0");
  pty.SendLine("0");
  ASSERT_TRUE(pty.Answer("HDMI Get Timing NG 2\n\033[1;34mBlank Window", "0"));
  ASSERT_TRUE(pty.Expect("Detect Timing NG : -1"));
  Cvnsim("plug 0 1920x1080p50");
  // The question comes every fifth poll, before or after the new timing is seen.
  ASSERT_TRUE(pty.ExpectRegex("User Sel|active x : 0, y : 0, w : 780, h : 438"));
  if (pty.Groups()[0] == "User Sel") {
    pty.SendLine("0");
    ASSERT_TRUE(pty.Expect("active x : 0, y : 0, w : 780, h : 438"));
  }
  ASSERT_TRUE(pty.ExpectRegex("User Sel|Blank Window"));
  if (pty.Groups()[0] == "User Sel") {
    pty.SendLine("0");
    ASSERT_TRUE(pty.Expect("Blank Window"));
  }
  pty.SendLine("0");
  ASSERT_TRUE(Type(pty, {{kUserSel, "1"}, {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_TRUE(Traced("K2V_RHAL_VSC_SetWinBlank(0, 1, 1) = 0"));
}

TEST_F(HarnessTest, ChangesTheSourceAndShowsAnotherPort) {
  Pty& pty = StartFast();
  ASSERT_TRUE(ShowPortZero(pty));
  ASSERT_TRUE(Type(pty, {{kUserSel, "2"},
                         {"change src: VSC Window 0(Win0), 1(Win1)", "0"},
                         {"Blank Window 0(Win0), 1(Win1)", "0"},
                         {"Switch_Source Exit, 0(No) 1(YES)", "0"},
                         {"Please choose Input Src for Main:", "2"},
                         {"Please choose HDMI InputPort 0 ~ 3", "1"},
                         {"Blank Window 0(Win0), 1(Win1)", "0"},
                         {"Choose VSC connect Window 0(Win0), 1(Win1)", "0"},
                         {"VSC Not Init Again", "0"},
                         {"Blank Window 0(Win0), 1(Win1)", "0"},
                         {"SetInOutregion video wid:0(wid_0),1(wid_1)", "0"},
                         {"set display size:", "0"},
                         {"Blank Window 0(Win0), 1(Win1)", "0"},
                         {kUserSel, "1"},
                         {kChoice, "Q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_TRUE(Traced("K2V_RHAL_VFE_HDMI_Uninitialize() = 0"));
  EXPECT_TRUE(Traced("K2V_RHAL_VSC_Disconnect(0, {type=2, attr=0x0, output=0}) = 0"));
  EXPECT_TRUE(Traced("K2V_RHAL_VFE_HDMI_Connect(1) = 0"));
  EXPECT_TRUE(Traced("K2V_RHAL_VSC_SetInputRegion(0, {x=0, y=0, w=1920, h=1080}) = 0"));
}

TEST_F(HarnessTest, WrongInputIsToldAndNeverTaken) {
  Pty& pty = Start();
  ASSERT_TRUE(Type(pty, {{kChoice, "7"},
                         {"MainMenu", "-1"},
                         {"MainMenu", "12345678901234567890123"},
                         {"MainMenu", "3"},
                         {"Vido Manual Test", "2"},
                         {"Vsc Function Test", "37"},
                         {"1(Enable)=", "yes"},
                         {"\nUnknown Input > yes\n", "99999999999"},
                         {"\nUnknown Input > 99999999999\n", "0"},
                         {kJudge, "N"},
                         {kChoice, "15"},
                         {kJudge, "maybe"},
                         {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Trace(), std::vector<std::string>{"K2V_RHAL_VSC_SetWinBlank(0, 0, 0) = 0"});
  EXPECT_EQ(Totals(), "2/1/1");
}

TEST_F(HarnessTest, EndOfInputInAMenuQuits) {
  Pty& pty = Start();
  ASSERT_TRUE(pty.Answer(kChoice, "3"));
  ASSERT_TRUE(pty.Expect(kChoice));
  ASSERT_TRUE(pty.WaitReading());
  pty.CloseInput();
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), "0/0/0");
}

TEST_F(HarnessTest, EndOfInputInAPromptReportsTheRunningTestAsFailed) {
  Pty& pty = Start();
  ASSERT_TRUE(StartScalerTest(pty, "34"));
  ASSERT_TRUE(Type(pty, {{"x=", "1"}, {"y=", "2"}}));
  ASSERT_TRUE(pty.Expect("w="));
  ASSERT_TRUE(pty.WaitReading());
  pty.CloseInput();
  ASSERT_TRUE(pty.Expect("\nEnd of input\n"));
  EXPECT_EQ(pty.Wait(), 1);
  EXPECT_TRUE(Contains(ReportText(), "034.Vsc MURO 34 "));
  EXPECT_EQ(Totals(), "1/0/1");
  EXPECT_TRUE(Trace().empty());
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

TEST_F(HarnessTest, FailuresOfTheHalAreToldAndCounted) {
  Pty& pty = Start();
  ASSERT_TRUE(pty.Expect(kChoice));
  Cvnsim("fail K2V_RHAL_VSC_SetRGB444Mode -3 --times 1");
  pty.SendLine("3");
  ASSERT_TRUE(Type(pty, {{kChoice, "2"},
                         {kChoice, "8"},
                         {"RGB444, 0(Off); 1(On)", "1"},
                         {"Result : -3\n", "8"},
                         {"RGB444, 0(Off); 1(On)", "1"},
                         {kJudge, "Y"},
                         {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), "2/1/1");
}

TEST_F(HarnessTest, SavesAPictureWhereTheHostCanLookAtIt) {
  Pty& pty = StartFast();
  ASSERT_TRUE(StartScalerTest(pty, "29"));
  ASSERT_TRUE(Type(pty, {{kJudge, "y"}, {kChoice, "14"}, {"CaptureVideoFrame place", "1"}}));
  ASSERT_TRUE(
      Type(pty, {{"Press file path name:", "/tmp/RGB.raw"}, {kJudge, "y"}, {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  const std::string frame = test::FileText(OnBoard("/tmp/RGB.raw"));
  ASSERT_EQ(frame.size(), 1555200u);
  EXPECT_EQ(frame.substr(0, 3), "\xff\xff\xff") << "white is the first colour bar";
  EXPECT_EQ(LogCommands(), std::vector<std::string>{"sync"});
}

TEST_F(HarnessTest, ScenarioSetsTheBoardUp) {
  Pty& pty =
      Start({.scenario = "plug 2 1280x720p50\nafter 2 polls 2 unplug 2\n", .timeScale = 100});
  ASSERT_TRUE(StartScalerTest(pty, "28"));
  ASSERT_TRUE(
      Type(pty, {{"Choose input Src:", "2"}, {kUserSel, "1"}, {kJudge, "y"}, {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_TRUE(Contains(pty.Transcript(), "Detect Timing NG : -1")) << "port 0 has no source here";
}

}  // namespace
