// The scaler tests with the simulated HAL; the operator's answers are scripted.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Scripted.h"
#include "SimHal.h"
#include "VscTestCase.h"
#include "commonVsc.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vsc.h"

namespace {

using scripted::Play;
using TestFunction = int (*)(char*);

scripted::Run PlayTest(TestFunction test, const std::string& answers) {
  return Play(answers, [test] { return test(nullptr); });
}

std::string LastCall() {
  return simhal::Calls().empty() ? "" : simhal::Calls().back();
}

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

bool Contains(const std::string& text, const std::string& part) {
  return CountOf(text, part) > 0;
}

std::size_t CallsOf(const std::string& call) {
  std::size_t count = 0;
  for (const std::string& line : simhal::Calls()) count += line.starts_with(call);
  return count;
}

/// Shows port 0 in the main window, then clears the recorded calls.
void ShowPortZero() {
  Play("", [] { return Api_vsc_Misc_SetInput_HDMI_Directly(0); });
  simhal::ClearCalls();
}

TEST(OverScan, KeepsACentredPercentage) {
  const struct {
    K2V_VIDEO_RECT_T region;
    int16_t h, v;
    K2V_VIDEO_RECT_T expected;
  } kCases[] = {
      {{0, 0, 1920, 1080}, 100, 100, {0, 0, 1920, 1080}},
      {{0, 0, 1920, 1080}, 90, 80, {96, 108, 1728, 864}},
      {{10, 20, 1921, 1081}, 99, 99, {20, 25, 1901, 1070}},
      {{0, 0, 1920, 1080}, 0, 0, {960, 540, 0, 0}},
      {{0, 0, 100, 100}, -10, -10, {55, 55, 65526, 65526}},
      {{65535, 65535, 65535, 65535}, 50, 50, {16383, 16383, 32767, 32767}},
      {{0, 0, 65535, 65535}, -32768, -32768, {22117, 22117, 21300, 21300}},
  };
  for (const auto& c : kCases) {
    const K2V_VIDEO_RECT_T kept = OverScanRegion(c.region, c.h, c.v);
    EXPECT_EQ(kept.x, c.expected.x) << c.h;
    EXPECT_EQ(kept.y, c.expected.y) << c.h;
    EXPECT_EQ(kept.w, c.expected.w) << c.h;
    EXPECT_EQ(kept.h, c.expected.h) << c.h;
  }
}

TEST(OverScan, SetsBothRegionsOfTheMainWindow) {
  ShowPortZero();
  const auto run = PlayTest(VscTestCase::Vsc_OverScan_Trans_Garbage, "90\n80\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(
      run.output.ends_with("VIDEO_RECT_Param, x : 0, y : 0, w : f00, h : 870\nSet H OverscanValue\n"
                           "H OverscanValue : 90\nSet V OverscanValue\nV OverscanValue : 80\n"));
  const auto calls = simhal::Calls();
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[1], "K2V_RHAL_VSC_SetInputRegion(0, {x=192, y=216, w=3456, h=1728}) = 0");
  EXPECT_EQ(calls[2], "K2V_RHAL_VSC_SetOutputRegion(0, {x=0, y=0, w=1920, h=1080}) = 0");
}

TEST(OverScan, RejectsMoreThanTheWholePicture) {
  ShowPortZero();
  auto run = PlayTest(VscTestCase::Vsc_OverScan_Trans_Garbage, "101\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(run.output.ends_with("H OverscanValue Abnormal : 101\n"));
  run = PlayTest(VscTestCase::Vsc_OverScan_Check_in_3D_mode, "0\n100\n101\n0\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(Contains(run.output, "V OverscanValue Abnormal : 101\n"));
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_SetInputRegion"), 0u);
  EXPECT_EQ(LastCall(), "K2V_RHAL_VSC_SetWinBlank(0, 0, 0) = 0") << "the window stays blank";
}

TEST(ScalerTests, PassTheOperatorsInputToTheHal) {
  ShowPortZero();
  const struct {
    TestFunction test;
    const char* answers;
    const char* call;
  } kTests[] = {
      {VscTestCase::Vsc_MuteFun_MuteColorPIP, "1\n1\n2\n", "SetWinBlank(1, 1, 2) = 0"},
      {VscTestCase::Vsc_StillFun_VideoStell, "0\n1\n", "SetWinFreeze(0, 1) = 0"},
      {VscTestCase::Vsc_RGB444_RGB444InHDMI, "1\n", "SetRGB444Mode(1) = 0"},
      {VscTestCase::VSC_Connect, "2\n1\n2\n", "Connect(0, {type=2, attr=0x102, output=0})"},
      {VscTestCase::VSC_Connect, "2\n3\n-1\n", "Connect(0, {type=2, attr=0x3ff, output=0})"},
      {VscTestCase::VSC_Connect, "-1\n-1\n256\n",
       "Connect(0, {type=4294967295, attr=0xff00, output=0}) = -2"},
      {VscTestCase::VSC_SetInputRegion, "2\n4\n640\n480\n",
       "SetInputRegion(0, {x=2, y=4, w=640, h=480}) = 0"},
      {VscTestCase::VSC_SetInputRegion, "65537\n-1\n640\n480\n",
       "SetInputRegion(0, {x=1, y=65535, w=640, h=480}) = -2"},
      {VscTestCase::VSC_GetInputRegion, "", "GetInputRegion(0, {x=2, y=4, w=640, h=480}) = 0"},
      {VscTestCase::VSC_SetOutputRegion, "0\n0\n1920\n1080\n",
       "SetOutputRegion(0, {x=0, y=0, w=1920, h=1080}) = 0"},
      {VscTestCase::VSC_SetWinBlank, "1\n", "SetWinBlank(0, 1, 0) = 0"},
      {VscTestCase::VSC_SetHDMI_Preview, "0\n", "SetHDMI_Preview(0, 0) = 0"},
      {VscTestCase::VSC_Disconnect, "2\n0\n0\n", "Disconnect(0, {type=2, attr=0x0, output=0}) = 0"},
      {VscTestCase::VSC_Initialize, "", "Initialize() = 0"},
      {VscTestCase::VSC_Open, "", "Open(0) = -4"},
      {VscTestCase::Vsc_OverScan_Check_Chip_Limit, "1\n0\n1\n2\n3\n4\n5\n6\n7\n8\n1\n",
       "SetWinBlank(1, 0, 0) = 0"},
  };
  for (const auto& t : kTests) {
    EXPECT_EQ(PlayTest(t.test, t.answers).result, 0) << t.call;
    EXPECT_TRUE(LastCall().starts_with(std::string("K2V_RHAL_VSC_") + t.call)) << LastCall();
  }
  const auto calls = simhal::Calls();
  EXPECT_EQ(calls[calls.size() - 3], "K2V_RHAL_VSC_SetInputRegion(1, {x=1, y=2, w=3, h=4}) = -3");
  EXPECT_EQ(calls[calls.size() - 2], "K2V_RHAL_VSC_SetOutputRegion(1, {x=5, y=6, w=7, h=8}) = -3");
}

TEST(ScalerTests, FailWithTheCodeOfTheHalIfTheyCheckIt) {
  const struct {
    TestFunction test;
    const char* function;
    const char* answers;
  } kTests[] = {
      {VscTestCase::Vsc_RGB444_RGB444InHDMI, "K2V_RHAL_VSC_SetRGB444Mode", "1\n"},
      {VscTestCase::Vsc_self_diagnosis_InoutVideo_Freeze, "K2V_RHAL_VSC_FreezeVideoFrameBuffer",
       "0\n1\n"},
      {VscTestCase::Vsc_self_diagnosis_InoutVideo_Read, "K2V_RHAL_VSC_ReadVideoFrameBuffer",
       "0\n0\n0\n8\n8\n"},
      {VscTestCase::Vsc_self_diagnosis_InoutVideo_Write, "K2V_RHAL_VSC_WriteVideoFrameBuffer",
       "0\n0\n0\n8\n8\n1\n2\n3\n"},
  };
  for (const auto& t : kTests) {
    simhal::Fail(t.function, 17);
    const auto run = PlayTest(t.test, t.answers);
    EXPECT_EQ(run.result, 1) << t.function;
    EXPECT_TRUE(run.output.ends_with("Result : 17\n")) << run.output;
  }
  simhal::Fail("K2V_RHAL_VSC_SetWinFreeze", 17);
  EXPECT_EQ(PlayTest(VscTestCase::Vsc_StillFun_VideoStell, "0\n1\n").result, 0);
}

TEST(FrameBufferTests, SaveTheLumaOfAClampedRegion) {
  ShowPortZero();
  const std::string path = testing::TempDir() + "vsc_luma.raw";
  const auto run = PlayTest(VscTestCase::Vsc_self_diagnosis_InoutVideo_Read,
                            "0\n100\n50\n-5\n577\n" + path + "\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(Contains(run.output, "In, x:100, y:50, w:720, h:576\n"));
  EXPECT_TRUE(run.output.ends_with(
      "\nPress file path name:\nYou set FILE is " + path +
      " !!\n[VSC_FunctionTest_HAL_VSC_ReadVideoFrameBuffer] /mnt/Y.raw open ok\n"));
  EXPECT_EQ(scripted::Commands(), std::vector<std::string>{"sync"});
  const std::string file = scripted::ReadFile(path);
  std::remove(path.c_str());
  ASSERT_EQ(file.size(), 720u * 576 * 2);
  uint16_t luma[720];
  std::memcpy(luma, file.data(), sizeof luma);
  // Bars of 480 pixels in a line of 3840: white until 479, then yellow.
  EXPECT_EQ(luma[0], 940);
  EXPECT_EQ(luma[379], 940);
  EXPECT_LT(luma[380], 940);
}

TEST(FrameBufferTests, WriteEachComponentToItsField) {
  ShowPortZero();
  EXPECT_EQ(
      PlayTest(VscTestCase::Vsc_self_diagnosis_InoutVideo_Write, "0\n8\n8\n2\n2\n501\n600\n700\n")
          .result,
      0);
  K2V_VIDEO_RECT_T region = {7, 8, 4, 1};
  K2V_VIDEO_PIXEL_T pixels[4] = {};
  uint32_t standard = 0, format = 0;
  ASSERT_EQ(K2V_RHAL_VSC_ReadVideoFrameBuffer(0, &region, pixels, &standard, &format), 0);
  EXPECT_EQ(pixels[0].y, 940);
  for (const auto& pixel : {pixels[1], pixels[2]}) {
    EXPECT_EQ(pixel.cb, 600);
    EXPECT_EQ(pixel.y, 501);
    EXPECT_EQ(pixel.cr, 700);
  }
  EXPECT_EQ(pixels[3].y, 940);
}

TEST(FrameBufferTests, CaptureSavesTheWholeFrame) {
  ShowPortZero();
  const std::string path = testing::TempDir() + "vsc_capture.raw";
  auto run = PlayTest(VscTestCase::Vsc_Capture_DataVerify, "0\n" + path + "\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.ends_with("RGB.raw open ok\nfwrite =1555200\n"));
  const std::string file = scripted::ReadFile(path);
  std::remove(path.c_str());
  ASSERT_EQ(file.size(), 1555200u);
  EXPECT_EQ(file.substr(0, 3), "\xff\xff\xff");
  EXPECT_EQ(file.substr(file.size() - 3), std::string(3, '\0'));

  run = PlayTest(VscTestCase::Vsc_Capture_DataVerify, "1\n/no/such/directory/x\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.ends_with("RGB.raw open fail \n"));
  EXPECT_EQ(scripted::Commands().size(), 2u);
}

TEST(Functionality, ShowsASourceUntilTheOperatorExits) {
  // Main source HDMI on port 0, window 0, full size; four watch lines, continue, four more, exit.
  const auto run = PlayTest(VscTestCase::Vsc_functionality, "0\n2\n0\n0\n0\n0\n0\n0\n1\n0\n0\n1\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(CountOf(run.output, "Detecting Timing..4 \n"), 2u);
  EXPECT_EQ(CountOf(run.output, "User Sel, 0(Continue); 1(Exit); 2(ChangSrc)\n\033[m"), 2u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_SetInputRegion"), 1u);
  EXPECT_TRUE(run.output.ends_with("value:1\n"));
}

TEST(Functionality, BlanksWithoutATimingAndRecovers) {
  int polls = 0;
  scripted::OnWait([&](unsigned long) {
    ++polls;
    if (polls == 4) simhal::Unplug(0);
    if (polls == 7) simhal::PlugHdmi(0, "1920x1080p60");
  });
  // The answers after the second "1": blank window 0 at the loss, unblank it after the signal
  // returns.
  const auto run =
      PlayTest(VscTestCase::Vsc_functionality, "0\n2\n0\n0\n0\n0\n0\n0\n1\n0\n0\n0\n0\n1\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(Contains(run.output, "HDMI Get Timing NG 2\n"));
  EXPECT_TRUE(Contains(run.output, "Detect Timing NG : -1\n"));
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Connect"), 1u) << "the window stays connected";
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_SetWinBlank(0, 1, 1)"), 2u);
}

TEST(Functionality, PromptsAtEveryFifthPollWithoutATiming) {
  // A source that the helpers cannot bring up.
  const auto run = PlayTest(VscTestCase::Vsc_functionality, "0\n0\n0\n0\n1\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(CountOf(run.output, "User Sel"), 2u);
  EXPECT_EQ(scripted::Waits(), std::vector<unsigned long>(10, 1'000'000));
}

TEST(Functionality, FailedConnectIsNotRetried) {
  simhal::Fail("K2V_RHAL_VSC_Connect", -3);
  const auto run = PlayTest(VscTestCase::Vsc_functionality, "0\n2\n0\n0\n0\n0\n0\n0\n0\n0\n1\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_EQ(CountOf(run.output, "VSC Connect NG : -3\n"), 2u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Connect"), 1u);
}

TEST(Functionality, KeepsItsSourcesFromRunToRun) {
  PlayTest(VscTestCase::Vsc_functionality, "0\n2\n0\n0\n0\n0\n0\n0\n1\n0\n1\n");
  // The sub window uses the main window's source: nothing is set up again.
  auto run = PlayTest(VscTestCase::Vsc_functionality, "0\n1\n1\n1\n1\n0\n1\n1\n2\n1\n1\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(Contains(run.output, "\n Input Src:2\n"));
  EXPECT_EQ(CallsOf("K2V_RHAL_VFE_HDMI_Initialize"), 1u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Connect(1,"), 1u);

  // Both windows have a source: one must be given up.
  run = PlayTest(VscTestCase::Vsc_functionality, "0\n0\n0\n1\n");
  EXPECT_TRUE(Contains(run.output,
                       "VSC_INPUT_TYPE_Src_main : 2,VSC_INPUT_TYPE_Src_sub:2 Switch\n"
                       "\033[1;34mchange src: VSC Window 0(Win0), 1(Win1)\n\033[m"));
  EXPECT_EQ(CallsOf("K2V_RHAL_VFE_HDMI_Uninitialize"), 1u);
  EXPECT_TRUE(LastCall().starts_with("K2V_RHAL_VSC_Disconnect(0,")) << LastCall();

  run = PlayTest(VscTestCase::Vsc_functionality, "0\n2\n0\n0\n0\n0\n0\n0\n1\n0\n1\n");
  EXPECT_TRUE(Contains(run.output, "Please choose Input Src for Main:\n"));
}

TEST(Functionality, ChangeOfSourceIsRetriedUntilItSucceeds) {
  PlayTest(VscTestCase::Vsc_functionality, "0\n2\n0\n0\n0\n0\n0\n0\n1\n0\n1\n");
  simhal::Fail("K2V_RHAL_VFE_HDMI_Disconnect", -8, 1, 1);
  const auto run = PlayTest(VscTestCase::Vsc_functionality, "0\n0\n0\n0\n0\n0\n1\n");
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(Contains(run.output, "main source:2,so need to change src\n"));
  EXPECT_EQ(CountOf(run.output, "change src: VSC Window"), 2u);
  EXPECT_TRUE(Contains(run.output, "HDMI Disconnect NG : -8\nChange Src VFE NG : -8\n"));
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Disconnect(0,"), 1u);
}

TEST(OnlyMainWindow, PlaybackPromptsForTheNextSourceAnd99Exits) {
  const auto run = PlayTest(VscTestCase::Vsc_functionality_OnlyMainWin, "5\n99\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(CountOf(run.output, "Choose input Src:"), 2u);
  EXPECT_EQ(CountOf(run.output, "Input Src:5\n"), 1u);
  EXPECT_TRUE(simhal::Calls().empty());
}

TEST(OnlyMainWindow, ShowsHdmiAndChangesTheSource) {
  const auto run = PlayTest(VscTestCase::Vsc_functionality_OnlyMainWin, "2\n2\n2\n0\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(CountOf(run.output, "Detecting Timing..1 \nDetecting Timing..2 \n"), 2u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_SetWinBlank(0, 0, 1)"), 2u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_SetWinBlank(0, 1, 1)"), 1u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VFE_HDMI_Uninitialize"), 1u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Disconnect(0,"), 1u);
}

TEST(OnlyMainWindow, RetriesADisconnectUntilItSucceeds) {
  simhal::Fail("K2V_RHAL_VSC_Disconnect", -8, 1, 2);
  const auto run = PlayTest(VscTestCase::Vsc_functionality_OnlyMainWin, "2\n2\n99\n");
  EXPECT_EQ(run.result, 0);
  const std::string refused =
      "VSC Disconnect NG : -8\nApi_vsc_Misc_SetVSC_Disconnect NG : -8\nChange Src NG : -8\n";
  EXPECT_EQ(CountOf(run.output, refused), 2u) << run.output;
  EXPECT_EQ(CountOf(run.output, "Change Src VFE NG : -3\n"), 2u)
      << "the source was already stopped";
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Disconnect(0,"), 3u);
}

TEST(OnlyMainWindow, PromptsAtEveryThirdPollWithoutATiming) {
  const auto run = PlayTest(VscTestCase::Vsc_functionality_OnlyMainWin, "0\n0\n1\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(CountOf(run.output, "Detect Timing NG : -1\n"), 6u);
  EXPECT_EQ(CountOf(run.output, "User Sel"), 2u);
}

TEST(AllSources, ReportsTheTimingOfEachOfflineSource) {
  // HDMI is shown, component and HDMI are offline sources: HDMI is already running then.
  const auto run = PlayTest(VscTestCase::Vsc_SwitchSource_AllSourceRun,
                            "2\n0\n1\n1\n0\n0\n1\n0\n0\n0\n0\n0\n0\n0\n1\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(Contains(run.output, "Offline Connect K2V_VSC_INPUTSRC_ADC NG : -1\n"));
  EXPECT_TRUE(Contains(run.output, "Offline Connect K2V_VSC_INPUTSRC_HDMI NG : -4\n"));
  EXPECT_TRUE(Contains(run.output, "ADC Detect Timing : -1\n"));
  EXPECT_TRUE(Contains(run.output, "HDMI Detect Timing : 0\n"));
  EXPECT_EQ(CountOf(run.output, "\n Connect:"), 5u);
  EXPECT_TRUE(Contains(run.output, "Detecting Timing..20 \n"));
}

// The answers that bring up HDMI on port 0, with no other source, and show it in a window.
std::string ShowHdmiIn(const std::string& window) {
  return "2\n0\n0\n0\n0\n0\n0\n0\n" + window + "\n0\n" + window + '\n' + window + "\n0\n" + window +
         '\n';
}

// The answers that select a source that cannot be brought up, and exit.
const std::string kLeaveByAvd = "0\n0\n0\n0\n0\n0\n0\n1\n";

TEST(AllSources, PromptsForTheWindowUntilItIsTheOneWithTheSource) {
  auto run = PlayTest(VscTestCase::Vsc_SwitchSource_AllSourceRun,
                      ShowHdmiIn("1") + "2\n0\n0\n1\n1\n" + kLeaveByAvd);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(CountOf(run.output, "change src: VSC Window"), 2u);
  EXPECT_EQ(CountOf(run.output, "Change Src VFE NG : -1\n"), 1u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Disconnect(0,"), 0u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Disconnect(1,"), 1u);
  // The remaining source cannot be stopped: after one prompt it is given up.
  run = PlayTest(VscTestCase::Vsc_SwitchSource_AllSourceRun, "0\n0\n" + kLeaveByAvd);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(CountOf(run.output, "change src: VSC Window"), 1u);
}

TEST(AllSources, ChangesTheSourceOfTheLastRun) {
  PlayTest(VscTestCase::Vsc_SwitchSource_AllSourceRun, ShowHdmiIn("0") + "1\n");
  simhal::ClearCalls();
  auto run =
      PlayTest(VscTestCase::Vsc_SwitchSource_AllSourceRun, "0\n0\n" + ShowHdmiIn("0") + "1\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.starts_with("VSC_INPUT_TYPE_Src : 2, Switch\n\033[1;34mchange src: "));
  EXPECT_EQ(CallsOf("K2V_RHAL_VFE_HDMI_Uninitialize"), 1u);
  EXPECT_FALSE(Contains(run.output, " NG : ")) << run.output;

  // A rejected disconnect leaves no source connected, and no endlessly repeated prompt.
  simhal::Fail("K2V_RHAL_VSC_Disconnect", -8);
  run = PlayTest(VscTestCase::Vsc_SwitchSource_AllSourceRun, "0\n0\n" + kLeaveByAvd);
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(Contains(run.output, "Change Src NG : -8\nInput Src\n")) << run.output;
}

TEST(FastSwitch, DisconnectsTheWindowBeforeTheNextSource) {
  PlayTest(VscTestCase::Vsc_FastSwitchSource_ForDemo, "2\n");
  EXPECT_EQ(LastCall(), "K2V_RHAL_VSC_SetWinBlank(0, 0, 0) = 0");
  const struct {
    const char* next;
    const char* told;
  } kSwitches[] = {
      {"4\n", "HAL_VSC_Disconnect K2V_VSC_INPUTSRC_HDMI before Switch Source\n"},
      {"3\n", "K2V_RHAL_VSC_Disconnect K2V_VSC_INPUTSRC_JPEG before Switch Source\n"},
      {"0\n", "K2V_RHAL_VSC_Disconnect K2V_VSC_INPUTSRC_VDEC before Switch Source\n"},
      {"0\n", "Input Src\n"},
  };
  for (const auto& change : kSwitches) {
    const auto run = PlayTest(VscTestCase::Vsc_FastSwitchSource_ForDemo, change.next);
    EXPECT_TRUE(run.output.starts_with(change.told)) << run.output;
  }
  EXPECT_EQ(CallsOf("K2V_RHAL_VFE_HDMI_Disconnect(2)"), 1u);
}

TEST(LiveZoom, ShowsOneSourceInBothWindows) {
  const auto run = PlayTest(VscTestCase::Vsc_LiveZoomfunction, "2\n0\n0\n0\n2\n1\n2\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_FALSE(Contains(run.output, " NG : "));
  EXPECT_TRUE(run.output.ends_with("Please check main and sub picture, if ok means pip pass\n"));
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Connect(0, {type=2, attr=0x0, output=0}) = 0"), 1u);
  EXPECT_EQ(CallsOf("K2V_RHAL_VSC_Connect(1, {type=2, attr=0x0, output=0}) = 0"), 1u);
  EXPECT_EQ(LastCall(), "K2V_RHAL_VSC_SetWinBlank(1, 0, 0) = 0");
  EXPECT_EQ(scripted::WaitedUs(), 15'000'000u);

  simhal::Reset();
  simhal::Fail("K2V_RHAL_VSC_Connect", -8);
  const auto refused = PlayTest(VscTestCase::Vsc_LiveZoomfunction, "2\n0\n0\n0\n2\n1\n2\n");
  EXPECT_TRUE(Contains(refused.output, "\nmain VSC Connect NG : -8\n")) << refused.output;
  EXPECT_TRUE(Contains(refused.output, "\nsub VSC Connect NG : -8\n")) << refused.output;
}

TEST(DirectHdmi, IsShownWithoutAPromptByBothTests) {
  const struct {
    TestFunction test;
    std::vector<std::string> metadata;
    const char* shown;
    unsigned long waitedUs;
  } kTests[] = {
      {VscTestCase::Vsc_HDMI_HDR10,
       {"DM_Open() = 0", "DM_Connect() = 0"},
       "SetWinBlank(0, 0, 1) = 0",
       4'000'000},
      {VscTestCase::Vsc_SetWinBlank_Sync_memc, {}, "SetWinBlank_Sync_memc(0, 0, 1) = 0", 6'000'000},
  };
  for (const auto& t : kTests) {
    const auto waited = scripted::WaitedUs();
    simhal::ClearCalls();
    EXPECT_EQ(PlayTest(t.test, "").result, 0);
    std::vector<std::string> expected = t.metadata;
    expected.insert(expected.begin(), "Connect(0, {type=2, attr=0x0, output=0}) = 0");
    expected.insert(expected.end(),
                    {"SetInputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0",
                     "SetOutputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0", t.shown});
    std::vector<std::string> calls = simhal::Calls();
    for (std::string& call : calls) call.erase(0, std::strlen("K2V_RHAL_VSC_"));
    ASSERT_GE(calls.size(), expected.size());
    calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(expected.size()));
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(scripted::WaitedUs() - waited, t.waitedUs);
  }
}

}  // namespace
