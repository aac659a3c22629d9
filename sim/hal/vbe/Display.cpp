#include <algorithm>
#include <iterator>
#include <ostream>

#include "core/Areas.h"
#include "core/Call.h"
#include "k2v/vbe.h"

namespace sim {

namespace {

constexpr uint8_t kPowerOnFrameRateHz = 60;
constexpr uint8_t kMinFrameRateHz = 24;
constexpr uint8_t kMaxFrameRateHz = 120;
constexpr uint16_t kMaxSpreadPercent = 300;
constexpr uint16_t kMaxSpreadPeriod = 1000;
constexpr uint32_t kMaxChannel = 255;
constexpr uint32_t kMaxChoice = 15;  // for fields that the HAL only passes on

constexpr K2V_PANEL_CONFIG_T kPanelConfig = {55,       0,
                                             3,        DISP_COLOR_DEPTH_10BIT,
                                             kPanel.w, kPanel.h,
                                             4400,     2250,
                                             60000,    48000,
                                             120000,   594000,
                                             8,        750,
                                             500,      96,
                                             {},       "CVN-SIM UHD 55"};

int Check(const Board& board, bool argumentsAreRight) {
  if (!argumentsAreRight) return K2V_RHAL_ERR_PARAM;
  return board.display.initialized ? K2V_RHAL_OK : K2V_RHAL_ERR_ORDER;
}

bool IsPossible(const K2V_VBE_PANEL_INFO_T& panel) {
  const auto isIn = [](uint32_t value, uint32_t min, uint32_t max) {
    return value >= min && value <= max;
  };
  return isIn(panel.panel_inch, 1, 120) && panel.panel_bl_type <= kMaxChoice &&
         panel.panel_maker <= kMaxChoice && panel.led_bar_type <= kMaxChoice &&
         panel.panelInterface <= 3 && isIn(panel.video_width, 1, 7680) &&
         isIn(panel.video_height, 1, 4320) && panel.osd_width <= 7680 && panel.osd_height <= 4320 &&
         panel.lvds_bit_mode <= DISP_COLOR_DEPTH_10BIT;
}

bool IsPossible(const K2V_VBE_PANEL_ATTRIBUTE_T& attribute) {
  return attribute.ePanelType <= 5 && attribute.eColorDepth <= DISP_COLOR_DEPTH_10BIT &&
         attribute.eLVDSSelect <= 1 && attribute.eLVDSPixel <= 2 && attribute.panelInterface <= 3 &&
         attribute.eFRCType <= kMaxChoice && attribute.panelResolution <= kMaxChoice;
}

int Initialize(Board& board, K2V_VBE_PANEL_INFO_T panel) {
  if (!IsPossible(panel)) return K2V_RHAL_ERR_PARAM;
  Display& display = board.display;
  if (!display.initialized) display.frameRateHz = kPowerOnFrameRateHz;
  display.initialized = true;
  display.output = true;
  display.dark = false;
  display.panel = panel;
  return K2V_RHAL_OK;
}

int Uninitialize(Board& board) {
  if (const int error = Check(board, true)) return error;
  board.display.initialized = false;
  board.display.output = false;
  board.display.dark = true;
  board.display.tconInitialized = false;
  board.display.tconClock = false;
  return K2V_RHAL_OK;
}

int InitializeTcon(Board& board) {
  if (const int error = Check(board, true)) return error;
  board.display.tconInitialized = true;
  board.display.tconClock = true;
  return K2V_RHAL_OK;
}

int SetTconClock(Board& board, uint32_t on) {
  if (on > 1) return K2V_RHAL_ERR_PARAM;
  if (!board.display.tconInitialized) return K2V_RHAL_ERR_ORDER;
  board.display.tconClock = on == 1;
  return K2V_RHAL_OK;
}

int SetFormat(Board& board, const K2V_VBE_PANEL_ATTRIBUTE_T* attribute, uint32_t frameRate) {
  static constexpr uint32_t kRatesHz[] = {48, 50, 60, 100, 120};
  const bool isRate = std::ranges::find(kRatesHz, frameRate) != std::end(kRatesHz);
  if (attribute == nullptr || !isRate || !IsPossible(*attribute)) return K2V_RHAL_ERR_PARAM;
  if (const int error = Check(board, true)) return error;
  board.display.attribute = *attribute;
  board.display.frameRateHz = static_cast<uint8_t>(frameRate);
  return K2V_RHAL_OK;
}

int SetMirror(Board& board, uint32_t horizontal, uint32_t vertical) {
  if (const int error = Check(board, horizontal <= 1 && vertical <= 1)) return error;
  board.display.mirrorHorizontal = horizontal == 1;
  board.display.mirrorVertical = vertical == 1;
  return K2V_RHAL_OK;
}

template <bool Display::*flag>
int SetFlag(Board& board, uint32_t on) {
  if (const int error = Check(board, on <= 1)) return error;
  board.display.*flag = on == 1;
  return K2V_RHAL_OK;
}

int SetOutput(Board& board, uint32_t on) {
  if (const int error = SetFlag<&Display::output>(board, on)) return error;
  board.display.dark = on == 0;
  return K2V_RHAL_OK;
}

int SetSpreadSpectrum(Board& board, uint32_t enable, uint16_t percent, uint16_t period) {
  if (const int error =
          Check(board, enable <= 1 && percent <= kMaxSpreadPercent && period <= kMaxSpreadPeriod)) {
    return error;
  }
  board.display.spreadSpectrum = enable == 1;
  board.display.spreadPercent = percent;
  board.display.spreadPeriod = period;
  return K2V_RHAL_OK;
}

int SetFrameRate(Board& board, uint32_t freeRun, uint8_t frameRate) {
  if (const int error = Check(
          board, freeRun <= 1 && frameRate >= kMinFrameRateHz && frameRate <= kMaxFrameRateHz)) {
    return error;
  }
  board.display.freeRun = freeRun == 1;
  board.display.frameRateHz = frameRate;
  return K2V_RHAL_OK;
}

int GetFrameRate(Board& board, uint8_t* frameRate) {
  if (const int error = Check(board, frameRate != nullptr)) return error;
  *frameRate = board.display.frameRateHz;
  return K2V_RHAL_OK;
}

int SetBorderColor(Board& board, uint32_t red, uint32_t green, uint32_t blue) {
  if (const int error = Check(board, std::max({red, green, blue}) <= kMaxChannel)) return error;
  board.display.borderColor = {static_cast<uint8_t>(red), static_cast<uint8_t>(green),
                               static_cast<uint8_t>(blue)};
  return K2V_RHAL_OK;
}

int SetBackground(Board& board, uint8_t on, uint8_t red, uint8_t green, uint8_t blue) {
  if (const int error = Check(board, on <= 1)) return error;
  board.display.background = on == 1;
  board.display.backgroundColor = {red, green, blue};
  return K2V_RHAL_OK;
}

const K2V_PANEL_CONFIG_T* GetPanelConfig(Board&) {
  return &kPanelConfig;
}

void DescribeColor(const char* name, const Color& color, std::ostream& out) {
  out << ", " << name << ' ' << +color.red << ',' << +color.green << ',' << +color.blue;
}

constexpr struct {
  const char* name;
  PanelFault fault;
} kFaults[] = {{"blank", PanelFault::kBlank},       {"mirror", PanelFault::kMirror},
               {"window", PanelFault::kWindow},     {"settings", PanelFault::kSettings},
               {"channels", PanelFault::kChannels}, {"range", PanelFault::kRange},
               {"lines", PanelFault::kLines}};

Action ParseFault(const Words& words) {
  std::string names = "none";
  for (const auto& [name, fault] : kFaults) {
    names.append(", ").append(name);
    if (words[0] == name) {
      const auto bit = static_cast<uint8_t>(1U << static_cast<unsigned>(fault));
      return [bit](Board& board) { board.display.faults |= bit; };
    }
  }
  if (words[0] != "none") RefuseWord("unknown fault", words[0], names);
  return [](Board& board) { board.display.faults = 0; };
}

constexpr Command kCommands[] = {
    {"panel-fault", "FAULT or panel-fault none",
     "inject a defect of the panel: blank (wrong colour), mirror (not mirrored), window (2 pixels\n"
     "      off), settings (of picture quality ignored), channels (swapped), range (limited),\n"
     "      lines (five black ones)",
     1, 1, ParseFault},
};

void Describe(const Board& board, std::ostream& out) {
  const Display& display = board.display;
  out << "display: " << (display.initialized ? "initialised" : "not initialised");
  if (display.initialized) {
    out << ", " << display.panel.panel_inch << " inch " << display.panel.video_width << 'x'
        << display.panel.video_height << ", output " << (display.output ? "on" : "off") << ", "
        << +display.frameRateHz << " Hz" << (display.freeRun ? ", free run" : "")
        << (display.muted ? ", muted" : "") << (display.mirrorHorizontal ? ", mirrored h" : "")
        << (display.mirrorVertical ? ", mirrored v" : "") << (display.shift ? ", shifted" : "")
        << (display.orbit ? ", orbit" : "") << (display.spreadSpectrum ? ", spread spectrum" : "")
        << (display.tconClock ? ", tcon clock on" : ", tcon clock off");
    DescribeColor("border", display.borderColor, out);
    if (display.background) DescribeColor("background", display.backgroundColor, out);
  }
  for (const auto& [name, fault] : kFaults) {
    if (display.Has(fault)) out << ", fault " << name;
  }
  out << '\n';
}

}  // namespace

constinit const Area kDisplayArea = {kCommands, Describe};

}  // namespace sim

using namespace sim;

int K2V_RHAL_VBE_DISP_Initialize(K2V_VBE_PANEL_INFO_T panel) {
  return Call(__func__, Initialize, panel);
}

int K2V_RHAL_VBE_DISP_Uninitialize() {
  return Call(__func__, Uninitialize);
}

int K2V_RHAL_VBE_DISP_TCON_Initialize() {
  return Call(__func__, InitializeTcon);
}

int K2V_RHAL_VBE_DISP_TCON_SetClock(uint32_t on) {
  return Call(__func__, SetTconClock, on);
}

int K2V_RHAL_VBE_DISP_SetDisplayFormat(K2V_VBE_PANEL_ATTRIBUTE_T* attribute, uint32_t frameRate) {
  return Call(__func__, SetFormat, attribute, frameRate);
}

int K2V_RHAL_VBE_DISP_SetVideoMirror(uint32_t horizontal, uint32_t vertical) {
  return Call(__func__, SetMirror, horizontal, vertical);
}

int K2V_RHAL_VBE_DISP_SetMute(uint32_t on) {
  return Call(__func__, SetFlag<&Display::muted>, on);
}

int K2V_RHAL_VBE_DISP_SetDisplayOutput(uint32_t on) {
  return Call(__func__, SetOutput, on);
}

int K2V_RHAL_VBE_DISP_SetSpreadSpectrum(uint32_t enable, uint16_t percent, uint16_t period) {
  return Call(__func__, SetSpreadSpectrum, enable, percent, period);
}

int K2V_RHAL_VBE_DISP_SetFrameRate(uint32_t freeRun, uint8_t frameRate) {
  return Call(__func__, SetFrameRate, freeRun, frameRate);
}

int K2V_RHAL_VBE_DISP_GetOutputFrameRate(uint8_t* frameRate) {
  return Call(__func__, GetFrameRate, Out{frameRate});
}

int K2V_RHAL_VBE_DISP_SetBackgroundColor(uint32_t red, uint32_t green, uint32_t blue) {
  return Call(__func__, SetBorderColor, red, green, blue);
}

int K2V_RHAL_VBE_DISP_SetPanelBackgroundColor(uint8_t on, uint8_t red, uint8_t green,
                                              uint8_t blue) {
  return Call(__func__, SetBackground, on, red, green, blue);
}

int K2V_RHAL_VBE_DISP_ScreenShift(uint32_t on) {
  return Call(__func__, SetFlag<&Display::shift>, on);
}

int K2V_RHAL_VBE_DISP_OLED_SetOrbit(uint32_t on) {
  return Call(__func__, SetFlag<&Display::orbit>, on);
}

const K2V_PANEL_CONFIG_T* K2V_RHAL_Panel_GetPanelConfigParameter() {
  return Call(__func__, GetPanelConfig);
}
