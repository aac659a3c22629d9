#include "VbeModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "VBE_DISP MURO", "VBE_Disp Initial", nullptr, true},
    {1, "VBE_DISP MURO", "VBE_Disp Connect", nullptr, true},
    {2, "VBE_DISP MURO", "Mirror function", nullptr, true},
    {3, "VBE_DISP MURO", "Panel attribute setting", nullptr, true},
    {4, "VBE_TCON MURO", "checking EPI output", nullptr, true},
    {5, "VBE_DISP MURO", "VIDEO Mute", nullptr, true},
    {6, "VBE_TRIDFMT MURO", "VBE_TRIDFMT_Initialize", nullptr, true},
    {7, "VBE_TRIDFMT MURO", "2Dto3D in 2D video", nullptr, true},
    {8, "VBE_TRIDFMT MURO", "video of 3D from 3D side by side", nullptr, true},
    {9, "VBE_TRIDFMT MURO", "video of 3D from 3D top and bottom", nullptr, true},
    {10, "VBE_TRIDFMT MURO", "video of 3D from 3D field alternative", nullptr, true},
    {11, "VBE_TRIDFMT MURO", "video of 3D from 3D check board", nullptr, true},
    {12, "VBE_TRIDFMT MURO", "video of 3D from 3D line interleave", nullptr, true},
    {13, "VBE_TRIDFMT MURO", "video of 3D from 3D column interleave", nullptr, true},
    {14, "VBE_TRIDFMT MURO", "video of 3D from 3D frame packing", nullptr, true},
    {15, "VBE_TRIDFMT MURO", "video of 3D from 3D frame sequential", nullptr, true},
    {16, "VBE_TRIDFMT MURO", "video of 3D from 3D line alternative", nullptr, true},
    {17, "VBE_TRIDFMT MURO", "video of 3D from 3D side by side full", nullptr, true},
    {18, "VBE_TRIDFMT MURO", "video of 3D from 3D dual stream", nullptr, true},
    {19, "VBE_TRIDFMT MURO", "3D Off", nullptr, true},
    {20, "VBE_TRIDFMT MURO", "checking the Depth of 3D / 2Dto3D", nullptr, true},
    {21, "VBE_TRIDFMT MURO", "checking the View point of 3D / 2Dto3D", nullptr, true},
    {22, "VBE_TRIDFMT MURO", "checking the L/R Swap of 3D / 2Dto3D", nullptr, true},
    {23, "VBE_TRIDFMT MURO", "checking the L/R Correction of 3D", nullptr, true},
    {24, "VBE_TRIDFMT MURO", "Black bar in left/right at changing the view point", nullptr, true},
    {25, "VBE_TRIDFMT MURO", "Black bar in left/right at changing the depth", nullptr, true},
    {26, "VBE_TRIDFMT MURO", "checking the Auto convergence", nullptr, true},
    {27, "VBE_TCON MURO", "Full HD Panel Fast Init", nullptr, true},
    {28, "VBE_TCON MURO", "VBE_Disp Uninitialize", nullptr, true},
    {29, "VBE_TCON MURO", "VBE_Disp DisConnect", nullptr, true},
    {30, "VBE_TCON MURO", "VBE_Disp Display Output", nullptr, true},
    {31, "VBE_TCON MURO", "VBE_Disp SpreadSpectrum", nullptr, true},
    {32, "VBE_TCON MURO", "VBE_Disp Set FrameRate", nullptr, true},
    {33, "VBE_TCON MURO", "VBE_Disp Get OutputFrameRate", nullptr, true},
    {34, "VBE_TCON MURO", "VBE_Disp BackgroundColor", nullptr, true},
    {35, "VBE_TCON MURO", "VBE_Disp SetPanelBackgroundColor", nullptr, true},
    {36, "VBE_DISP MURO", "VBE_Disp Set Screen Shift", nullptr, true},
    {37, "VBE_DISP MURO", "VBE_Disp Set Lane power", nullptr, true},
    {38, "VBE_TCON MURO", "VBE_Disp SetLVDSCurrent", nullptr, true},
    {39, "VBE_HDMITX MURO", "VBE_Hdmitx Initialize", nullptr, true},
    {40, "VBE_DISP MURO", "VBE_SetOrbit", nullptr, true},
    {41, "VBE_DISP MURO", "VBE_GetQ7TPanelConfigParameter", nullptr, true},
};

}  // namespace

VbeModule::VbeModule() {
  Declare(EN_MURO_VBE, kVideo, "Vbe Function Test", "for example ****", kTests);
}
