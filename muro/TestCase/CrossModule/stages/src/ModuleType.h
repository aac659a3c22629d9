// The stages of the media pipeline whose drivers write dumps, one bit each.
#pragma once

#include <cstdint>

enum MODULE_TYPE : int32_t {
  MODULE_OMXIN = 1,
  MODULE_OMXOUT = 2,
  MODULE_VDEC = 4,
  MODULE_DVO = 8,
  MODULE_VO = 16,
  MODULE_SCALER = 32,
  MODULE_AUDIO = 128,
};

inline constexpr MODULE_TYPE kAllModules[] = {MODULE_OMXIN, MODULE_OMXOUT, MODULE_VDEC, MODULE_DVO,
                                              MODULE_VO,    MODULE_SCALER, MODULE_AUDIO};

/// The stage's name in brackets for aligned tables, such as "[VDEC]  "; "[other] " for anything
/// else.
const char* Module_Type_To_String(MODULE_TYPE module);

/// The stage's plain name for file names, such as "VDEC"; "[other]" for anything else.
const char* Module_Type_To_String_Simple(MODULE_TYPE module);
