#include "VbeModule.h"

#include "VbeTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "VBE_DISP MURO", "VBE_Disp Initial", VbeTestCase::VBE_DISP_Initialize, true, kAsks},
    {1, "VBE_DISP MURO", "VBE_Disp Connect", VbeTestCase::VBE_DISP_Connect, true},
    {2, "VBE_DISP MURO", "Mirror function", VbeTestCase::VBE_DISP_Mirror, true, kAsks},
    {3, "VBE_DISP MURO", "Panel attribute setting", VbeTestCase::VBE_DISP_Panel_Attribute_Setting,
     true, kAsks},
    {4, "VBE_TCON MURO", "checking EPI output", VbeTestCase::VBE_DISP_TCON_Check_EPI_Output, true,
     kAsks},
    {5, "VBE_DISP MURO", "VIDEO Mute", VbeTestCase::VBE_DISP_VideoMute, true, kAsks},
    {6, "VBE_TRIDFMT MURO", "VBE_TRIDFMT_Initialize", VbeTestCase::VBE_TRIDFMT_Initialize, true},
#define VBE_3D_FORMAT(id, name, format, description) \
  {id, "VBE_TRIDFMT MURO", description, VbeTestCase::VBE_TRIDFMT_##name, true},
#include "Vbe3dFormats.def"
#undef VBE_3D_FORMAT
    {20, "VBE_TRIDFMT MURO", "checking the Depth of 3D / 2Dto3D",
     VbeTestCase::VBE_TRIDFMT_Set_3D_Depth, true, kAsks},
    {21, "VBE_TRIDFMT MURO", "checking the View point of 3D / 2Dto3D",
     VbeTestCase::VBE_TRIDFMT_Set_3D_ViewPoint, true, kAsks},
    {22, "VBE_TRIDFMT MURO", "checking the L/R Swap of 3D / 2Dto3D",
     VbeTestCase::VBE_TRIDFMT_Set_3D_LR_Toggle, true, kAsks},
    {23, "VBE_TRIDFMT MURO", "checking the L/R Correction of 3D",
     VbeTestCase::VBE_TRIDFMT_Set_3D_LR_Correction, true, kAsks},
    {24, "VBE_TRIDFMT MURO", "Black bar in left/right at changing the view point",
     VbeTestCase::VBE_TRIDFMT_Set_3D_ViewPoint, true, kAsks},
    {25, "VBE_TRIDFMT MURO", "Black bar in left/right at changing the depth",
     VbeTestCase::VBE_TRIDFMT_Set_3D_Depth, true, kAsks},
    {26, "VBE_TRIDFMT MURO", "checking the Auto convergence",
     VbeTestCase::VBE_TRIDFMT_Set_3D_Auto_Convergence, true, kAsks},
    {27, "VBE_TCON MURO", "Full HD Panel Fast Init", VbeTestCase::VBE_DISP_Full_HD_Fast_Initialize,
     true},
    {28, "VBE_TCON MURO", "VBE_Disp Uninitialize", VbeTestCase::VBE_DISP_Uninitialize, true},
    {29, "VBE_TCON MURO", "VBE_Disp DisConnect", VbeTestCase::VBE_DISP_Disconnect, true},
    {30, "VBE_TCON MURO", "VBE_Disp Display Output", VbeTestCase::VBE_DISP_SetDisplayOutput, true,
     kAsks},
    {31, "VBE_TCON MURO", "VBE_Disp SpreadSpectrum", VbeTestCase::VBE_DISP_SetSpreadSpectrum, true,
     kAsks},
    {32, "VBE_TCON MURO", "VBE_Disp Set FrameRate", VbeTestCase::VBE_DISP_SetFrameRate, true,
     kAsks},
    {33, "VBE_TCON MURO", "VBE_Disp Get OutputFrameRate", VbeTestCase::VBE_DISP_GetOutputFrameRate,
     true},
    {34, "VBE_TCON MURO", "VBE_Disp BackgroundColor", VbeTestCase::VBE_DISP_SetBackgroundColor,
     true, kAsks},
    {35, "VBE_TCON MURO", "VBE_Disp SetPanelBackgroundColor",
     VbeTestCase::VBE_DISP_SetPanelBackgroundColor, true, kAsks},
    {36, "VBE_DISP MURO", "VBE_Disp Set Screen Shift", VbeTestCase::VBE_DISP_SetScreenShift, true,
     kAsks},
    {37, "VBE_DISP MURO", "VBE_Disp Set Lane power", VbeTestCase::VBE_DISP_SetLanePower, true},
    {38, "VBE_TCON MURO", "VBE_Disp SetLVDSCurrent", VbeTestCase::VBE_DISP_SetLVDScurrent, true},
    {39, "VBE_HDMITX MURO", "VBE_Hdmitx Initialize", VbeTestCase::VBE_HDMITX_HdmiConnectionNotify,
     true},
    {40, "VBE_DISP MURO", "VBE_SetOrbit", VbeTestCase::VBE_DISP_OLED_SETORBIT, true, kAsks},
    {41, "VBE_DISP MURO", "VBE_GetQ7TPanelConfigParameter",
     VbeTestCase::VBE_GetQ7TPanelConfigParameter, true},
};

}  // namespace

VbeModule::VbeModule() {
  Declare(EN_MURO_VBE, kVideo, "Vbe Function Test", "for example ****", kTests);
}
