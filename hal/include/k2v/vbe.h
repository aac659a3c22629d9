// Video back end (VBE): panel, timing controller (TCON), 3D formatter and HDMI transmitter. Every
// function returns 0 or a failure code unless documented otherwise.
#pragma once

#include <stdbool.h>

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Colour depth of the panel's link, and the depth in panel attributes.
enum {
  DISP_COLOR_DEPTH_8BIT = 0,
  DISP_COLOR_DEPTH_10BIT = 1,
};

// Panel to be started, passed by value.
typedef struct {
  uint32_t panel_inch;      // diagonal, inches, 1 to 120
  uint32_t panel_bl_type;   // backlight, 0 to 15
  uint32_t panel_maker;     // 0 to 15
  uint32_t led_bar_type;    // 0 to 15
  uint32_t panelInterface;  // 0 EPI, 1 LVDS, 2 V-by-One, 3 CEDS
  uint32_t tool_option[4];  // for the HAL's own use
  uint32_t video_width;     // pixels, 1 to 7680
  uint32_t video_height;    // lines, 1 to 4320
  uint32_t osd_width;       // pixels, 0 to 7680
  uint32_t osd_height;      // lines, 0 to 4320
  uint32_t lvds_bit_mode;   // DISP_COLOR_DEPTH_*
  uint32_t lvds_option[4];  // for the HAL's own use
} K2V_VBE_PANEL_INFO_T;

// Attributes of the panel. Periods in pixels and lines, total; widths and porches in pixels and
// lines.
typedef struct {
  uint32_t
      ePanelType;  // 0 LCD, 1 LCD with TCON, 2 LCD with frame-rate converter, 3 PDP, 4 LED, 5 OLED
  uint32_t eColorDepth;      // DISP_COLOR_DEPTH_*
  uint32_t eLVDSSelect;      // 0 VESA, 1 JEIDA
  uint32_t eLVDSPixel;       // 0 single, 1 dual, 2 quad
  uint32_t panelInterface;   // 0 LVDS, 1 HSLVDS, 2 EPI, 3 V-by-One
  uint32_t eFRCType;         // 0 to 15
  uint32_t panelResolution;  // 0 to 15
  uint16_t ePanelInch;       // inches
  uint16_t horizTypPeriod;
  uint16_t vertTypPeriod60Hz;
  uint8_t vertSyncWidth60Hz;
  uint8_t vertBackPorch60Hz;
  uint8_t horizSyncWidth60Hz;
  uint8_t horizBackPorch60Hz;
  uint16_t vertTypPeriod50Hz;
  uint8_t vertSyncWidth50Hz;
  uint8_t vertBackPorch50Hz;
  uint8_t horizSyncWidth50Hz;
  uint8_t horizBackPorch50Hz;
  uint16_t vertTypPeriod48Hz;
  uint8_t vertSyncWidth48Hz;
  uint8_t vertBackPorch48Hz;
  uint8_t horizSyncWidth48Hz;
  uint8_t horizBackPorch48Hz;
} K2V_VBE_PANEL_ATTRIBUTE_T;

enum {
  K2V_PANEL_NAME_BYTES = 64,
};

// Configuration of the panel that the board was built for.
typedef struct {
  uint32_t nPanelInch;         // inches
  uint32_t ePanelType;         // as in K2V_VBE_PANEL_ATTRIBUTE_T
  uint32_t eInterface;         // as in K2V_VBE_PANEL_ATTRIBUTE_T
  uint32_t eColorDepth;        // DISP_COLOR_DEPTH_*
  uint32_t nWidth;             // pixels
  uint32_t nHeight;            // lines
  uint32_t nHorizontalTotal;   // pixels, blanking included
  uint32_t nVerticalTotal;     // lines, blanking included
  uint32_t nFrameRateMilliHz;  // typical
  uint32_t nMinFrameRateMilliHz;
  uint32_t nMaxFrameRateMilliHz;
  uint32_t nPixelClockKHz;
  uint32_t nLanes;           // of the interface
  uint32_t nMaxLuminance;    // cd/m2
  uint32_t nMinLuminance;    // 0.0001 cd/m2
  uint32_t nBacklightZones;  // of local dimming; 0: none
  uint32_t reserved[8];
  char sPanelName[K2V_PANEL_NAME_BYTES];  // terminated by a zero byte
} K2V_PANEL_CONFIG_T;

// Input format of the 3D formatter.
enum {
  VBE_INPUT_TYPE_3DOFF = 0,
  VBE_INPUT_TYPE_TOPNBOTTOM = 1,
  VBE_INPUT_TYPE_SIDEBYSIDE = 2,
  VBE_INPUT_TYPE_CHECKERBOARD = 3,
  VBE_INPUT_TYPE_FRAMESEQ = 4,
  VBE_INPUT_TYPE_COLUMN_INTERLEAVE = 5,
  VBE_INPUT_TYPE_LINE_INTERLEAVE_HALF = 6,
  VBE_INPUT_TYPE_FRAMEPAC = 7,
  VBE_INPUT_TYPE_FIELD_ALTERNATIVE = 8,
  VBE_INPUT_TYPE_LINE_ALTERNATIVE = 9,
  VBE_INPUT_TYPE_SIDEBYSIDE_FULL = 10,
  VBE_INPUT_TYPE_DUALSTREAM = 11,
  VBE_INPUT_TYPE_2DTO3D = 12,
};

// Called when a device is plugged into or out of an HDMI transmitter port.
typedef void (*K2V_VBE_HDMI_CONNECTION_CALLBACK)(bool connected, unsigned portNum);

// Panel and its picture.
int K2V_RHAL_VBE_DISP_Initialize(K2V_VBE_PANEL_INFO_T panel);
int K2V_RHAL_VBE_DISP_Uninitialize(void);
int K2V_RHAL_VBE_DISP_TCON_Initialize(void);
int K2V_RHAL_VBE_DISP_TCON_SetClock(uint32_t on);
// `frameRate` in Hz: 48, 50, 60, 100 or 120.
int K2V_RHAL_VBE_DISP_SetDisplayFormat(K2V_VBE_PANEL_ATTRIBUTE_T* attribute, uint32_t frameRate);
int K2V_RHAL_VBE_DISP_SetVideoMirror(uint32_t horizontal, uint32_t vertical);
int K2V_RHAL_VBE_DISP_SetMute(uint32_t on);
int K2V_RHAL_VBE_DISP_SetDisplayOutput(uint32_t on);
// `percent` in 0.01 %, 0 to 300; `period` in 0.1 kHz, 0 to 1000.
int K2V_RHAL_VBE_DISP_SetSpreadSpectrum(uint32_t enable, uint16_t percent, uint16_t period);
// `frameRate` in Hz, 24 to 120; with `freeRun` the panel is not synchronised to its input.
int K2V_RHAL_VBE_DISP_SetFrameRate(uint32_t freeRun, uint8_t frameRate);
int K2V_RHAL_VBE_DISP_GetOutputFrameRate(uint8_t* frameRate);  // Hz
// Colour around the picture; 0 to 255 each.
int K2V_RHAL_VBE_DISP_SetBackgroundColor(uint32_t red, uint32_t green, uint32_t blue);
// Colour instead of the picture while `on`.
int K2V_RHAL_VBE_DISP_SetPanelBackgroundColor(uint8_t on, uint8_t red, uint8_t green, uint8_t blue);
int K2V_RHAL_VBE_DISP_ScreenShift(uint32_t on);
int K2V_RHAL_VBE_DISP_OLED_SetOrbit(uint32_t on);
// The panel's configuration, which remains valid; null if there is none.
const K2V_PANEL_CONFIG_T* K2V_RHAL_Panel_GetPanelConfigParameter(void);

// 3D formatter.
int K2V_RHAL_VBE_TRIDFMT_Initialize(void);
int K2V_RHAL_VBE_TRIDFMT_Open(void);
int K2V_RHAL_VBE_TRIDFMT_SelectInputFormat(uint32_t format);  // VBE_INPUT_TYPE_*
// `mode`: 0 off, 1 on, 2 2D to 3D, 3 3D to 2D; `level` 0 to 10.
int K2V_RHAL_VBE_TRIDFMT_CtrlDepth(uint32_t mode, uint8_t level);
int K2V_RHAL_VBE_TRIDFMT_SetConvValue(int8_t value);           // view point, -10 to 10
int K2V_RHAL_VBE_TRIDFMT_ToggleOutputLRFrame(uint32_t order);  // 0 right first, 1 left first
int K2V_RHAL_VBE_TRIDFMT_ToggleInputLRFrame(uint32_t order);   // 0 left first, 1 right first
int K2V_RHAL_VBE_TRIDFMT_AutoConvergenceEnable(uint32_t enable);

// HDMI transmitter: `callback` receives the state immediately, and again at every change.
int K2V_RHAL_HdmiConnectionNotify(K2V_VBE_HDMI_CONNECTION_CALLBACK callback);

#ifdef __cplusplus
}

#include <cstddef>

static_assert(sizeof(K2V_VBE_PANEL_INFO_T) == 18 * 4, "eighteen 32-bit fields");
static_assert(offsetof(K2V_PANEL_CONFIG_T, sPanelName) == 96, "where tests look for the name");
#endif
