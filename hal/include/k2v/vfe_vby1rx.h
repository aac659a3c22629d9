// V-by-One receiver of the video front end (VFE). Inputs are numbered from 0.
// Every function returns 0 or a failure code.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  K2V_VBY1RX_PORT_COUNT = 3,
};

// The front end's number for this receiver among its timing sources.
enum {
  K2V_VFE_TIMING_SOURCE_VBY1RX = 18,
};

// Received timing; all zero if there is no signal.
typedef struct {
  uint32_t format;          // video identification code (CEA-861), 0 for a timing without one
  uint16_t h_freq;          // line frequency, 0.01 kHz
  uint16_t v_freq;          // field or frame frequency, 0.01 Hz
  uint16_t h_total;         // pixels per line, blanking included
  uint16_t v_total;         // lines per frame, blanking included
  uint16_t h_porch;         // blanking from the sync's leading edge to the first pixel, pixels
  uint16_t v_porch;         // the same vertically, lines
  K2V_VIDEO_RECT_T active;  // active window
  uint16_t scan_type;       // 0 interlaced, 1 progressive
  uint16_t reserved;
} K2V_VBY1RX_TIMING_T;

int K2V_RHAL_VFE_VBY1RX_Initialize(void);

// Ends everything: removes the connection, closes and uninitialises the receiver.
int K2V_RHAL_VFE_VBY1RX_Uninitialize(void);

int K2V_RHAL_VFE_VBY1RX_Open(void);

// Selects the input and passes its picture on; initially input 0 is selected. Another input
// replaces the connected one.
int K2V_RHAL_VFE_VBY1RX_Connect(uint8_t port);

// Returns the timing of the selected input, from initialisation on. `source` is
// K2V_VFE_TIMING_SOURCE_VBY1RX.
int K2V_RHAL_VFE_VBY1RX_GetTimingInfo(K2V_VBY1RX_TIMING_T* timing, uint32_t source);

#ifdef __cplusplus
}
static_assert(sizeof(K2V_VBY1RX_TIMING_T) == 28, "32-bit format, 11 16-bit fields and padding");
#endif
