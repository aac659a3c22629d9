// Types shared by all families of the board's HAL. Plain C, so that C callers can use them too.
#pragma once

#include <stdint.h>

// Results: 0 is success, everything else a failure. The harness passes codes on unchanged and never
// interprets them; the names below are those that the simulated board returns.
enum {
  K2V_RHAL_OK = 0,
  K2V_RHAL_ERR_FAIL = -1,           // the hardware did not execute it
  K2V_RHAL_ERR_PARAM = -2,          // argument out of range, or a null pointer
  K2V_RHAL_ERR_ORDER = -3,          // called before a required step (initialise, open, connect)
  K2V_RHAL_ERR_ALREADY = -4,        // the step has been executed already
  K2V_RHAL_ERR_BUSY = -5,           // in use by something that has to end first
  K2V_RHAL_ERR_NO_SIGNAL = -6,      // needs a picture, but there is none
  K2V_RHAL_ERR_NOT_SUPPORTED = -7,  // not supported by this chip
};

// Video rectangle, passed by value: x and y form the first 32-bit word, w and h the second.
typedef struct {
  uint16_t x;  // pixels from the left
  uint16_t y;  // lines from the top
  uint16_t w;  // pixels
  uint16_t h;  // lines
} K2V_VIDEO_RECT_T;

// Scaler window.
typedef uint32_t __K2V_VIDEO_WID_T;
enum {
  K2V_VIDEO_WID_0 = 0,  // main
  K2V_VIDEO_WID_1 = 1,  // sub
};

#ifdef __cplusplus
static_assert(sizeof(K2V_VIDEO_RECT_T) == 8, "two 32-bit words");
#endif
