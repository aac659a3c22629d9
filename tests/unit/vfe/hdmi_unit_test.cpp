// The HDMI receiver unit tests: what they prompt for, and the conditions under which they fail.
// Their steps are in the transcripts of their rows.
#include <gtest/gtest.h>

#include <string>

#include "HdmiSteps.h"
#include "Pty.h"
#include "UTVfeHdmiTestCase.h"
#include "VfePlay.h"

namespace {

using namespace vfe;
using T = UTVfeHdmiTestCase;
using test::Pty;

TEST(HdmiUnit, PrintsTheKeyOfTheSource) {
  simhal::Apply("plug 0 1920x1080p60");
  const auto run = PlayTest(T::UTVfeHdmiTest_GetSourceKSVData, "");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.ends_with(
      "GetClockStatus (port0) \nnTmdsClockKHz : 148500 kHz\nbClockDetected : 1\nbPllLocked : 1\n"
      "6. K2V_RHAL_VFE_HDMI_GetSourceKSVData (port0) \n"
      "Source KSV = [35, a6, 5c, c9, 9a]\nResult : Passed\n"))
      << run.output;
  EXPECT_EQ(LastCalls(1), Lines{"VFE_HDMI_Uninitialize() = 0"});
}

TEST(HdmiUnit, DetectsCorruptedMemory) {
  simhal::Apply("spoil 0 edid on");
  auto run = PlayTest(T::UTVfeHdmiTest_WriteEDID, "");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(run.output.ends_with("6. compare edid\nResult : failed - compare edid failed\n"));
  simhal::Reset();
  simhal::Apply("spoil 0 hdcp on");
  run = PlayTest(T::UTVfeHdmiTest_WriteHDCP, "");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(run.output.ends_with("& check data\nResult : failed - check data failed\n"));
}

TEST(HdmiUnit, FailsIfANullBufferIsAccepted) {
  simhal::Fail("K2V_RHAL_VFE_HDMI_WriteHDCP", 0,
               2);  // the second write, which passes a null pointer
  const auto run = PlayTest(T::UTVfeHdmiTest_WriteHDCP, "");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(
      run.output.ends_with("Result : failed - K2V_RHAL_VFE_HDMI_WriteHDCP should not return "
                           "API_OK, with NULL buffer\n"));
}

TEST(HdmiUnit, ConnectFollowsTheCable) {
  simhal::Unplug(0);
  AtPolls({{7, "plug 0 1920x1080p60"}, {12, "unplug 0"}});
  auto run = PlayTest(T::UTVfeHdmiTest_Connect, "");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(
      run.output.ends_with("3.1 Please Connect HDMI Cable to HDMI Port 0\n"
                           "3.1 Please Disconnect HDMI Cable from HDMI Port 0\nResult : Passed\n"));

  // The 8th read of the state finds the cable; the 9th and all later reads fail.
  AtPolls({{7, "plug 0 1920x1080p60"}});
  simhal::Reset();
  simhal::Unplug(0);
  simhal::Fail("K2V_RHAL_VFE_HDMI_GetConnectionState", 5, 9);
  run = PlayTest(T::UTVfeHdmiTest_Connect, "");
  EXPECT_EQ(run.result, 1) << "the cable is still plugged in";
  EXPECT_TRUE(
      run.output.ends_with("Disconnect HDMI Cable from HDMI Port 0\n"
                           "Result : failed - K2V_RHAL_VFE_HDMI_GetConnectionState failed\n"))
      << run.output;

  const struct {
    const char* board;
    const char* what;
  } kCases[] = {{"unplug 0", "connect"}, {"plug 0 1920x1080p60", "disconnect"}};
  scripted::OnWait({});
  for (const auto& c : kCases) {
    simhal::Reset();
    simhal::Apply(c.board);
    run = PlayTest(T::UTVfeHdmiTest_Connect, "");
    EXPECT_EQ(run.result, 1);
    EXPECT_TRUE(run.output.ends_with(std::string("Result : failed - unable to detect HDMI cable ") +
                                     c.what + '\n'));
  }
}

TEST(HdmiUnit, UnreadableStateWhileWaitingForTheCableEndsTheTest) {
  simhal::Unplug(0);
  simhal::Fail("K2V_RHAL_VFE_HDMI_GetConnectionState", 5, 4);
  const auto run = PlayTest(T::UTVfeHdmiTest_GetClockStatus, "");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(
      run.output.ends_with("Please Connect HDMI Cable to port0\n"
                           "Result : failed - K2V_RHAL_VFE_HDMI_GetConnectionState failed\n"))
      << run.output;
}

TEST(HdmiUnit, QueriesHdcp22OfEveryPortAndRejectsInvalidCounts) {
  const struct {
    int count;
    int ports;
    int result;
    const char* end;
  } kCases[] = {
      {1, 1, 0, "\nHDCP 2.2 Support = 1\nResult : Passed\n"},
      {4, 4, 0, "(port3) \nHDCP 2.2 Support = 1\nResult : Passed\n"},
      {0, 0, 1, " = 0\nResult : failed - K2V_RHAL_VFE_HDMI_GetRxPortCnt out of range\n"},
      {-2, 0, 1, " = -2\nResult : failed - K2V_RHAL_VFE_HDMI_GetRxPortCnt out of range\n"},
      {5, 0, 1, " = 5\nResult : failed - K2V_RHAL_VFE_HDMI_GetRxPortCnt out of range\n"},
      {256, 0, 1, " = 256\nResult : failed - K2V_RHAL_VFE_HDMI_GetRxPortCnt out of range\n"},
  };
  for (const auto& c : kCases) {
    simhal::Reset();
    simhal::Fail("K2V_RHAL_VFE_HDMI_GetRxPortCnt", c.count);
    const auto run = PlayTest(T::UTVfeHdmiTest_IsHDCP22Supported, "");
    EXPECT_EQ(run.result, c.result) << c.count;
    EXPECT_TRUE(run.output.ends_with(c.end)) << run.output;
    EXPECT_EQ(CallsOf("K2V_RHAL_VFE_HDMI_isHDCP22Supported").size(), c.ports);
  }
}

// A prompt for the port discards input typed earlier, so these tests use a terminal.
TEST(HdmiUnit, PromptsUntilAValidPortIsEntered) {
  Pty pty([] { return 40 + hdmi_steps::get_port(); });
  for (const char* wrong : {"4", "-1", "x"}) {
    ASSERT_TRUE(pty.Answer("\nwhich port to test (0~3) ? ", wrong));
  }
  ASSERT_TRUE(pty.Answer("\nwhich port to test (0~3) ? ", "3"));
  EXPECT_EQ(pty.Wait(), 43);
}

struct PortCase {
  TestFunction test;
  const char* port;
  int result;
  const char* end;  // end of the output
};

TEST(HdmiUnit, TestsTheEnteredPort) {
  simhal::Apply("plug 2 1920x1080p60 pc");
  simhal::Apply("mute 2 on");
  const PortCase kCases[] = {
      {T::UTVfeHdmiTest_GetAVMute, "2", 0,
       "6. K2V_RHAL_VFE_HDMI_GetAVMute (port2) \nAV Mute = 1\nResult : Passed\n"},
      {T::UTVfeHdmiTest_GetColorDepth, "0", 0, "Color Depth = 1\nResult : Passed\n"},
      {T::UTVfeHdmiTest_GetScdcStatus, "0", 0,
       "6. K2V_RHAL_VFE_HDMI_GetScdcStatus (port0) \nScdc Status(0) = 1\nScdc Status(1) = 1\n"
       "Scdc Status(2) = 1\nScdc Status(3) = 1\nScdc Status(4) = 7\nResult : Passed\n"},
      {T::UTVfeHdmiTest_GetPortTimingInfo, "1", 0,
       "7. K2V_RHAL_VFE_HDMI_GetPortTimingInfo (port1, NULL) \nResult : Pass\n"},
      {T::UTVfeHdmiTest_GetPortDRMInfo, "1", 1,
       "Result : failed - K2V_RHAL_VFE_HDMI_GetDRMInfo failed\n"},
      {T::UTVfeHdmiTest_GetPortAVIInfo, "3", 1,
       "Result : failed - K2V_RHAL_VFE_HDMI_GetPortAVIInfo failed\n"},
  };
  for (const PortCase& c : kCases) {
    Pty pty([&] { return c.test(nullptr); });
    ASSERT_TRUE(pty.Answer("which port to test (0~3) ? ", c.port));
    EXPECT_EQ(pty.Wait(), c.result) << pty.Transcript();
    EXPECT_TRUE(pty.Transcript().ends_with(c.end)) << pty.Transcript();
    const bool empty = *c.port == '3';
    EXPECT_EQ(Contains(pty.Transcript(), "Please Connect HDMI Cable to port3\n"), empty);
    simhal::Apply("clear all");
    K2V_RHAL_VFE_HDMI_Uninitialize();  // a failed test does not clean up
  }
}

TEST(HdmiUnit, FailsIfANullTimingRecordIsAccepted) {
  simhal::Fail("K2V_RHAL_VFE_HDMI_GetPortTimingInfo", 0, 2);
  Pty pty([] { return T::UTVfeHdmiTest_GetPortTimingInfo(nullptr); });
  ASSERT_TRUE(pty.Answer("which port to test (0~3) ? ", "0"));
  EXPECT_EQ(pty.Wait(), 1);
  EXPECT_TRUE(pty.Transcript().ends_with(
      "Result : failed - K2V_RHAL_VFE_HDMI_GetPortTimingInfo should not return API_OK, with NULL "
      "timing info\n"));
}

}  // namespace
