// The polling tests of both receivers: control of the scaler when the signal appears and
// disappears, and effects of the operator's answers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ReceiverPolling.h"
#include "VfeHdmiTestCase.h"
#include "VfePlay.h"
#include "VfeVby1rxTestCase.h"

namespace {

using namespace vfe;

// Answers given when a picture is shown: window and size, then the window to unblank.
const std::string kPlaceIt = "0\n1\n0\n";

/// A receiver without hardware that reports the sizes in a list, repeating the last one.
std::vector<K2V_VIDEO_RECT_T> sizes;
std::size_t nextSize = 0;
DetectionState fakeState;

int TellNextSize(uint8_t, K2V_HDMI_TIMING_T& timing) {
  timing.active = sizes[std::min(nextSize++, sizes.size() - 1)];
  return 0;
}

const ReceiverStep kFakeStep = {[](uint8_t) { return 0; }, "", [](uint8_t) {}};
const Receiver kFake = {
    .testName = "Fake",
    .portList = "ports",
    .changeList = "change",
    .timingTitle = "timing",
    .has3dTiming = false,
    .initialize = kFakeStep,
    .open = kFakeStep,
    .connect = kFakeStep,
    .prepare = [] {},
    .getTiming = TellNextSize,
    .changePort = [](uint8_t, uint8_t) {},
    .tearDown = [](uint8_t) {},
    .detection = fakeState,
};
constexpr PollingTest kPlainTest = {.question = "question"};

TEST(Detection, FollowsTheTableForEveryStateAndSize) {
  const K2V_VIDEO_RECT_T none = {0, 0, 0, 0}, noWidth = {0, 0, 0, 2160}, noHeight = {0, 0, 3840, 0},
                         whole = {0, 0, 3840, 2160};
  const std::string disconnect = "Disconnect(0, {type=0, attr=0x0, output=0})";
  const struct {
    uint8_t state;
    K2V_VIDEO_RECT_T size;
    uint8_t next;
    Lines calls;  // names and arguments without results
    const char* printed;
  } kCases[] = {
      {0, none, 0, {}, "Try Again\n"},
      {0, noWidth, 0, {}, "Try Again\n"},
      {0, noHeight, 0, {}, "Try Again\n"},
      {0, whole, 1, {"Initialize()", "Open(0)"}, ""},
      {1, whole, 2, {}, ""},
      {1, noWidth, 2, {disconnect}, ""},
      {1, noHeight, 2, {disconnect}, ""},
      {2, noWidth, 2, {}, "Wait\n"},
      {2, noHeight, 2, {}, "Wait\n"},
      {2,
       whole,
       3,
       {"Connect(0, {type=2, attr=0x0, output=0})", "SetInputRegion(0, {x=0, y=0, w=0, h=0})",
        "SetOutputRegion(0, {x=0, y=0, w=3840, h=2160})", "SetWinBlank(0, 0, 0)"},
       "timing\nformat:0\n"},
      {3, whole, 3, {}, ""},
      {3, noWidth, 1, {"SetWinBlank(0, 1, 1)"}, "Blank Window"},
      {3, noHeight, 1, {"SetWinBlank(0, 1, 1)"}, "Blank Window"},
      {9, whole, 0, {}, ""},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << int{c.state} << ' ' << c.size.w << 'x' << c.size.h);
    simhal::Reset();
    fakeState = {c.state, 0};
    sizes = {c.size};
    nextSize = 0;
    uint8_t next = 99;
    Lines calls;
    // The state after the first poll is visible at the wait before the second.
    scripted::OnWait([&, polls = 0](unsigned long us) mutable {
      if (us != 100'000 || ++polls != 2) return;
      next = fakeState.state;
      calls = CallsOf("K2V_RHAL_VSC_");
      fakeState.state = 0;  // the remaining polls do not prompt
      sizes = {K2V_VIDEO_RECT_T{}};
    });
    const auto run = scripted::Play("0\n" + kPlaceIt + "1\n1\n",
                                    [] { return RunPolling(kFake, kPlainTest, "Name"); });
    EXPECT_EQ(next, c.next);
    for (std::string& call : calls) call.resize(call.rfind(" = "));
    EXPECT_EQ(calls, c.calls);
    EXPECT_TRUE(Contains(run.output.substr(0, run.output.find("Fake:2\n")), c.printed));
  }
}

TEST(HdmiPolling, FollowsTheSignalThroughLossAndReturn) {
  simhal::Apply("lock 0 0");
  AtPolls({{6, "signal 0 off"}, {9, "signal 0 on"}});
  const auto run = PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1,
                            "0\n" + kPlaceIt + "0\n" + kPlaceIt + "1\n");
  EXPECT_EQ(run.result, 0);
  const std::string in = "SetInputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0";
  const std::string out = "SetOutputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0";
  const std::string connect = "Connect(0, {type=2, attr=0x0, output=0}) = 0";
  const std::string disconnect = "Disconnect(0, {type=2, attr=0x0, output=0}) = 0";
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_"),
            (Lines{"Initialize() = 0", "Open(0) = 0", connect, in, out, "SetWinBlank(0, 0, 0) = 0",
                   "SetWinBlank(0, 1, 1) = 0", disconnect, connect, in, out,
                   "SetWinBlank(0, 0, 0) = 0", disconnect}));
  EXPECT_TRUE(Contains(run.output, "VfeHdmiMUROTestCase:8\nWait\nVfeHdmiMUROTestCase:9\n"));
  EXPECT_TRUE(Contains(run.output,
                       "GetPortTimingInfo\nformat:97\nh_freq:13500\nv_freq:6000\nh_total:4400\n"
                       "v_total:2250\nh_porch:384\nv_porch:82\nactive.x:0\nactive.y:0\n"
                       "active.w:3840\nactive.h:2160\nscan_type:1\nfull_3d_timing:0\n"
                       "video_lr_order:0\nVfeHdmiMUROTestCase:4\n"));
}

TEST(HdmiPolling, ShowsANewTimingAfterTheReceiverHasLocked) {
  simhal::Apply("lock 0 2");
  AtPolls({{6, "timing 0 1920x1080p50"}});
  const auto run = PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1,
                            "0\n" + kPlaceIt + "0\n" + kPlaceIt + "1\n");
  const Lines calls = CallsOf("K2V_RHAL_VSC_");
  const auto blank = std::find(calls.begin(), calls.end(), "SetWinBlank(0, 1, 1) = 0");
  EXPECT_EQ(Lines(blank, calls.end()),
            (Lines{"SetWinBlank(0, 1, 1) = 0", "Disconnect(0, {type=2, attr=0x0, output=0}) = 0",
                   "Connect(0, {type=2, attr=0x0, output=0}) = 0",
                   "SetInputRegion(0, {x=0, y=0, w=1920, h=1080}) = 0",
                   "SetOutputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0", "SetWinBlank(0, 0, 0) = 0",
                   "Disconnect(0, {type=2, attr=0x0, output=0}) = 0"}));
  EXPECT_TRUE(Contains(run.output, "GetPortTimingInfo\nformat:31\n"));
}

TEST(HdmiPolling, KeepsItsStateFromRunToRun) {
  PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1, "0\n" + kPlaceIt + "1\n");
  simhal::ClearCalls();
  // The first run ended with a picture; port 3 has no cable.
  const auto run = PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase3, "3\n0\n1\n");
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_").front(), "SetWinBlank(0, 1, 1) = 0");
  EXPECT_TRUE(Contains(run.output, "VfeHdmiMUROTestCase:3\nWait\n"));
  EXPECT_FALSE(Contains(run.output, "Try Again"));
}

struct AnswerCase {
  TestFunction test;
  const char* answers;  // after the port, on a port without a signal
  Lines lastCalls;      // between and after the polls
  std::size_t polls;
  const char* question;
};

TEST(HdmiPolling, PromptsAtThe101stPollAndFollowsTheAnswer) {
  const std::string poll = "VFE_HDMI_GetPortTimingInfo(3, {no signal}) = 0";
  const std::string notConnected = "VSC_Disconnect(0, {type=2, attr=0x0, output=0}) = -3";
  const Lines tornDown = {poll, notConnected, "VFE_HDMI_Disconnect(3) = 0", "VFE_HDMI_Close() = 0",
                          "VFE_HDMI_Uninitialize() = 0"};
  using T = VfeHdmiMUROTestCase;
  const char* first = "Exit, 0(No) 1(YES) 2(Don't Change Port) 3(Close)\n";
  const AnswerCase kCases[] = {
      {T::VfeHdmiMUROTestCase1, "1\n", tornDown, 101, first},
      {T::VfeHdmiMUROTestCase1, "3\n", {poll}, 101, first},
      {T::VfeHdmiMUROTestCase1, "2\n7\n1\n", tornDown, 303, first},
      {T::VfeHdmiMUROTestCase2, "0\n1\n", tornDown, 202, "Exit, 0(No) 1(YES) 3(Close)\n"},
      {T::VfeHdmiMUROTestCase3, "3\n0\n1\n", tornDown, 303, "Exit, 0(No) 1(YES)\n"},
      {T::VfeHdmiMUROTestCase4,
       "0\n3\n",
       {poll},
       202,
       "Get timinginfo again?, 0(YES) 1(No) 3(Close)\nGetPortTimingInfo\nformat:0\n"},
      {T::VfeHdmiMUROTestBackGroundDetect, "3\n1\n", tornDown, 202,
       "Exit, 0(No) 1(YES) 2(Don't Change Port)\n"},
  };
  for (const AnswerCase& c : kCases) {
    SCOPED_TRACE(c.question);
    simhal::Reset();
    const auto run = PlayTest(c.test, "3\n" + std::string(c.answers));
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(LastCalls(c.lastCalls.size()), c.lastCalls);
    EXPECT_EQ(CallsOf("K2V_RHAL_VFE_HDMI_GetPortTimingInfo").size(), c.polls);
    EXPECT_TRUE(Contains(
        run.output, std::string("VfeHdmiMUROTestCase:101\nVfeHdmiMUROTestCase ") + c.question));
  }
}

TEST(HdmiPolling, ChangesThePortAndUsesTheNewOne) {
  const auto run = PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1, "3\n0\n258\n1\n");
  EXPECT_TRUE(Contains(
      run.output, "VfeHdmiMUROTestCase change port, 0(HDMI1); 1(HDMI2); 2(HDMI3); \nTry Again\n"));
  const Lines calls = CallsOf("K2V_RHAL_VFE_HDMI_");
  const auto change = std::find(calls.begin(), calls.end(), "Disconnect(3) = 0");
  ASSERT_LT(change + 2, calls.end());
  EXPECT_EQ(change[1], "Connect(2) = 0") << "only the low byte is used";
  EXPECT_EQ(change[2], "GetPortTimingInfo(2, {no signal}) = 0");
  EXPECT_EQ(calls[calls.size() - 3], "Disconnect(2) = 0");
}

TEST(HdmiPolling, PortAnswersMustBeNumbersAndArePassedToTheHal) {
  const auto run = PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1, "HDMI1 4\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(
      run.output.ends_with("Input port: 0(HDMI1); 1(HDMI2); 2(HDMI3); 3(HDMI4);\n"
                           "\nUnknown Input > HDMI1\nHDMI_Connect fail\n"));
  EXPECT_EQ(LastCalls(2), (Lines{"VFE_HDMI_Connect(4) = -2", "VFE_HDMI_Disconnect(4) = -2"}));
}

TEST(Polling, FailedBringUpIsReportedAndUndone) {
  const TestFunction hdmi = VfeHdmiMUROTestCase::VfeHdmiMUROTestCase1;
  const TestFunction hdmiOnce = VfeHdmiMUROTestCase::VfeHdmiMURO_SwitchToHDMI;
  const TestFunction vby1 = VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase1;
  const struct {
    TestFunction test;
    const char* failing;
    const char* undo;
  } kCases[] = {
      {hdmi, "HDMI_Initialize", "VFE_HDMI_Uninitialize() = -3"},
      {hdmi, "HDMI_Open", "VFE_HDMI_Close() = -3"},
      {hdmi, "HDMI_Connect", "VFE_HDMI_Disconnect(1) = -3"},
      {hdmiOnce, "HDMI_Connect", "VFE_HDMI_Disconnect(1) = -3"},
      {vby1, "VBY1RX_Initialize", "VFE_VBY1RX_Uninitialize() = -3"},
      {vby1, "VBY1RX_Open", "VFE_VBY1RX_Uninitialize() = 0"},
      {vby1, "VBY1RX_Connect", "VFE_VBY1RX_Uninitialize() = 0"},
  };
  for (const auto& c : kCases) {
    simhal::Reset();
    simhal::Fail(std::string("K2V_RHAL_VFE_") + c.failing, 5);
    const auto run = PlayTest(c.test, "1\n");
    EXPECT_EQ(run.result, 1) << c.failing;
    EXPECT_TRUE(run.output.ends_with(std::string(c.failing) + " fail\n")) << run.output;
    EXPECT_EQ(LastCalls(1), Lines{c.undo});
  }
}

TEST(HdmiPolling, PrintsTheRequestedInfoFramesOncePerPicture) {
  simhal::Apply("lock 0 0");
  AtPolls({{6, "signal 0 off"}, {9, "plug 0 1920x1080p60"}});
  const auto run = PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase2,
                            "0\n" + kPlaceIt + "1\n0\n2\n0\n3\n0\n4\n0\n0\n0\n5\n1\n" + "0\n" +
                                kPlaceIt + "4\n1\n" + "1\n");
  EXPECT_EQ(run.result, 0);
  const std::string ask =
      "VfeHdmiMUROTestCase Get InfoFrame, 0(all) 1(AVI); 2(SPD); 3(VSI); 4(DRM);\n";
  const std::string again = "VfeHdmiMUROTestCase Get InfoFrame again?, 0(YES) 1(No)\n";
  const std::string hal = "K2V_RHAL_VFE_HDMI_Get";
  EXPECT_TRUE(Contains(
      run.output,
      ask + hal + "PortAVIInfo->VideoIdCode:97\n" + hal + "PortAVIInfo->eHDMIMode:1\n" + hal +
          "PortAVIInfo->ePixelEncoding:3\n" + again + ask + hal +
          "PortSPDInfo->VendorName:SIMBOARD\n" + hal +
          "PortSPDInfo->ProductDescription:UHD Disc Player\n" + hal +
          "PortSPDInfo->SourceDeviceInfo:10\n" + again + ask + hal +
          "PortVSIInfo->eVideoFormat:0\n" + hal + "PortVSIInfo->e3DStructure:0\n" + hal +
          "PortVSIInfo->e3DExtData:0\n" + again + ask + hal + "DRMInfo->nVersion:1\n" + hal +
          "DRMInfo->nLength:26\n" + hal + "DRMInfo->eEOTFtype:2\n" + again + ask + hal +
          "PortPacketInfo.stAVI.VideoIdCode:97\n" + hal + "PortPacketInfo.stAVI.eHDMIMode:1\n" +
          hal + "PortPacketInfo.stAVI.ePixelEncoding:3\n" + again + ask + again +
          "VfeHdmiMUROTestCase:4\n"))
      << run.output;
  EXPECT_TRUE(Contains(run.output, ask + "Get DRM packet NG\n" + again)) << "the second source";
}

struct KindOfSource {
  const char* source;
  const char* asked;   // number of the info-frame
  const char* told;    // output of the test for it
  const char* timing;  // lines of the timing record

  // Becomes part of the test's name.
  friend void PrintTo(const KindOfSource& kind, std::ostream* out) { *out << kind.source; }
};

/// One process per case: the detection keeps its state between runs.
class HdmiPollingOf : public testing::TestWithParam<KindOfSource> {};

TEST_P(HdmiPollingOf, ReportsTheKindOfTheSource) {
  const KindOfSource& c = GetParam();
  ASSERT_EQ(simhal::Apply(std::string("plug 0 ") + c.source), "");
  const auto run =
      PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTestCase2, "0\n" + kPlaceIt + c.asked + "\n1\n1\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(Contains(run.output, c.told)) << run.output;
  EXPECT_TRUE(Contains(run.output, c.timing)) << run.output;
}

INSTANTIATE_TEST_SUITE_P(
    Sources, HdmiPollingOf,
    testing::Values(KindOfSource{"1920x1080p24 frame-packing", "3", "eVideoFormat:2\n",
                                 "active.h:2205\nscan_type:1\nfull_3d_timing:1\n"},
                    KindOfSource{"1920x1080i60 side-by-side", "3",
                                 "e3DStructure:8\nK2V_RHAL_VFE_HDMI_GetPortVSIInfo->e3DExtData:1\n",
                                 "active.h:1080\nscan_type:0\nfull_3d_timing:0\n"},
                    KindOfSource{"1280x720p50 top-and-bottom", "3", "e3DStructure:6\n",
                                 "active.h:720\n"},
                    KindOfSource{"3840x2160p60 hlg", "4", "eEOTFtype:3\n", "format:97\n"},
                    KindOfSource{"720x480i60", "1", "VideoIdCode:7\n", "format:7\n"},
                    KindOfSource{"1280x1024p60 dvi", "0", "stAVI.eHDMIMode:0\n", "format:0\n"}));

TEST(HdmiQueries, ReportTheDepthOfDeepColour) {
  simhal::Apply("plug 0 1920x1080p60 deep");
  K2V_RHAL_VFE_HDMI_Initialize();
  K2V_RHAL_VFE_HDMI_Open();
  K2V_RHAL_VFE_HDMI_Connect(0);
  const auto run = PlayTest(VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetColorDepth, "0\n");
  EXPECT_TRUE(run.output.ends_with("VfeHdmiMUROTest_GetColorDepth(0) = 12 Bit\n")) << run.output;
}

TEST(DetectOnce, DetectsAgainUntilTheOperatorExits) {
  simhal::Apply("lock 0 0");
  AtPolls({{2, "plug 3 1280x720p50"}, {4, "unplug 3"}});
  const auto run =
      PlayTest(VfeHdmiMUROTestCase::VfeHdmiMURO_SwitchToHDMI, "3\n1\n" + kPlaceIt + "1\n1\n0\n2\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(Contains(run.output,
                       "HDMI GetInfo Again\nNo Signal\nReDetect HDMI Again, 0(No), 1(YES)\n"
                       "\n ucReDetectFlag:1\nHDMI GetInfo Again\n"));
  EXPECT_TRUE(Contains(run.output,
                       "\n ucReDetectFlag:1\nHDMI GetInfo Again\nGetPortTimingInfo\nformat:19\n"));
  EXPECT_TRUE(run.output.ends_with("\n ucReDetectFlag:2\n"));
  EXPECT_EQ(LastCalls(1), Lines{"VFE_HDMI_Uninitialize() = 0"});
}

TEST(DetectOnce, FollowsTheTableForEveryStateAndSize) {
  const K2V_VIDEO_RECT_T none = {0, 0, 0, 0}, noWidth = {0, 0, 0, 2160}, whole = {0, 0, 3840, 2160};
  const Lines show = {"Connect", "SetInputRegion", "SetOutputRegion", "SetWinBlank"};
  const Lines fromStart = {"Initialize",      "Open",       "Connect", "SetInputRegion",
                           "SetOutputRegion", "SetWinBlank"};
  const struct {
    uint8_t state;
    K2V_VIDEO_RECT_T size;
    uint8_t next;
    Lines calls;  // names
    const char* printed;
  } kCases[] = {
      {0, none, 0, {}, "title\nNo Signal\nagain?\n"},
      {0, whole, 3, fromStart, "timing\nformat:0\n"},
      {1, none, 2, {"Disconnect"}, "title\nNo Signal\nagain?\n"},
      {1, noWidth, 2, {"Disconnect"}, "title\nNo Signal\nagain?\n"},
      {1, whole, 3, show, "timing\nformat:0\n"},
      {2, none, 2, {}, "title\nNo Signal\nagain?\n"},
      {2, whole, 3, show, "timing\nformat:0\n"},
      {3, none, 1, {"SetWinBlank"}, "title\nNo Signal\n"},
      {3, whole, 3, {}, "title\ntiming\nformat:0\n"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << int{c.state} << ' ' << c.size.w << 'x' << c.size.h);
    simhal::Reset();
    fakeState = {c.state, K2V_VSC_INPUTSRC_HDMI};
    sizes = {c.size};
    nextSize = 0;
    const bool placed = c.calls.size() >= show.size();
    const auto run = scripted::Play("0\n" + (placed ? kPlaceIt : "0\n") + "0\n", [] {
      return RunDetectOnce(kFake, {"title", "again?", false}, "Name");
    });
    EXPECT_EQ(fakeState.state, c.next);
    Lines calls = CallsOf("K2V_RHAL_VSC_");
    for (std::string& call : calls) call.resize(call.find('('));
    Lines expected = c.calls;
    expected.emplace_back("Disconnect");  // tearing down
    EXPECT_EQ(calls, expected);
    EXPECT_TRUE(Contains(run.output, c.printed)) << run.output;
  }
}

TEST(Vby1rx, ShowsTheConnectedInputAndChangesIt) {
  simhal::Apply("vby1 plug 1 1920x1080p60");
  const auto run = PlayTest(VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase1,
                            "0\n0\n1\n" + kPlaceIt + "2\n");  // input 0, change to 1, close
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(
      Contains(run.output,
               "VfeVby1rxMUROTestCase:101\n"
               "VfeVby1rxMUROTestCase Exit, 0(No) 1(YES) 2(Close)\n"
               "VfeVby1rxMUROTestCase change port, 0(VBY1RX1); 1(VBY1RX2); 2(VBY1RX3); \n"));
  EXPECT_TRUE(Contains(run.output, "GetTimingInfo\nformat:16\n"));
  EXPECT_FALSE(Contains(run.output, "full_3d_timing"));
  EXPECT_EQ(CallsOf("K2V_RHAL_VFE_VBY1RX_Connect"), (Lines{"(0) = 0", "(1) = 0"}));
  EXPECT_EQ(CallsOf("K2V_RHAL_VFE_VBY1RX_Uninitialize").size(), 0u) << "closing keeps it running";
}

TEST(Vby1rx, DetectsOnceAndStopsTheReceiver) {
  const auto run = PlayTest(VfeVby1rxMUROTestCase::VfeVby1rxMUROTestCase2, "2\n0\n");
  EXPECT_TRUE(run.output.ends_with(
      "VBY1RX GetInfo Again\nNo Signal\nReDetect VBY1RX Again, 0(No), 1(YES)\n"));
  EXPECT_EQ(LastCalls(1), Lines{"VFE_VBY1RX_Uninitialize() = 0"});
}

TEST(Vby1rx, ReportsTheTimingOfAnInitialisedReceiver) {
  simhal::Apply("vby1 plug 0 3840x2160p120");
  auto run = PlayTest(VfeVby1rxMUROTestCase::VfeVby1rxMURO_GetTimingInfo, "");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.ends_with(
      "\n\033[mGet Timing Info, return value: 0\nformat:118\nh_freq:27000\nv_freq:12000\n"
      "h_total:4400\nv_total:2250\nh_porch:384\nv_porch:82\nactive.x:0\nactive.y:0\n"
      "active.w:3840\nactive.h:2160\nscan_type:1\n"));
  run = PlayTest(VfeVby1rxMUROTestCase::VfeVby1rxMURO_GetTimingInfo, "");
  EXPECT_EQ(run.result, 1) << "it was left initialised";
  EXPECT_TRUE(run.output.ends_with("VBY1RX_Initialize fail, return value: -4\n"));
  simhal::Fail("K2V_RHAL_VFE_VBY1RX_GetTimingInfo", -3);
  run = PlayTest(VfeVby1rxMUROTestCase::VfeVby1rxMURO_GetTimingInfo, "");
  EXPECT_TRUE(Contains(run.output, "Get Timing Info, return value: 253\nformat:0\n"));
}

}  // namespace
