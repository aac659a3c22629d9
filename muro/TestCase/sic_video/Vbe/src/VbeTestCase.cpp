#include "VbeTestCase.h"

#include <cstdint>
#include <cstdio>
#include <type_traits>

#include "ConsoleInput.h"
#include "k2v/vbe.h"

namespace {

constexpr uint32_t kAttributeFrameRateHz = 60;

// Both keep the typed values from run to run.
K2V_VBE_PANEL_INFO_T panel{};
K2V_VBE_PANEL_ATTRIBUTE_T attribute{};

int Verdict(int result, const char* what = "") {
  if (result == 0) return 0;
  std::printf("%sresult : %d\n", what, result);
  return 1;
}

int Ask(const char* prompt) {
  console::Prompt("%s\n", prompt);
  return console::ReadNumber();
}

uint32_t AskUint32(const char* prompt) {
  return static_cast<uint32_t>(Ask(prompt));
}

int AskAndEcho(const char* prompt, const char* field) {
  const int value = Ask(prompt);
  std::printf("\n %s:%d\n", field, value);
  return value;
}

/// One field of a record that the operator fills in.
template <typename Record>
struct FieldPrompt {
  const char* prompt;
  const char* name;
  void (*store)(Record& record, int value);
};

/// Stores a value truncated to the width of `field`.
template <auto field, typename Record>
void Store(Record& record, int value) {
  record.*field = static_cast<std::remove_reference_t<decltype(record.*field)>>(value);
}

template <typename Record, typename Prompts>
void AskRecord(const Prompts& prompts, Record& record) {
  for (const FieldPrompt<Record>& prompt : prompts) {
    prompt.store(record, AskAndEcho(prompt.prompt, prompt.name));
  }
}

using Panel = K2V_VBE_PANEL_INFO_T;

// The prompt for the height of the on-screen display says width again, and the LVDS type is in the
// place of the bit mode.
constexpr FieldPrompt<Panel> kPanelPrompts[] = {
    {"Panel Size", "panel_inch", Store<&Panel::panel_inch>},
    {"bl type", "panel_bl_type", Store<&Panel::panel_bl_type>},
    {"maker", "panel_maker", Store<&Panel::panel_maker>},
    {"Interface "
     "0:(DISP_PANEL_EPI);1:(DISP_PANEL_LVDS);2:(DISP_PANEL_Vx1);3:(DISP_PANEL_CEDS)",
     "panelInterface", Store<&Panel::panelInterface>},
    {"bar type", "led_bar_type", Store<&Panel::led_bar_type>},
    {"video_width", "video_width", Store<&Panel::video_width>},
    {"video_height", "video_height", Store<&Panel::video_height>},
    {"osd_width", "osd_width", Store<&Panel::osd_width>},
    {"osd_width", "osd_width", Store<&Panel::osd_height>},
    {"Bit mode 0:(DISP_COLOR_DEPTH_8BIT);1:(DISP_COLOR_DEPTH_10BIT)", "lvds_bit_mode",
     Store<&Panel::lvds_bit_mode>},
    {"LVDS Type 0:(DISP_LVDS_SELECT_VESA);1:(DISP_LVDS_SELECT_JEIDA)", "lvds_type",
     Store<&Panel::lvds_bit_mode>},
};

using Attribute = K2V_VBE_PANEL_ATTRIBUTE_T;

constexpr FieldPrompt<Attribute> kAttributePrompts[] = {
    {"PanelType 0(DISP_PANEL_TYPE_LCD),1(DISP_PANEL_TYPE_LCD_TCON),2(DISP_PANEL_TYPE_LCD_FRC)\n"
     "3(DISP_PANEL_TYPE_PDP),4(DISP_PANEL_TYPE_LED),5(DISP_PANEL_TYPE_OLED)",
     "ePanelType", Store<&Attribute::ePanelType>},
    {"Color Depth 0:(DISP_COLOR_DEPTH_8BIT);1:(DISP_COLOR_DEPTH_10BIT)", "eColorDepth",
     Store<&Attribute::eColorDepth>},
    {"LVDS Sel 0:(DISP_LVDS_SELECT_VESA);1:(DISP_LVDS_SELECT_JEIDA)", "eLVDSSelect",
     Store<&Attribute::eLVDSSelect>},
    {"LVDS Pixel 0:(DISP_LVDS_PIXEL_SINGLE);1:(DISP_LVDS_PIXEL_DUAL);2:(DISP_LVDS_PIXEL_QUAD)",
     "eLVDSPixel", Store<&Attribute::eLVDSPixel>},
    {"Interface "
     "0:(DISP_PANEL_LVDS);1:(DISP_PANEL_HSLVDS);2:(DISP_PANEL_EPI);3:(DISP_PANEL_Vx1)",
     "panelInterface", Store<&Attribute::panelInterface>},
    {"eFRCType", "eFRCType", Store<&Attribute::eFRCType>},
    {"PanelResolution", "panelResolution", Store<&Attribute::panelResolution>},
    {"Panel Size", "ePanelInch", Store<&Attribute::ePanelInch>},
    {"H period", "horizTypPeriod", Store<&Attribute::horizTypPeriod>},
    {"60Hz Vperiod", "vertTypPeriod60Hz", Store<&Attribute::vertTypPeriod60Hz>},
    {"60Hz Vsync Width", "vertSyncWidth60Hz", Store<&Attribute::vertSyncWidth60Hz>},
    {"60Hz Vsync Bporch", "vertBackPorch60Hz", Store<&Attribute::vertBackPorch60Hz>},
    {"60Hz Hsync Width", "horizSyncWidth60Hz", Store<&Attribute::horizSyncWidth60Hz>},
    {"60Hz Hsync Bporch", "horizBackPorch60Hz", Store<&Attribute::horizBackPorch60Hz>},
    {"50Hz Vperiod", "vertTypPeriod50Hz", Store<&Attribute::vertTypPeriod50Hz>},
    {"50Hz Vsync Width", "vertSyncWidth50Hz", Store<&Attribute::vertSyncWidth50Hz>},
    {"50Hz Vsync Bporch", "vertBackPorch50Hz", Store<&Attribute::vertBackPorch50Hz>},
    {"50Hz Hsync Width", "horizSyncWidth50Hz", Store<&Attribute::horizSyncWidth50Hz>},
    {"50Hz Hsync Bporch", "horizBackPorch50Hz", Store<&Attribute::horizBackPorch50Hz>},
    {"48Hz Vperiod", "vertTypPeriod48Hz", Store<&Attribute::vertTypPeriod48Hz>},
    {"48Hz Vsync Width", "vertSyncWidth48Hz", Store<&Attribute::vertSyncWidth48Hz>},
    {"48Hz Vsync Bporch", "vertBackPorch48Hz", Store<&Attribute::vertBackPorch48Hz>},
    {"48Hz Hsync Width", "horizSyncWidth48Hz", Store<&Attribute::horizSyncWidth48Hz>},
    {"48Hz Hsync Bporch", "horizBackPorch48Hz", Store<&Attribute::horizBackPorch48Hz>},
};

int StartPanel() {
  if (Verdict(K2V_RHAL_VBE_DISP_Initialize(panel), "VBE_Disp ") != 0) return 1;
  return Verdict(K2V_RHAL_VBE_DISP_TCON_Initialize(), "VBE_Tcon ");
}

/// Prints the result of every call, and the result of a failed one again.
int VerdictPrintedAlways(int result) {
  std::printf("result : %d\n", result);
  return Verdict(result);
}

void PrintStart(const char* function) {
  std::printf("[VBE] Test Case: %s...\n", function);
}

void PrintDone(const char* function) {
  std::printf("[VBE] Test Case: %s Done!!\n", function);
}

/// Verdict of a test that started with `PrintStart`.
int VerdictOf(const char* function, int result) {
  if (result == 0) {
    PrintDone(function);
    return 0;
  }
  std::printf("%s result : %d\n", function, result);
  return 1;
}

}  // namespace

int VbeTestCase::VBE_DISP_Initialize(char*) {
  AskRecord(kPanelPrompts, panel);
  return StartPanel();
}

int VbeTestCase::VBE_DISP_Full_HD_Fast_Initialize(char*) {
  panel.panel_inch = 55;
  panel.panel_bl_type = 1;
  panel.panel_maker = 1;
  panel.led_bar_type = 1;
  panel.panelInterface = 1;
  panel.video_width = 1920;
  panel.video_height = 1080;
  panel.osd_width = 960;
  panel.osd_height = 540;
  panel.lvds_bit_mode = DISP_COLOR_DEPTH_8BIT;
  panel.lvds_option[0] = 0;
  return StartPanel();
}

int VbeTestCase::VBE_DISP_Uninitialize(char*) {
  return Verdict(K2V_RHAL_VBE_DISP_Uninitialize());
}

int VbeTestCase::VBE_DISP_Connect(char*) {
  return 0;
}

int VbeTestCase::VBE_DISP_Disconnect(char*) {
  return 0;
}

int VbeTestCase::VBE_DISP_Panel_Attribute_Setting(char*) {
  AskRecord(kAttributePrompts, attribute);
  return Verdict(K2V_RHAL_VBE_DISP_SetDisplayFormat(&attribute, kAttributeFrameRateHz));
}

int VbeTestCase::VBE_DISP_TCON_Check_EPI_Output(char*) {
  if (Verdict(K2V_RHAL_VBE_DISP_TCON_Initialize(), "Tcon initial NG, ") != 0) return 1;
  return Verdict(K2V_RHAL_VBE_DISP_TCON_SetClock(AskUint32("Tcon SetClock, 0(OFF); 1(ON)")),
                 "Tcon Clock NG, ");
}

int VbeTestCase::VBE_DISP_SetLanePower(char*) {
  return 0;
}

int VbeTestCase::VBE_DISP_SetLVDScurrent(char*) {
  return 0;
}

int VbeTestCase::VBE_GetQ7TPanelConfigParameter(char*) {
  PrintStart(__func__);
  const K2V_PANEL_CONFIG_T* config = K2V_RHAL_Panel_GetPanelConfigParameter();
  if (config == nullptr) {
    std::printf("%s result : pPanelCOnfigParameter is NULL\n", __func__);
    return 1;
  }
  std::printf("[PANEL] sPanelName = %.*s , Panel_GetPanelConfigParameter ok\n",
              K2V_PANEL_NAME_BYTES, config->sPanelName);
  PrintDone(__func__);
  return 0;
}

int VbeTestCase::VBE_DISP_Mirror(char*) {
  const int horizontal = AskAndEcho("Mirror H, 0(Normal), 1(Invert)", "IsH");
  const int vertical = AskAndEcho("Mirror V, 0(Normal), 1(Invert)", "IsV");
  return Verdict(K2V_RHAL_VBE_DISP_SetVideoMirror(static_cast<uint32_t>(horizontal),
                                                  static_cast<uint32_t>(vertical)));
}

int VbeTestCase::VBE_DISP_VideoMute(char*) {
  return Verdict(K2V_RHAL_VBE_DISP_SetMute(AskUint32("Video Mute, 0(OFF); 1(ON)")));
}

int VbeTestCase::VBE_DISP_SetDisplayOutput(char*) {
  return Verdict(K2V_RHAL_VBE_DISP_SetDisplayOutput(AskUint32("Display Output, 0(OFF); 1(ON)")));
}

int VbeTestCase::VBE_DISP_SetSpreadSpectrum(char*) {
  const uint32_t enable = AskUint32("Spectrum, 0(Disable); 1(Enable)");
  const auto percent = static_cast<uint16_t>(Ask("Percenct : "));
  const auto period = static_cast<uint16_t>(Ask("Period : "));
  return Verdict(K2V_RHAL_VBE_DISP_SetSpreadSpectrum(enable, percent, period));
}

int VbeTestCase::VBE_DISP_SetFrameRate(char*) {
  const uint32_t freeRun = AskUint32("ForceFreeRun, 0(NO); 1(Yes)");
  const auto frameRate = static_cast<uint8_t>(Ask("frameRates : "));
  return Verdict(K2V_RHAL_VBE_DISP_SetFrameRate(freeRun, frameRate));
}

int VbeTestCase::VBE_DISP_GetOutputFrameRate(char*) {
  uint8_t frameRate = 0;
  if (Verdict(K2V_RHAL_VBE_DISP_GetOutputFrameRate(&frameRate)) != 0) return 1;
  std::printf("Output frameRates : %d\n", frameRate);
  return 0;
}

int VbeTestCase::VBE_DISP_SetBackgroundColor(char*) {
  const uint32_t red = AskUint32("Background Red : ");
  const uint32_t green = AskUint32("Background green : ");
  const uint32_t blue = AskUint32("Background blue : ");
  return Verdict(K2V_RHAL_VBE_DISP_SetBackgroundColor(red, green, blue));
}

int VbeTestCase::VBE_DISP_SetPanelBackgroundColor(char*) {
  const int mode = Ask("Set Panel background color mode 1(On); 0(Off):");
  uint8_t red = 0, green = 0, blue = 0;
  if (mode == 1) {
    red = static_cast<uint8_t>(Ask("Background Red value: "));
    green = static_cast<uint8_t>(Ask("Background green vale: "));
    blue = static_cast<uint8_t>(Ask("Background blue value: "));
  }
  return Verdict(
      K2V_RHAL_VBE_DISP_SetPanelBackgroundColor(static_cast<uint8_t>(mode), red, green, blue));
}

int VbeTestCase::VBE_DISP_SetScreenShift(char*) {
  Verdict(K2V_RHAL_VBE_DISP_ScreenShift(AskUint32("Set Screen Shift mode 1(On); 0(Off):")));
  return 0;  // passes whatever the HAL returns
}

int VbeTestCase::VBE_DISP_OLED_SETORBIT(char*) {
  PrintStart(__func__);
  const auto on = static_cast<uint32_t>(console::ReadNumber());
  return VerdictOf(__func__, K2V_RHAL_VBE_DISP_OLED_SetOrbit(on));
}

int VbeTestCase::VBE_TRIDFMT_Initialize(char*) {
  if (Verdict(K2V_RHAL_VBE_TRIDFMT_Initialize()) != 0) return 1;
  return Verdict(K2V_RHAL_VBE_TRIDFMT_Open());
}

#define VBE_3D_FORMAT(id, name, format, description)                             \
  int VbeTestCase::VBE_TRIDFMT_##name(char*) {                                   \
    return Verdict(K2V_RHAL_VBE_TRIDFMT_SelectInputFormat(format), #format " "); \
  }
#include "Vbe3dFormats.def"
#undef VBE_3D_FORMAT

int VbeTestCase::VBE_TRIDFMT_Set_3D_Depth(char*) {
  const uint32_t mode = AskUint32(
      "n3Dmode: 0(VBE_TRIDTV_3DMODE_OFF), 1(VBE_TRIDTV_3DMODE_ON), "
      "2(VBE_TRIDTV_3DMODE_2DTO3D), 3(VBE_TRIDTV_3DMODE_3DTO2D)");
  const auto level = static_cast<uint8_t>(Ask("u8DepthLevel, 0 ~ 10"));
  return Verdict(K2V_RHAL_VBE_TRIDFMT_CtrlDepth(mode, level));
}

int VbeTestCase::VBE_TRIDFMT_Set_3D_ViewPoint(char*) {
  const auto value = static_cast<int8_t>(Ask("SetConvValue, -10 ~ 10"));
  return VerdictPrintedAlways(K2V_RHAL_VBE_TRIDFMT_SetConvValue(value));
}

int VbeTestCase::VBE_TRIDFMT_Set_3D_LR_Toggle(char*) {
  return VerdictPrintedAlways(K2V_RHAL_VBE_TRIDFMT_ToggleOutputLRFrame(
      AskUint32("ToggleOutputLRFrame, 0(VBE_OUTPUT_RL_SEQ), 1(VBE_OUTPUT_LR_SEQ)")));
}

int VbeTestCase::VBE_TRIDFMT_Set_3D_LR_Correction(char*) {
  return Verdict(K2V_RHAL_VBE_TRIDFMT_ToggleInputLRFrame(
      AskUint32("Set LR Seq 0(VBE_INPUT_LR_SEQ), 1(VBE_INPUT_RL_SEQ)")));
}

int VbeTestCase::VBE_TRIDFMT_Set_3D_Auto_Convergence(char*) {
  return Verdict(K2V_RHAL_VBE_TRIDFMT_AutoConvergenceEnable(
      AskUint32("AutoConvergenceEnable, 0(DISABLE), 1(ENABLE)")));
}

int VbeTestCase::VBE_HDMITX_HdmiConnectionNotify(char*) {
  PrintStart(__func__);
  return VerdictOf(__func__, K2V_RHAL_HdmiConnectionNotify(deviceConnectionStatus));
}

void deviceConnectionStatus(bool connected, unsigned portNum) {
  std::printf("[VBE] %s, connected(LV TV)=%d, portNum=%d\n", __func__, connected,
              static_cast<int>(portNum));
}
