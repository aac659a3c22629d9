// HDMI receiver of the video front end (VFE). Ports are numbered 0 to 3.
// Every function returns 0 or a failure code.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  K2V_HDMI_PORT_COUNT = 4,
  K2V_HDMI_EDID_BYTES = 256,  // base block and one CEA-861 extension
};

enum {
  K2V_HDMI_SCAN_INTERLACED = 0,
  K2V_HDMI_SCAN_PROGRESSIVE = 1,
};

enum {
  K2V_HDMI_MODE_DVI = 0,
  K2V_HDMI_MODE_HDMI = 1,
};

// Timing that a port receives; all zero when there is no signal.
typedef struct {
  uint32_t format;          // video identification code (CEA-861), 0 for a timing without one
  uint16_t hFreq;           // line frequency, 0.01 kHz
  uint16_t vFreq;           // field or frame frequency, 0.01 Hz
  uint16_t hTotal;          // pixels a line, blanking included
  uint16_t vTotal;          // lines a frame, blanking included
  uint16_t hPorch;          // blanking from the sync's leading edge to the first pixel, pixels
  uint16_t vPorch;          // the same vertically, lines
  K2V_VIDEO_RECT_T active;  // active window
  uint16_t scanType;        // K2V_HDMI_SCAN_*
  uint8_t mode;             // K2V_HDMI_MODE_*
  uint8_t reserved;
  uint32_t full_3d_timing;  // frame-packed 3D timing: 1
  uint32_t video_LR_order;  // 3D: 0 left eye first, 1 right eye first
  uint32_t extra;           // for the HAL's own use
} K2V_HDMI_TIMING_T;

int K2V_RHAL_VFE_HDMI_Initialize(void);
int K2V_RHAL_VFE_HDMI_Uninitialize(void);
int K2V_RHAL_VFE_HDMI_Open(void);
int K2V_RHAL_VFE_HDMI_Close(void);

// Raises the hot-plug line of every port, so that sources read the EDID and start to send.
int K2V_RHAL_VFE_HDMI_EnableHPD(void);

// Stores the 256-byte EDID that a source on this port reads.
int K2V_RHAL_VFE_HDMI_WriteEDID(uint8_t port, const uint8_t* edid);

int K2V_RHAL_VFE_HDMI_Connect(uint8_t port);
int K2V_RHAL_VFE_HDMI_Disconnect(uint8_t port);
int K2V_RHAL_VFE_HDMI_GetPortTimingInfo(uint8_t port, K2V_HDMI_TIMING_T* timing);

#ifdef __cplusplus
}
static_assert(sizeof(K2V_HDMI_TIMING_T) == 40, "the receiver's timing record");
#endif
