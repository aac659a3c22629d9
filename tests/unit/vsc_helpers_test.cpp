// The scaler helpers with the simulated HAL: order of calls, kept state, watching the timing.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "Scripted.h"
#include "SimHal.h"
#include "TestCase/sic_video/HdmiEdid.h"
#include "commonVsc.h"
#include "k2v/vfe_hdmi.h"

namespace {

using Lines = std::vector<std::string>;
using scripted::Play;

/// Name and result of each HAL call since the last query, such as "VSC_Open=0".
Lines TakeCalls() {
  Lines names;
  for (const std::string& call : simhal::Calls()) {
    const auto open = call.find('(');
    names.push_back(call.substr(9, open - 9) + "=" + call.substr(call.rfind(' ') + 1));
  }
  simhal::ClearCalls();
  return names;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

void BringHdmiUp() {
  ASSERT_EQ(Play("0\n", [] { return Api_vsc_Misc_SetInput_HDMI_Init(); }).result, 0);
  ASSERT_EQ(Play("", [] { return Api_vsc_Misc_HDMI_GetTimingInfo(0); }).result, 0);
  simhal::ClearCalls();
}

int ConnectHdmi() {
  return Api_vsc_Misc_SetVSC_Connect(K2V_VSC_INPUTSRC_HDMI);
}

TEST(VscHelpers, StatesAllowOnlyTheirSteps) {
  // allowed[state of the window][step]
  const std::string allowed[] = {".1.......", "..1...1..", "...1.1..1"};
  const auto check = [&](int state) {
    for (int step = 0; step <= 8; ++step) {
      const auto run = Play("", [&] { return Api_vsc_Check_State(step, K2V_VIDEO_WID_0); });
      EXPECT_EQ(run.result, allowed[state][static_cast<std::size_t>(step)] == '1' ? 0 : -1)
          << "state " << state << " step " << step;
      const std::string refusal = "Api_vsc_Set_State state : " + std::to_string(step) +
                                  ",vsc_state=" + std::to_string(state) +
                                  ", vsc_main_state : " + std::to_string(state) +
                                  ",vsc_sub_state:0\n";
      EXPECT_EQ(run.output, run.result == 0 ? "" : refusal);
    }
  };
  check(0);
  simhal::Fail("K2V_RHAL_VSC_Open", 5, 1, 1);
  EXPECT_EQ(Play("0\n", ConnectHdmi).result, 5);
  check(1);
  EXPECT_EQ(Play("0\n0\n", ConnectHdmi).result, 0);
  check(2);
  for (const int step : {-1, 9}) {
    EXPECT_EQ(Play("", [&] { return Api_vsc_Check_State(step, K2V_VIDEO_WID_0); }).output,
              "Api_vsc_Set_State state : " + std::to_string(step) + "\n");
  }
}

TEST(VscHelpers, ConnectsTheMainWindowAndSkipsCompletedSteps) {
  auto run = Play("0\n2\n", ConnectHdmi);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.output,
            "\033[1;34mChoose VSC connect Window 0(Win0), 1(Win1)\n \033[m"
            "Api_vsc_Set_State state : 1, vsc_state : 1\n"
            "Api_vsc_Set_State state : 2, vsc_state : 2\n"
            "\033[1;34mChoose output mode:0(K2V_VSC_OUTPUT_DISPLAY_MODE);1(VSC_OUTPUT_VENC_MODE);"
            "2(VSC_OUTPUT_MEMORY_MODE);3(VSC_OUTPUT_AVE_MODE);\n\033[m"
            "\nOutput Mode:2\n");
  EXPECT_EQ(simhal::Calls().back(), "K2V_RHAL_VSC_Connect(0, {type=2, attr=0x0, output=2}) = 0");
  EXPECT_EQ(TakeCalls(), (Lines{"VSC_Initialize=0", "VSC_Open=0", "VSC_Connect=0"}));

  run = Play("0\n2\n", ConnectHdmi);
  EXPECT_TRUE(Contains(run.output, "vsc_main_state : 2,vsc_sub_state:0\nVSC Not Init Again\n"));
  EXPECT_TRUE(Contains(run.output, "VSC Not Open Again\n"));
  EXPECT_EQ(TakeCalls(), Lines{"VSC_Connect=0"});
}

TEST(VscHelpers, SubWindowInitialisesOnlyIfTheMainWindowHasNot) {
  EXPECT_EQ(Play("1\n0\n", ConnectHdmi).result, 0);
  EXPECT_EQ(TakeCalls(), (Lines{"VSC_Initialize=0", "VSC_Open=0", "VSC_Connect=0"}));
  EXPECT_EQ(Api_vsc_get_input_winid(), 1u);
  // The main window always initialises: it does not check the sub window.
  EXPECT_EQ(Play("0\n0\n", ConnectHdmi).result, 0);
  EXPECT_EQ(TakeCalls(), (Lines{"VSC_Initialize=0", "VSC_Open=0", "VSC_Connect=0"}));
}

TEST(VscHelpers, SubWindowAfterTheMainWindowPrintsTheLongStateLine) {
  Play("0\n0\n", ConnectHdmi);
  TakeCalls();
  const auto run = Play("1\n0\n", ConnectHdmi);
  EXPECT_EQ(TakeCalls(), (Lines{"VSC_Open=0", "VSC_Connect=0"}));
  EXPECT_TRUE(Contains(run.output,
                       "Api_vsc_Set_State state : 1,vsc_state=2, vsc_main_state : 2,vsc_sub_state:0"
                       "\nApi_vsc_Set_State state : 1, vsc_state : 1\n"));
  EXPECT_TRUE(Contains(run.output, "Choose utput mode:0("));
}

TEST(VscHelpers, ConnectFailuresAreReportedReturnedAndRetried) {
  const struct {
    const char* function;
    const char* message;
    Lines retried;
  } kSteps[] = {
      {"K2V_RHAL_VSC_Initialize", "VSC Init NG : -9\n", {"VSC_Initialize", "VSC_Open"}},
      {"K2V_RHAL_VSC_Open", "VSC Open NG : -9\n", {"VSC_Open"}},
      {"K2V_RHAL_VSC_Connect", "VSC Connect NG : -9\n", {}},
  };
  for (const std::string window : {"0", "1"}) {
    for (const auto& step : kSteps) {
      // The scaler is already initialised by the main window when the sub window is connected.
      if (window == "1" && step.retried.size() == 2) continue;
      simhal::Fail(step.function, -9, 1, 1);
      const auto run = Play(window + "\n0\n", ConnectHdmi);
      EXPECT_EQ(run.result, -9) << window << step.function;
      EXPECT_TRUE(run.output.ends_with(step.message)) << run.output;
    }
    TakeCalls();
    EXPECT_EQ(Play(window + "\n0\n", ConnectHdmi).result, 0);
    EXPECT_EQ(TakeCalls(), Lines{"VSC_Connect=0"});
  }
}

TEST(VscHelpers, UnknownTypesFailEvenIfTheHalConnects) {
  const auto connect = [] { return Api_vsc_Misc_SetVSC_Connect(5); };
  EXPECT_EQ(Play("0\n0\n", connect).result, -1);
  EXPECT_EQ(TakeCalls().back(), "VSC_Connect=0");
  const auto simple = [] { return Api_vsc_Misc_SetVSC_Connect_simple(5); };
  EXPECT_EQ(Play("", simple).result, 0);
  EXPECT_EQ(Play("", [] { return Api_vsc_Misc_Set2VSC_Connect(5, 0); }).result, -1);
}

TEST(VscHelpers, SetsUpAWindowWithoutPrompts) {
  const auto run = Play("", [] { return Api_vsc_Misc_Set2VSC_Connect(2, K2V_VIDEO_WID_1); });
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(run.output,
            "Api_vsc_Set_State state : 1, vsc_state : 1\nVSC Init OK : 0\n"
            "Api_vsc_Set_State state : 2, vsc_state : 2\nVSC Open OK : 0\n"
            "Sub output mode:0(K2V_VSC_OUTPUT_DISPLAY_MODE);1(VSC_OUTPUT_VENC_MODE);"
            "2(VSC_OUTPUT_MEMORY_MODE);3(VSC_OUTPUT_AVE_MODE);\n\nOutput Mode:0\n");
  EXPECT_EQ(simhal::Calls().back(), "K2V_RHAL_VSC_Connect(1, {type=2, attr=0x0, output=0}) = 0");
}

TEST(VscHelpers, ReceiverBringUpAndTearDownStopAtTheFirstFailure) {
  const Lines edids(4, "VFE_HDMI_WriteEDID=0");
  const struct {
    std::function<int()> helper;
    const char* function;
    std::string message;
    std::size_t calls;  // number of calls, including the failing one
  } kSteps[] = {
      {Api_vsc_Misc_SetInput_HDMI_Init, "K2V_RHAL_VFE_HDMI_Initialize", "HDMI Init NG : 7\n", 1},
      {Api_vsc_Misc_SetInput_HDMI_Init, "K2V_RHAL_VFE_HDMI_Open", "HDMI Open NG : 7\n", 7},
      {Api_vsc_Misc_SetInput_HDMI_Init, "K2V_RHAL_VFE_HDMI_Connect", "HDMI Connect NG : 7\n", 8},
      {Api_vsc_Misc_SetInput_HDMI_DeInit, "K2V_RHAL_VFE_HDMI_Disconnect",
       "HDMI Disconnect NG : 7\n", 1},
      {Api_vsc_Misc_SetInput_HDMI_DeInit, "K2V_RHAL_VFE_HDMI_Close", "HDMI Close NG : 7\n", 2},
      {Api_vsc_Misc_SetInput_HDMI_DeInit, "K2V_RHAL_VFE_HDMI_Uninitialize", "HDMI UnInit NG : 7\n",
       3},
  };
  for (const auto& step : kSteps) {
    simhal::Reset();
    if (step.calls <= 3 && step.function != kSteps[0].function) BringHdmiUp();
    simhal::Fail(step.function, 7);
    const auto run = Play("0\n", step.helper);
    EXPECT_EQ(run.result, 7) << step.function;
    EXPECT_TRUE(run.output.ends_with(step.message)) << run.output;
    EXPECT_EQ(TakeCalls().size(), step.calls) << step.function;
  }
}

TEST(VscHelpers, PortIsTheLowByteOfTheAnswer) {
  const auto run = Play("258\n", Api_vsc_Misc_SetInput_HDMI_Init);
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(run.output.ends_with(
      "\033[1;34m Please choose HDMI InputPort 0 ~ 3\n\033[m\n HDMI InputPort:2\n"));
  EXPECT_EQ(simhal::Calls().back(), "K2V_RHAL_VFE_HDMI_Connect(2) = 0");
  for (unsigned port = 0; port < 4; ++port) {
    EXPECT_EQ(simhal::StoredEdid(port),
              std::vector<uint8_t>(HdmiEdid(port), HdmiEdid(port) + K2V_HDMI_EDID_BYTES));
  }
}

TEST(VscHelpers, OtherSourcesAreRejectedWithoutACall) {
  for (const K2V_VSC_INPUT_TYPE type : {0u, 1u, 3u, 4u, 5u, 7u, 99u}) {
    const auto run = Play("", [&] {
      return Api_vsc_Misc_SetInput_Source(type) + Api_vsc_Misc_SetInput_Source_simple(type) +
             Api_vsc_Misc_ExitInput_Source(type) + Api_vsc_Misc_GetTimingInfo(type, 0) +
             Api_vsc_Misc_GetTimingInfo(type, 1);
    });
    EXPECT_EQ(run.result, -5);
    EXPECT_EQ(run.output, "");
  }
  EXPECT_TRUE(simhal::Calls().empty());
}

TEST(VscHelpers, DifferencesFromTenPixelsOnAreAChange) {
  const struct {
    const char* timing;
    const char* message;  // empty for no change
  } kChanges[] = {
      {"3831x2160p60", ""},
      {"3849x2160p60", ""},
      {"3830x2160p60", "HDMI Get Timing NG 3\nOrg ActiveW : 3840, New ActiveW : 3830\n"},
      {"3850x2160p60", "HDMI Get Timing NG 3\nOrg ActiveW : 3840, New ActiveW : 3850\n"},
      {"3840x2151p60", ""},
      {"3840x2150p60", "HDMI Get Timing NG 4\nOrg ActiveH : 2160, New ActiveH : 2150\n"},
      {"1920x1080p60", "HDMI Get Timing NG 3\nOrg ActiveW : 3840, New ActiveW : 1920\n"},
  };
  simhal::Apply("lock 0 0");
  BringHdmiUp();
  for (const auto& change : kChanges) {
    simhal::Apply("timing 0 3840x2160p60");
    ASSERT_EQ(Play("", [] { return Api_vsc_Misc_HDMI_GetTimingInfo(0); }).result, 0);
    simhal::Apply(std::string("timing 0 ") + change.timing);
    const auto watch = [] { return Api_vsc_Misc_HDMI_GetTimingInfo(1); };
    const auto run = Play("", watch);
    EXPECT_EQ(run.output, change.message);
    EXPECT_EQ(run.result, *change.message == '\0' ? 0 : -1) << change.timing;
    // A change clears the stored timing, so the next query differs from zero.
    const std::string again = Play("", watch).output;
    EXPECT_EQ(Contains(again, "Org ActiveW : 0,"), run.result != 0) << change.timing << again;
  }
}

TEST(VscHelpers, StoresAndPrintsTheTiming) {
  Play("1\n", Api_vsc_Misc_SetInput_HDMI_Init);
  const auto run = Play("", [] { return Api_vsc_Misc_HDMI_GetTimingInfo(0); });
  EXPECT_EQ(run.output,
            "format : 10, hFreq : 1a5e, vFreq : 1770, hTotal : 898, vTotal : 465, hPorch : c0, "
            "vPorch : 29\n"
            "scanType : 1, mode : 1, full_3d_timing : 0, video_LR_order : 0\n"
            "active x : 0, y : 0, w : 780, h : 438\n");
}

TEST(VscHelpers, LossOfTimingClearsItAndKeepsTheRegion) {
  const auto watch = [] { return Api_vsc_Misc_HDMI_GetTimingInfo(1); };
  const auto store = [] { return Api_vsc_Misc_HDMI_GetTimingInfo(0); };
  simhal::Apply("lock 0 0");
  BringHdmiUp();
  simhal::Fail("K2V_RHAL_VFE_HDMI_GetPortTimingInfo", -4, 1, 1);
  auto run = Play("", watch);
  EXPECT_EQ(run.result, -4);
  EXPECT_EQ(run.output, "HDMI Get Timing NG 1 : -4\n");
  EXPECT_TRUE(Contains(Play("", watch).output, "Org ActiveW : 0, New ActiveW : 3840\n"));

  Play("", store);
  simhal::Unplug(0);
  run = Play("", store);
  EXPECT_EQ(run.result, -1);
  EXPECT_EQ(run.output, "HDMI Get Timing NG 2\n");
  simhal::PlugHdmi(0, "3840x2160p60");
  EXPECT_TRUE(Contains(Play("", watch).output, "Org ActiveW : 0, New ActiveW : 3840\n"));
  EXPECT_EQ(Play("", Api_vsc_Misc_SetInOutregion_simple).output,
            "VIDEO_Timing_region_Param, x : 0, y : 0, w : f00, h : 870\n");
}

TEST(VscHelpers, WaitsAtMostTwentyOneSecondsForATiming) {
  const auto check = [] { return Api_vsc_Misc_CheckTimingInfo(K2V_VSC_INPUTSRC_HDMI); };
  auto run = Play("", check);
  EXPECT_EQ(run.result, K2V_RHAL_ERR_ORDER);
  EXPECT_EQ(scripted::Waits(), std::vector<unsigned long>(21, 1'000'000));
  EXPECT_EQ(TakeCalls().size(), 21u);
  EXPECT_TRUE(run.output.ends_with("\033[34mDetect Timing OK : -3\n\033[m"));

  Play("2\n", Api_vsc_Misc_SetInput_HDMI_Init);
  simhal::Apply("lock 0 2");
  simhal::Apply("after 3 polls 2 plug 2 1280x720p50");
  TakeCalls();
  run = Play("", check);
  EXPECT_EQ(run.result, 0);
  EXPECT_LE(TakeCalls().size(), 6u);
  EXPECT_TRUE(run.output.ends_with("\033[34mDetect Timing OK : 0\n\033[m"));
}

TEST(VscHelpers, BringsPortZeroUpDirectlyInAnyState) {
  const auto directly = [] { return Api_vsc_Misc_SetInput_HDMI_Directly(1); };
  auto run = Play("", directly);
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(TakeCalls(),
            (Lines{"VFE_HDMI_Initialize=0", "VFE_HDMI_WriteEDID=0", "VFE_HDMI_WriteEDID=0",
                   "VFE_HDMI_WriteEDID=0", "VFE_HDMI_WriteEDID=0", "VFE_HDMI_EnableHPD=0",
                   "VFE_HDMI_Open=0", "VFE_HDMI_Connect=0", "VFE_HDMI_GetPortTimingInfo=0",
                   "VSC_Initialize=0", "VSC_Open=0", "VSC_Connect=0", "VSC_DM_Open=0",
                   "VSC_DM_Connect=0"}));
  EXPECT_EQ(scripted::WaitedUs(), 4'000'000u);
  EXPECT_FALSE(Contains(run.output, "already"));
  EXPECT_TRUE(run.output.ends_with("VSC Not Open Again\nrun DM flow\n"));

  run = Play("", directly);
  EXPECT_EQ(run.result, 0);
  EXPECT_TRUE(
      run.output.starts_with("=====hdmi already init(ignore this)=====\n"
                             "=====hdmi already open(ignore this)=====\n"
                             "=====hdmi already connect(ignore this)=====\n"));
}

TEST(VscHelpers, DirectBringUpDoesNotChangeTheCurrentPort) {
  Play("1\n", Api_vsc_Misc_SetInput_HDMI_Init);
  simhal::ClearCalls();
  Play("", [] { return Api_vsc_Misc_SetInput_HDMI_Directly(0); });
  Play("", Api_vsc_Misc_SetInput_HDMI_DeInit);
  const Lines calls = simhal::Calls();
  const auto isMade = [&](const std::string& call) {
    return std::ranges::any_of(calls, [&](const auto& c) { return c.starts_with(call); });
  };
  EXPECT_TRUE(isMade("K2V_RHAL_VFE_HDMI_Connect(0)"));
  EXPECT_TRUE(isMade("K2V_RHAL_VFE_HDMI_GetPortTimingInfo(1,"));
  EXPECT_TRUE(isMade("K2V_RHAL_VFE_HDMI_Disconnect(1)"));
}

TEST(VscHelpers, BlanksInBlueUnlessTheOperatorIsAsked) {
  const struct {
    unsigned on, ask;
    const char* answers;
    const char* call;
  } kBlanks[] = {
      {1, 0, "0\n", "K2V_RHAL_VSC_SetWinBlank(0, 1, 1) = 0"},
      {1, 1, "1\n2\n", "K2V_RHAL_VSC_SetWinBlank(1, 1, 2) = 0"},
      {0, 1, "1\n", "K2V_RHAL_VSC_SetWinBlank(1, 0, 0) = 0"},
      {2, 1, "0\n", "K2V_RHAL_VSC_SetWinBlank(0, 0, 0) = 0"},
  };
  for (const auto& blank : kBlanks) {
    const auto run =
        Play(blank.answers, [&] { return Api_vsc_Misc_SetWinBlank(blank.on, blank.ask); });
    EXPECT_TRUE(run.output.starts_with("\033[1;34mBlank Window 0(Win0), 1(Win1)\n\033[m"));
    EXPECT_EQ(simhal::Calls().back(), blank.call);
  }
}

TEST(VscHelpers, DisplaySizesAreFullHdUltraHdAndAQuarter) {
  BringHdmiUp();
  Play("0\n0\n", ConnectHdmi);
  const struct {
    const char* answers;
    const char* region;
  } kSizes[] = {{"0\n0\n", "w=1920, h=1080"},
                {"0\n1\n", "w=3840, h=2160"},
                {"0\n2\n", "w=960, h=540"},
                {"0\n7\n", "w=960, h=540"}};
  for (const auto& size : kSizes) {
    const auto run = Play(size.answers, Api_vsc_Misc_SetInOutregion);
    EXPECT_TRUE(run.output.ends_with("\n========================\n"));
    EXPECT_EQ(simhal::Calls().back(),
              "K2V_RHAL_VSC_SetOutputRegion(0, {x=0, y=0, " + std::string(size.region) + "}) = 0");
    const Lines calls = simhal::Calls();
    EXPECT_EQ(calls[calls.size() - 2],
              "K2V_RHAL_VSC_SetInputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0");
  }
}

}  // namespace
