// Gain tables of the colour management, as the user interface's advanced and expert colour menus
// would set them. What the menus were set to is kept, so calls accumulate.
#pragma once

#include <cstdint>

#include "k2v/vpq.h"

/// A choice of the advanced colour menu.
struct ICM_PC_PARAM_T {
  int8_t index;   // 0 to 2
  uint8_t value;  // offset, read as a signed number
};

inline constexpr unsigned kExpertRegionCount = 6;

/// A choice of the expert colour menu.
struct ICM_CM_PARAM_T {
  uint8_t region;  // 0 to 5
  int8_t saturation;
  int8_t hue;
  int8_t brightness;
};

/// What the menus were set to last: the advanced offset of `index` (0 to 2) and the expert offsets
/// of `region` (0 to 5). Zero at start.
int8_t KeptAdvancedOffset(int8_t index);
ICM_CM_PARAM_T KeptExpertOffsets(uint8_t region);

/// Fills `table` with neutral gains below the master gain `gain` * 80, cut to 16 bits. A null table
/// does nothing.
void utility_get_test_cm_gain(CHIP_COLOR_CONTROL_T* table, unsigned char gain);

/// Keeps the advanced offset `param`, when there is one, and writes `in` with all advanced offsets
/// applied to `out`: six steps of hue a unit. An index that is none is not kept. Without `in` or
/// `out` nothing is done.
void utility_calc_test_cm_ui_match_gain_adv(ICM_PC_PARAM_T* param, CHIP_COLOR_CONTROL_T* in,
                                            CHIP_COLOR_CONTROL_T* out);

/// Keeps the expert offsets `param`, when there are any, and writes `in` with all expert offsets
/// applied to `out`: one step a unit. With a region that is none, `out` is a plain copy. Without
/// `in` or `out` nothing is done.
void utility_calc_test_cm_ui_match_gain_exp(ICM_CM_PARAM_T* param, CHIP_COLOR_CONTROL_T* in,
                                            CHIP_COLOR_CONTROL_T* out);
