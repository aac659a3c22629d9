// Display back end and graphics tests with the simulated HAL; the operator's answers are scripted.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Scripted.h"
#include "SimHal.h"
#include "UTGalTestCase.h"
#include "VbeTestCase.h"

namespace {

using TestFunction = int (*)(char*);

scripted::Run PlayTest(TestFunction test, const std::string& answers = "") {
  return scripted::Play(answers, [test] { return test(nullptr); });
}

/// Starts a panel and a 3D formatter, then clears the recorded calls.
void StartDisplay() {
  PlayTest(VbeTestCase::VBE_DISP_Full_HD_Fast_Initialize);
  PlayTest(VbeTestCase::VBE_TRIDFMT_Initialize);
  simhal::ClearCalls();
}

std::string LastCall() {
  return simhal::Calls().empty() ? "" : simhal::Calls().back();
}

TEST(VbePanel, PromptsForEveryFieldWithTheOriginalTexts) {
  const auto run = PlayTest(VbeTestCase::VBE_DISP_Initialize, "65 2 3 2 4 3840 2160 1920 1088 0 1");
  EXPECT_EQ(run.output,
            "Panel Size\n\n panel_inch:65\nbl type\n\n panel_bl_type:2\nmaker\n\n panel_maker:3\n"
            "Interface 0:(DISP_PANEL_EPI);1:(DISP_PANEL_LVDS);2:(DISP_PANEL_Vx1);"
            "3:(DISP_PANEL_CEDS)\n\n panelInterface:2\nbar type\n\n led_bar_type:4\n"
            "video_width\n\n video_width:3840\nvideo_height\n\n video_height:2160\n"
            "osd_width\n\n osd_width:1920\nosd_width\n\n osd_width:1088\n"
            "Bit mode 0:(DISP_COLOR_DEPTH_8BIT);1:(DISP_COLOR_DEPTH_10BIT)\n\n lvds_bit_mode:0\n"
            "LVDS Type 0:(DISP_LVDS_SELECT_VESA);1:(DISP_LVDS_SELECT_JEIDA)\n\n lvds_type:1\n");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(simhal::Calls(),
            (std::vector<std::string>{
                "K2V_RHAL_VBE_DISP_Initialize({inch=65, backlight=2, maker=3, bar=4, interface=2, "
                "video=3840x2160, osd=1920x1088, bits=1}) = 0",
                "K2V_RHAL_VBE_DISP_TCON_Initialize() = 0"}));

  simhal::Reset();
  PlayTest(VbeTestCase::VBE_DISP_Full_HD_Fast_Initialize);
  EXPECT_EQ(simhal::Calls()[0],
            "K2V_RHAL_VBE_DISP_Initialize({inch=55, backlight=1, maker=1, bar=1, interface=1, "
            "video=1920x1080, osd=960x540, bits=0}) = 0")
      << "no typed value is left";
}

TEST(VbePanel, AttributesAreTruncatedToTheWidthOfTheirFields) {
  StartDisplay();
  const auto run = PlayTest(VbeTestCase::VBE_DISP_Panel_Attribute_Setting,
                            "1 1 0 2 3 0 1 65537 65541 2250 256 257 1 2 2700 3 4 5 6 2812 7 8 9 "
                            "-1");
  EXPECT_EQ(run.result, 0);
  EXPECT_EQ(LastCall(),
            "K2V_RHAL_VBE_DISP_SetDisplayFormat({type=1, depth=1, lvds=0, pixel=2, interface=3, "
            "frc=0, resolution=1, inch=1, hPeriod=5, 60Hz={2250 0 1 1 2}, 50Hz={2700 3 4 5 6}, "
            "48Hz={2812 7 8 9 255}}, 60) = 0");
  EXPECT_TRUE(run.output.starts_with(
      "PanelType 0(DISP_PANEL_TYPE_LCD),1(DISP_PANEL_TYPE_LCD_TCON),2(DISP_PANEL_TYPE_LCD_FRC)\n"
      "3(DISP_PANEL_TYPE_PDP),4(DISP_PANEL_TYPE_LED),5(DISP_PANEL_TYPE_OLED)\n\n ePanelType:1\n"));
  EXPECT_TRUE(run.output.ends_with("48Hz Hsync Bporch\n\n horizBackPorch48Hz:-1\n"));
}

TEST(VbePanel, EachFailingStepOfTheStartIsReported) {
  const struct {
    const char* function;
    TestFunction test;
    const char* output;
    std::size_t calls;
  } kCases[] = {
      {"K2V_RHAL_VBE_DISP_Initialize", VbeTestCase::VBE_DISP_Full_HD_Fast_Initialize,
       "VBE_Disp result : -7\n", 1},
      {"K2V_RHAL_VBE_DISP_TCON_Initialize", VbeTestCase::VBE_DISP_Full_HD_Fast_Initialize,
       "VBE_Tcon result : -7\n", 2},
      {"K2V_RHAL_VBE_DISP_TCON_Initialize", VbeTestCase::VBE_DISP_TCON_Check_EPI_Output,
       "Tcon initial NG, result : -7\n", 1},
      {"K2V_RHAL_VBE_DISP_TCON_SetClock", VbeTestCase::VBE_DISP_TCON_Check_EPI_Output,
       "Tcon SetClock, 0(OFF); 1(ON)\nTcon Clock NG, result : -7\n", 2},
      {"K2V_RHAL_VBE_TRIDFMT_Initialize", VbeTestCase::VBE_TRIDFMT_Initialize, "result : -7\n", 1},
      {"K2V_RHAL_VBE_TRIDFMT_Open", VbeTestCase::VBE_TRIDFMT_Initialize, "result : -7\n", 2},
  };
  for (const auto& c : kCases) {
    simhal::Reset();
    StartDisplay();
    simhal::Fail(c.function, -7);
    const auto run = PlayTest(c.test, "1");
    EXPECT_EQ(run.result, 1) << c.function;
    EXPECT_EQ(run.output, c.output);
    EXPECT_EQ(simhal::Calls().size(), c.calls) << c.function;
  }
}

/// A test, its answers, its HAL call, and its output if the HAL returns an error.
struct SettingCase {
  TestFunction test;
  const char* answers;
  const char* call;  // without the result
  const char* failure;
  int failedResult = 1;
};

TEST(VbeSettings, AreTruncatedToTheWidthOfTheirArguments) {
  const SettingCase kCases[] = {
      {VbeTestCase::VBE_DISP_Mirror, "1 0", "VBE_DISP_SetVideoMirror(1, 0)", "result : -7\n"},
      {VbeTestCase::VBE_DISP_VideoMute, "1", "VBE_DISP_SetMute(1)", "result : -7\n"},
      {VbeTestCase::VBE_DISP_SetDisplayOutput, "0", "VBE_DISP_SetDisplayOutput(0)",
       "result : -7\n"},
      {VbeTestCase::VBE_DISP_SetSpreadSpectrum, "1 65636 65546",
       "VBE_DISP_SetSpreadSpectrum(1, 100, 10)", "result : -7\n"},
      {VbeTestCase::VBE_DISP_SetFrameRate, "0 306", "VBE_DISP_SetFrameRate(0, 50)",
       "result : -7\n"},
      {VbeTestCase::VBE_DISP_SetBackgroundColor, "1 2 255",
       "VBE_DISP_SetBackgroundColor(1, 2, 255)", "result : -7\n"},
      {VbeTestCase::VBE_DISP_SetPanelBackgroundColor, "1 257 2 -1",
       "VBE_DISP_SetPanelBackgroundColor(1, 1, 2, 255)", "result : -7\n"},
      {VbeTestCase::VBE_DISP_SetPanelBackgroundColor, "0",
       "VBE_DISP_SetPanelBackgroundColor(0, 0, 0, 0)", "result : -7\n"},
      {VbeTestCase::VBE_DISP_SetScreenShift, "1", "VBE_DISP_ScreenShift(1)", "result : -7\n", 0},
      {VbeTestCase::VBE_DISP_OLED_SETORBIT, "1", "VBE_DISP_OLED_SetOrbit(1)",
       "VBE_DISP_OLED_SETORBIT result : -7\n"},
      {VbeTestCase::VBE_DISP_Uninitialize, "", "VBE_DISP_Uninitialize()", "result : -7\n"},
      {VbeTestCase::VBE_TRIDFMT_Set_3D_Depth, "2 266", "VBE_TRIDFMT_CtrlDepth(2, 10)",
       "result : -7\n"},
      {VbeTestCase::VBE_TRIDFMT_Set_3D_ViewPoint, "250", "VBE_TRIDFMT_SetConvValue(-6)",
       "result : -7\nresult : -7\n"},
      {VbeTestCase::VBE_TRIDFMT_Set_3D_LR_Toggle, "1", "VBE_TRIDFMT_ToggleOutputLRFrame(1)",
       "result : -7\nresult : -7\n"},
      {VbeTestCase::VBE_TRIDFMT_Set_3D_LR_Correction, "1", "VBE_TRIDFMT_ToggleInputLRFrame(1)",
       "result : -7\n"},
      {VbeTestCase::VBE_TRIDFMT_Set_3D_Auto_Convergence, "1",
       "VBE_TRIDFMT_AutoConvergenceEnable(1)", "result : -7\n"},
  };
  for (const SettingCase& c : kCases) {
    simhal::Reset();
    StartDisplay();
    const std::string call = std::string("K2V_RHAL_") + c.call;
    EXPECT_EQ(PlayTest(c.test, c.answers).result, 0) << call;
    EXPECT_EQ(LastCall(), call + " = 0");
    simhal::Fail(call.substr(0, call.find('(')), -7);
    const auto run = PlayTest(c.test, c.answers);
    EXPECT_EQ(run.result, c.failedResult) << call;
    EXPECT_EQ(LastCall(), call + " = -7");
    EXPECT_TRUE(run.output.ends_with(c.failure)) << run.output;
    EXPECT_EQ(run.output.find("result"),
              run.output.rfind(c.failure) + std::string(c.failure).find("result"));
  }
}

TEST(VbeQueries, PrintWhatTheHalReports) {
  StartDisplay();
  PlayTest(VbeTestCase::VBE_DISP_SetFrameRate, "1 48");
  EXPECT_EQ(PlayTest(VbeTestCase::VBE_DISP_GetOutputFrameRate).output, "Output frameRates : 48\n");
  EXPECT_EQ(PlayTest(VbeTestCase::VBE_TRIDFMT_Set_3D_ViewPoint, "3").output,
            "SetConvValue, -10 ~ 10\nresult : 0\n");
  EXPECT_EQ(PlayTest(VbeTestCase::VBE_GetQ7TPanelConfigParameter).output,
            "[VBE] Test Case: VBE_GetQ7TPanelConfigParameter...\n"
            "[PANEL] sPanelName = CVN-SIM UHD 55 , Panel_GetPanelConfigParameter ok\n"
            "[VBE] Test Case: VBE_GetQ7TPanelConfigParameter Done!!\n");
  simhal::Fail("K2V_RHAL_Panel_GetPanelConfigParameter", -7);
  const auto run = PlayTest(VbeTestCase::VBE_GetQ7TPanelConfigParameter);
  EXPECT_EQ(run.result, 1);
  EXPECT_TRUE(run.output.ends_with(
      "VBE_GetQ7TPanelConfigParameter result : pPanelCOnfigParameter is NULL\n"));
  EXPECT_EQ(LastCall(), "K2V_RHAL_Panel_GetPanelConfigParameter() = NULL");
}

TEST(VbeTransmitter, ReportsThePortsImmediately) {
  simhal::Apply("hdmitx 1 off");
  const auto run = PlayTest(VbeTestCase::VBE_HDMITX_HdmiConnectionNotify);
  EXPECT_EQ(run.output,
            "[VBE] Test Case: VBE_HDMITX_HdmiConnectionNotify...\n"
            "[VBE] deviceConnectionStatus, connected(LV TV)=1, portNum=0\n"
            "[VBE] deviceConnectionStatus, connected(LV TV)=0, portNum=1\n"
            "[VBE] Test Case: VBE_HDMITX_HdmiConnectionNotify Done!!\n");
}

TEST(Graphics, EachTestStartsAndEndsTheLayer) {
  for (const TestFunction test :
       {UTGalTestCase::UTGalTest_Init, UTGalTestCase::UTGalTest_Finalize,
        UTGalTestCase::UTGalTest_Rlink_Init, UTGalTestCase::UTGalTest_Rlink_Finalize}) {
    EXPECT_EQ(PlayTest(test).result, 0);
    EXPECT_TRUE(simhal::Calls().empty());
  }
  PlayTest(UTGalTestCase::UTGalTest_OsdSplit);
  PlayTest(UTGalTestCase::UTGalTest_Rlink_PanelOn);
  simhal::Fail("K2V_RHAL_RLINK_GAL_Init", -7);
  const auto run = PlayTest(UTGalTestCase::UTGalTest_Rlink_PanelOff);
  EXPECT_EQ(run.result, 0) << "the HAL's results are ignored";
  EXPECT_TRUE(run.output.starts_with("\033[1;31m "));
  EXPECT_EQ(run.output.find("[muro]"), std::string::npos);
  EXPECT_EQ(
      simhal::Calls(),
      (std::vector<std::string>{
          "K2V_RHAL_GAL_Init() = 0", "K2V_RHAL_GAL_OSDSPLIT(1) = 0", "K2V_RHAL_GAL_Finalize() = 0",
          "K2V_RHAL_RLINK_GAL_Init() = 0", "K2V_RHAL_RLINK_GAL_PANEL_ENABLE(1) = 0",
          "K2V_RHAL_RLINK_GAL_Finalize() = 0", "K2V_RHAL_RLINK_GAL_Init() = -7",
          "K2V_RHAL_RLINK_GAL_PANEL_ENABLE(0) = -3", "K2V_RHAL_RLINK_GAL_Finalize() = -3"}));
}

}  // namespace
