// Scaler tests. Each takes a scratch buffer, which it ignores, and returns 0 for pass, 1 for fail.
#pragma once

#include <cstdint>

#include "k2v/types.h"

/// The part of `region` that is left if `horizontal` and `vertical` percent of it are kept,
/// centred. Negative percentages are computed like any other.
K2V_VIDEO_RECT_T OverScanRegion(K2V_VIDEO_RECT_T region, int16_t horizontal, int16_t vertical);

class VscTestCase {
 public:
  // Overscan and picture-in-picture.
  static int Vsc_OverScan_Check_Chip_Limit(char*);
  static int Vsc_OverScan_Trans_Garbage(char*);
  static int Vsc_OverScan_Check_in_3D_mode(char*);
  static int Vsc_OverScan_PIP(char*);
  static int Vsc_PatternSize_PIP(char*);
  static int Vsc_MuteFun_MuteColorPIP(char*);
  static int Vsc_StillFun_VideoStell(char*);
  static int Vsc_ChgSclaerOutput_By3DFormat(char*);
  static int Vsc_RGB444_RGB444InHDMI(char*);
  static int Vsc_3DPattern_Detect3DMode(char*);
  static int Vsc_3DPattern_During3D_Change(char*);

  // Frame buffers.
  static int Vsc_self_diagnosis_InoutVideo_Freeze(char*);
  static int Vsc_self_diagnosis_InoutVideo_Read(char*);
  static int Vsc_self_diagnosis_InoutVideo_Write(char*);
  static int Vsc_Capture_DataVerify(char*);
  static int Vsc_V2G_DataVerify(char*);

  // Sources, from bring-up to switching; in VscSourceTests.cpp.
  static int Vsc_functionality(char*);
  static int Vsc_SwitchSource_AllSourceRun(char*);
  static int Vsc_FastSwitchSource_ForDemo(char*);
  static int Vsc_ShowOSDSample_ForDemo(char*);
  static int Vsc_LiveZoomfunction(char*);
  static int Vsc_functionality_OnlyMainWin(char*);
  static int Vsc_HDMI_HDR10(char*);
  static int Vsc_SetWinBlank_Sync_memc(char*);

  // One HAL call each.
  static int VSC_Initialize(char*);
  static int VSC_Open(char*);
  static int VSC_Connect(char*);
  static int VSC_SetInputRegion(char*);
  static int VSC_Disconnect(char*);
  static int VSC_SetOutputRegion(char*);
  static int VSC_SetWinBlank(char*);
  static int VSC_GetInputRegion(char*);
  static int VSC_SetHDMI_Preview(char*);
};
