// Gain tables of the colour management, as set by the advanced and expert colour menus of the user
// interface. The menus' settings are kept, so calls accumulate.
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

/// The last settings of the menus: the advanced offset of `index` (0 to 2) and the expert offsets
/// of `region` (0 to 5). Initially zero.
int8_t KeptAdvancedOffset(int8_t index);
ICM_CM_PARAM_T KeptExpertOffsets(uint8_t region);

/// Fills `table` with neutral gains below the master gain `gain` * 80, truncated to 16 bits. Does
/// nothing if `table` is null.
void utility_get_test_cm_gain(CHIP_COLOR_CONTROL_T* table, unsigned char gain);

/// Stores the advanced offset `param`, unless null, and writes `in` with all advanced offsets
/// applied to `out`: six steps of hue per unit. An invalid index is not stored. Does nothing if
/// `in` or `out` is null.
void utility_calc_test_cm_ui_match_gain_adv(ICM_PC_PARAM_T* param, CHIP_COLOR_CONTROL_T* in,
                                            CHIP_COLOR_CONTROL_T* out);

/// Stores the expert offsets `param`, unless null, and writes `in` with all expert offsets applied
/// to `out`: one step per unit. If the region is invalid, `out` is a plain copy. Does nothing if
/// `in` or `out` is null.
void utility_calc_test_cm_ui_match_gain_exp(ICM_CM_PARAM_T* param, CHIP_COLOR_CONTROL_T* in,
                                            CHIP_COLOR_CONTROL_T* out);
