// Receiver sessions on the simulated board: cables unplugged and plugged in while a test polls, and
// the unit tests in a row.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "BoardFixture.h"

namespace {

using test::Pty;

constexpr char kChoice[] = "Please enter a choice : ";
constexpr char kExit[] = "VfeHdmiMUROTestCase Exit, 0(No) 1(YES) 2(Don't Change Port) 3(Close)";
constexpr char kUnitModule[] = "4";
constexpr int kUnitTests = 29;

class ReceiverTest : public test::BoardFixture {
 protected:
  /// Answers the prompts shown when a picture appears: the whole panel, the main window.
  static testing::AssertionResult PlacePicture(Pty& pty) {
    return Type(pty, {{"SetInOutregion video wid:", "0"},
                      {"set display size:", "1"},
                      {"Blank Window 0(Win0), 1(Win1)", "0"}});
  }

  /// Starts the first HDMI test on port 0 and shows its picture.
  static testing::AssertionResult ShowPortZero(Pty& pty) {
    if (auto started =
            Type(pty, {{kChoice, "3"}, {kChoice, "0"}, {kChoice, "0"}, {"Input port:", "0"}});
        !started) {
      return started;
    }
    return PlacePicture(pty);
  }

  /// Waits for `text` and dismisses the prompt that appears every ten seconds as often as needed.
  static testing::AssertionResult ExpectWhilePolling(Pty& pty, const std::string& text) {
    for (;;) {
      if (auto seen = pty.ExpectRegex(text + "|VfeHdmiMUROTestCase Exit,"); !seen) return seen;
      if (pty.Groups()[0] != "VfeHdmiMUROTestCase Exit,") return testing::AssertionSuccess();
      if (auto reading = pty.WaitReading(); !reading) return reading;
      pty.SendLine("2");
    }
  }

  /// Plays the operator of one unit test on port 0 until the menu is back.
  void PlayUnitTest(Pty& pty, const std::string& plug) {
    const std::string prompts =
        "which port to test \\(0~3\\) \\? |3.1 Please Disconnect|Test Report file generated";
    bool unplugged = false;
    for (;;) {
      ASSERT_TRUE(pty.ExpectRegex(prompts));
      const std::string prompt = pty.Groups()[0];
      if (prompt.starts_with("Test")) break;
      if (prompt.starts_with("which")) {
        ASSERT_TRUE(pty.WaitReading());
        pty.SendLine("0");
      } else {
        Cvnsim("unplug 0");
        unplugged = true;
      }
    }
    if (unplugged) Cvnsim(plug);
    ASSERT_TRUE(pty.Expect(kChoice));
  }

  std::ptrdiff_t CountTraced(const std::string& call) const {
    const auto trace = Trace();
    return std::count(trace.begin(), trace.end(), call);
  }
};

TEST_F(ReceiverTest, FollowsUnpluggingAndPluggingTheCable) {
  Pty& pty = Start({.timeScale = 50});
  ASSERT_TRUE(ShowPortZero(pty));
  ASSERT_TRUE(pty.Expect("GetPortTimingInfo\nformat:97\n"));
  Cvnsim("unplug 0");
  ASSERT_TRUE(ExpectWhilePolling(pty, "Blank Window"));
  ASSERT_TRUE(pty.WaitReading());
  pty.SendLine("0");
  ASSERT_TRUE(ExpectWhilePolling(pty, "Wait\n"));
  Cvnsim("plug 0 1920x1080p50");
  ASSERT_TRUE(ExpectWhilePolling(pty, "Detect Timing OK : 0"));
  ASSERT_TRUE(PlacePicture(pty));
  ASSERT_TRUE(pty.Expect("GetPortTimingInfo\nformat:31\n"));
  ASSERT_TRUE(Type(pty, {{kExit, "1"}, {kChoice, "q"}}));
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), "1/1/0");
  EXPECT_EQ(CountTraced("K2V_RHAL_VSC_Connect(0, {type=2, attr=0x0, output=0}) = 0"), 2);
  EXPECT_EQ(CountTraced("K2V_RHAL_VSC_SetInputRegion(0, {x=0, y=0, w=1920, h=1080}) = 0"), 1);
  EXPECT_EQ(CountTraced("K2V_RHAL_VFE_HDMI_Uninitialize() = 0"), 1);
}

TEST_F(ReceiverTest, PrintsTheEdidThatWasWritten) {
  Pty& pty = Start({.timeScale = 100});
  ASSERT_TRUE(ShowPortZero(pty));
  ASSERT_TRUE(Type(pty, {{kExit, "3"}, {kChoice, "8"}, {"Input port:", "1"}}));
  ASSERT_TRUE(pty.Expect("VfeHdmiMUROTest_GetEDID = 1\n"));
  ASSERT_TRUE(pty.Answer(kChoice, "q"));
  EXPECT_EQ(pty.Wait(), 0);

  std::istringstream words(pty.Before());
  const std::string path = testing::TempDir() + "printed_edid";
  std::ofstream file(path, std::ios::binary);
  std::size_t bytes = 0;
  for (std::string word; words >> word && word.back() == ','; ++bytes) {
    file.put(static_cast<char>(std::stoi(word, nullptr, 16)));
  }
  file.close();
  ASSERT_EQ(bytes, 256u);
  const auto decoded = test::RunShell("edid-decode --check " + test::Quoted(path));
  std::remove(path.c_str());
  if (decoded.status == 127) GTEST_SKIP() << "edid-decode is not installed";
  EXPECT_NE(decoded.output.find("Source physical address: 2.0.0.0"), std::string::npos);
  EXPECT_NE(decoded.output.find("EDID conformity: PASS"), std::string::npos) << decoded.output;
}

TEST_F(ReceiverTest, AllUnitTestsPassOnAPortWithASource) {
  Pty& pty = Start({.timeScale = 20});
  ASSERT_TRUE(Type(pty, {{kChoice, "4"}, {kChoice, "0"}, {kChoice, kUnitModule}}));
  ASSERT_TRUE(pty.Expect(kChoice));
  for (int i = 0; i < kUnitTests; ++i) {
    ASSERT_TRUE(pty.WaitReading());
    pty.SendLine(std::to_string(i));
    PlayUnitTest(pty, "plug 0 3840x2160p60 hdr");
    if (HasFatalFailure()) return;
  }
  pty.SendLine("q");
  EXPECT_EQ(pty.Wait(), 0);
  EXPECT_EQ(Totals(), "29/29/0") << pty.Transcript();
}

TEST_F(ReceiverTest, UnitTestsOnAnEmptyPortReportWhatIsMissing) {
  Pty& pty = Start({.scenario = "plug 1 1920x1080p60\n", .timeScale = 1000});
  ASSERT_TRUE(Type(pty, {{kChoice, "4"}, {kChoice, "0"}, {kChoice, kUnitModule}}));
  ASSERT_TRUE(pty.Expect(kChoice));
  for (int i = 0; i < kUnitTests; ++i) {
    Cvnsim("reset");  // a failing test does not clean up the receiver
    ASSERT_TRUE(pty.WaitReading());
    pty.SendLine(std::to_string(i));
    PlayUnitTest(pty, "unplug 0");
    if (HasFatalFailure()) return;
  }
  pty.SendLine("q");
  EXPECT_EQ(pty.Wait(), 0);
  // Cable detection, colour depth, AV mute, six kinds of info-frames and the source's key.
  EXPECT_EQ(Totals(), "29/19/10");
}

}  // namespace
