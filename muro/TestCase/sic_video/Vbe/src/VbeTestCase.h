// Display back-end tests. Each takes a scratch buffer, which it ignores, and returns 0 for pass, 1
// for fail.
#pragma once

class VbeTestCase {
 public:
  // Panel and timing controller.
  static int VBE_DISP_Initialize(char*);
  static int VBE_DISP_Full_HD_Fast_Initialize(char*);
  static int VBE_DISP_Uninitialize(char*);
  static int VBE_DISP_Connect(char*);
  static int VBE_DISP_Disconnect(char*);
  static int VBE_DISP_Panel_Attribute_Setting(char*);
  static int VBE_DISP_TCON_Check_EPI_Output(char*);
  static int VBE_DISP_SetLanePower(char*);
  static int VBE_DISP_SetLVDScurrent(char*);
  static int VBE_GetQ7TPanelConfigParameter(char*);

  // Picture on the panel.
  static int VBE_DISP_Mirror(char*);
  static int VBE_DISP_VideoMute(char*);
  static int VBE_DISP_SetDisplayOutput(char*);
  static int VBE_DISP_SetSpreadSpectrum(char*);
  static int VBE_DISP_SetFrameRate(char*);
  static int VBE_DISP_GetOutputFrameRate(char*);
  static int VBE_DISP_SetBackgroundColor(char*);
  static int VBE_DISP_SetPanelBackgroundColor(char*);
  static int VBE_DISP_SetScreenShift(char*);
  static int VBE_DISP_OLED_SETORBIT(char*);

  // 3D formatter.
  static int VBE_TRIDFMT_Initialize(char*);
#define VBE_3D_FORMAT(id, name, format, description) static int VBE_TRIDFMT_##name(char*);
#include "Vbe3dFormats.def"
#undef VBE_3D_FORMAT
  static int VBE_TRIDFMT_Set_3D_Depth(char*);
  static int VBE_TRIDFMT_Set_3D_ViewPoint(char*);
  static int VBE_TRIDFMT_Set_3D_LR_Toggle(char*);
  static int VBE_TRIDFMT_Set_3D_LR_Correction(char*);
  static int VBE_TRIDFMT_Set_3D_Auto_Convergence(char*);

  // HDMI transmitter.
  static int VBE_HDMITX_HdmiConnectionNotify(char*);
};

/// Prints the state of an HDMI transmitter port; the HAL calls it.
void deviceConnectionStatus(bool connected, unsigned portNum);
