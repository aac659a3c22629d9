// Video scaler (VSC): connects an input source to a window and places the picture on the panel.
// Every function returns 0 or a failure code.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Input source type.
typedef uint32_t K2V_VSC_INPUT_TYPE;
enum {
  K2V_VSC_INPUTSRC_AVD = 0,  // analogue video decoder
  K2V_VSC_INPUTSRC_ADC = 1,  // component
  K2V_VSC_INPUTSRC_HDMI = 2,
  K2V_VSC_INPUTSRC_VDEC = 3,  // video decoder
  K2V_VSC_INPUTSRC_JPEG = 4,
};

// Destination of the scaler's picture.
typedef uint32_t K2V_VSC_OUTPUT_MODE;
enum {
  K2V_VSC_OUTPUT_DISPLAY_MODE = 0,
  VSC_OUTPUT_VENC_MODE = 1,
  VSC_OUTPUT_MEMORY_MODE = 2,
  VSC_OUTPUT_AVE_MODE = 3,
};

// Colour of a blanked window.
typedef uint32_t K2V_VIDEO_DDI_WIN_COLOR_T;
enum {
  K2V_VIDEO_DDI_WIN_COLOR_BLACK = 0,
  K2V_VIDEO_DDI_WIN_COLOR_BLUE = 1,
  K2V_VIDEO_DDI_WIN_COLOR_GRAY = 2,
};

// Point at which a frame is captured.
typedef uint32_t K2V_VIDEO_DDI_CAPTURE_PLACE_T;
enum {
  K2V_VIDEO_DDI_SCALER_OUTPUT = 0,
  K2V_VIDEO_DDI_DISPLAY_OUTPUT = 1,
};

// Input source of a window, passed by value.
typedef struct {
  K2V_VSC_INPUT_TYPE type;
  uint16_t indexAttr;  // bits 8-15 resource index, bits 0-7 attribute
  K2V_VSC_OUTPUT_MODE outputMode;
} K2V_VSC_INPUT_SRC_T;

// Colour standard of a frame buffer.
enum {
  K2V_COLOR_STANDARD_BT601 = 0,
  K2V_COLOR_STANDARD_BT709 = 1,
  K2V_COLOR_STANDARD_BT2020 = 2,
};

// Pixel-colour format of a frame buffer.
enum {
  K2V_PIXEL_FORMAT_YCBCR444 = 0,
  K2V_PIXEL_FORMAT_YCBCR422 = 1,
  K2V_PIXEL_FORMAT_RGB444 = 2,
};

// One pixel of a frame buffer. Components are 10-bit values (0-1023) in the low bits.
typedef struct {
  uint16_t cb;
  uint16_t y;
  uint16_t cr;
} K2V_VIDEO_PIXEL_T;

// Size of a captured frame: 960 x 540 pixels, three bytes each in the order R, G, B.
enum {
  K2V_CAPTURE_WIDTH = 960,
  K2V_CAPTURE_HEIGHT = 540,
  K2V_CAPTURE_BYTES = K2V_CAPTURE_WIDTH * K2V_CAPTURE_HEIGHT * 3,
};

// Capture request: the caller provides the buffer, the HAL fills it and sets the sizes.
typedef struct {
  uint8_t* pData;     // buffer of the caller
  uint32_t dataSize;  // in: bytes available, at least K2V_CAPTURE_BYTES; out: bytes written
  uint16_t width;     // out: pixels
  uint16_t height;    // out: lines
} K2V_VSC_CAPTURE_INFO_T;

int K2V_RHAL_VSC_Initialize(void);
int K2V_RHAL_VSC_Open(__K2V_VIDEO_WID_T wid);
int K2V_RHAL_VSC_Connect(__K2V_VIDEO_WID_T wid, K2V_VSC_INPUT_SRC_T source);
int K2V_RHAL_VSC_Disconnect(__K2V_VIDEO_WID_T wid, K2V_VSC_INPUT_SRC_T source);

// The visible part of the source, in source pixels, and its place on the panel, in panel pixels.
int K2V_RHAL_VSC_SetInputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T region);
int K2V_RHAL_VSC_SetOutputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T region);
int K2V_RHAL_VSC_GetInputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T* region);

// Blanks (on = 1) or shows (on = 0) a window. The _Sync_memc form waits for the motion
// compensation.
int K2V_RHAL_VSC_SetWinBlank(__K2V_VIDEO_WID_T wid, uint32_t on, K2V_VIDEO_DDI_WIN_COLOR_T color);
int K2V_RHAL_VSC_SetWinBlank_Sync_memc(__K2V_VIDEO_WID_T wid, uint32_t on,
                                       K2V_VIDEO_DDI_WIN_COLOR_T color);

// Freezes the window's picture, or the frame buffer that it comes from.
int K2V_RHAL_VSC_SetWinFreeze(__K2V_VIDEO_WID_T wid, uint32_t on);
int K2V_RHAL_VSC_FreezeVideoFrameBuffer(__K2V_VIDEO_WID_T wid, uint32_t on);

// Reads or writes the w x h pixels of a rectangle of the window's frame buffer. `pixels` contains
// them row by row without gaps.
int K2V_RHAL_VSC_ReadVideoFrameBuffer(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T* rect,
                                      K2V_VIDEO_PIXEL_T* pixels, uint32_t* colorStandard,
                                      uint32_t* pixelColorFormat);
int K2V_RHAL_VSC_WriteVideoFrameBuffer(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T* rect,
                                       K2V_VIDEO_PIXEL_T* pixels);

// Captures the present output of the scaler or the display.
int K2V_RHAL_VSC_CaptureVideoFrame(K2V_VIDEO_DDI_CAPTURE_PLACE_T place,
                                   K2V_VSC_CAPTURE_INFO_T* info);

int K2V_RHAL_VSC_SetRGB444Mode(uint32_t on);
int K2V_RHAL_VSC_SetHDMI_Preview(__K2V_VIDEO_WID_T wid, uint32_t on);

// Dynamic metadata of HDR sources.
int K2V_RHAL_VSC_DM_Open(void);
int K2V_RHAL_VSC_DM_Connect(void);

#ifdef __cplusplus
}
static_assert(sizeof(K2V_VSC_INPUT_SRC_T) == 12, "type, 16-bit word and padding, output mode");
static_assert(sizeof(K2V_VIDEO_PIXEL_T) == 6, "three 16-bit components");
#endif
