// Colour management of the picture quality (VPQ): the gain table that the HAL takes.
#pragma once

#include "k2v/types.h"

enum {
  K2V_VPQ_COLOR_REGIONS = 9,
};

// Gains of one colour region; 128 leaves the colour as it is.
typedef struct {
  uint16_t nMasterGain;     // of the three gains below
  uint8_t nHueGain;         // 0 to 255
  uint8_t nSaturationGain;  // 0 to 255
  uint8_t nBrightnessGain;  // 0 to 255
  uint8_t nOffset;          // 0 to 255
} CHIP_COLOR_CONTROL_ENTRY_T;

typedef struct {
  CHIP_COLOR_CONTROL_ENTRY_T stRegion[K2V_VPQ_COLOR_REGIONS];
} CHIP_COLOR_CONTROL_T;

#ifdef __cplusplus
static_assert(sizeof(CHIP_COLOR_CONTROL_T) == 54, "nine entries of six bytes");
#endif
