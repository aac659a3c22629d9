#include "VscModule.h"

#include "VscTestCase.h"

namespace {

// No test judges itself: the operator looks at the panel.
constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "Vsc MURO 0", "Check Chip limitation", VscTestCase::Vsc_OverScan_Check_Chip_Limit, false,
     kAsks},
    {1, "Vsc MURO 1", "Transient garbage when OverScan", VscTestCase::Vsc_OverScan_Trans_Garbage,
     false, kAsks},
    {2, "Vsc MURO 2", "Check in 3D mode", VscTestCase::Vsc_OverScan_Check_in_3D_mode, false, kAsks},
    {3, "Vsc MURO 3", "PIP", VscTestCase::Vsc_OverScan_PIP, false},
    {4, "Vsc MURO 4", "Chip limitation & working check in 3D mode PIP",
     VscTestCase::Vsc_PatternSize_PIP, false},
    {5, "Vsc MURO 5", "Mute Color PIP", VscTestCase::Vsc_MuteFun_MuteColorPIP, false, kAsks},
    {6, "Vsc MURO 6", "Video Still on/off", VscTestCase::Vsc_StillFun_VideoStell, false, kAsks},
    {7, "Vsc MURO 7", "Scaler OutPut format change by 3D format",
     VscTestCase::Vsc_ChgSclaerOutput_By3DFormat, false},
    {8, "Vsc MURO 8", "444 mode in HDMI", VscTestCase::Vsc_RGB444_RGB444InHDMI, false, kAsks},
    {9, "Vsc MURO 9", "Return the pattern by detecting Scaler input Video Data",
     VscTestCase::Vsc_3DPattern_Detect3DMode, false},
    {10, "Vsc MURO 10", "pattern recognition of input video during 3D mode",
     VscTestCase::Vsc_3DPattern_During3D_Change, false},
    {11, "Vsc MURO 11", "Check Front module by ADC,HDMI,CVD input Video freeze",
     VscTestCase::Vsc_self_diagnosis_InoutVideo_Freeze, false, kAsks},
    {12, "Vsc MURO 12", "Check Front module by ADC,HDMI,CVD input Video read",
     VscTestCase::Vsc_self_diagnosis_InoutVideo_Read, false, kAsks},
    {13, "Vsc MURO 13", "Check Front module by ADC,HDMI,CVD input Video write",
     VscTestCase::Vsc_self_diagnosis_InoutVideo_Write, false, kAsks},
    {14, "Vsc MURO 14", "Data verify after read Scaler Video", VscTestCase::Vsc_Capture_DataVerify,
     false, kAsks},
    {15, "Vsc MURO 15", "V2G Data verify after read Scaler Video", VscTestCase::Vsc_V2G_DataVerify,
     false},
    {16, "Vsc MURO 16", "input/output", VscTestCase::Vsc_functionality, false, kAsks},
    {17, "Vsc MURO 17", "working in each input", VscTestCase::Vsc_functionality, false, kAsks},
    {18, "Vsc MURO 18", "Check scaler output when resolution change",
     VscTestCase::Vsc_functionality, false, kAsks},
    {19, "Vsc MURO 19", "check in fast motion video", VscTestCase::Vsc_functionality, false, kAsks},
    {20, "Vsc MURO 20", "Check Deinter in interlace", VscTestCase::Vsc_functionality, false, kAsks},
    {21, "Vsc MURO 21", "check Filim Mode contents", VscTestCase::Vsc_functionality, false, kAsks},
    {22, "Vsc MURO 22", "check output by Encoder", VscTestCase::Vsc_functionality, false, kAsks},
    {23, "Vsc MURO 23", "FreeRun mode", VscTestCase::Vsc_functionality, false, kAsks},
    {24, "Vsc MURO 24", "Vsc_SwitchSource_AllSourceRun", VscTestCase::Vsc_SwitchSource_AllSourceRun,
     false, kAsks},
    {25, "Vsc MURO 25", "Vsc_FastSwitchSource_ForDemo", VscTestCase::Vsc_FastSwitchSource_ForDemo,
     false, kAsks},
    {26, "Vsc MURO 26", "Vsc_ShowOSDSample_ForDemo", VscTestCase::Vsc_ShowOSDSample_ForDemo, false,
     kAsks},
    {27, "Vsc MURO 27", "LiveZoom Function Test", VscTestCase::Vsc_LiveZoomfunction, false, kAsks},
    {28, "Vsc MURO 28", "input/output(only main win case)",
     VscTestCase::Vsc_functionality_OnlyMainWin, false, kAsks},
    {29, "Vsc MURO 29", "HDMI HDR10 Test", VscTestCase::Vsc_HDMI_HDR10, false},
    {30, "Vsc MURO 30", "SetWinBlank_Sync_memc_test", VscTestCase::Vsc_SetWinBlank_Sync_memc,
     false},
    {31, "Vsc MURO 31", "K2V_RHAL_VSC_Initialize (31)", VscTestCase::VSC_Initialize, false},
    {32, "Vsc MURO 32", "K2V_RHAL_VSC_Open (32)", VscTestCase::VSC_Open, false},
    {33, "Vsc MURO 33", "K2V_RHAL_VSC_Connect (33)", VscTestCase::VSC_Connect, false, kAsks},
    {34, "Vsc MURO 34", "K2V_RHAL_VSC_SetInputRegion (34)", VscTestCase::VSC_SetInputRegion, false,
     kAsks},
    {35, "Vsc MURO 35", "K2V_RHAL_VSC_Disconnect (35)", VscTestCase::VSC_Disconnect, false, kAsks},
    {36, "Vsc MURO 36", "K2V_RHAL_VSC_SetOutputRegion (36)", VscTestCase::VSC_SetOutputRegion,
     false, kAsks},
    {37, "Vsc MURO 37", "K2V_RHAL_VSC_SetWinBlank (37)", VscTestCase::VSC_SetWinBlank, false,
     kAsks},
    {38, "Vsc MURO 38", "K2V_RHAL_VSC_GetInputRegion (38)", VscTestCase::VSC_GetInputRegion, false},
    {39, "Vsc MURO 39", "K2V_RHAL_VSC_SetHDMI_Preview (38)", VscTestCase::VSC_SetHDMI_Preview,
     false, kAsks},
};

}  // namespace

VscModule::VscModule() {
  Declare(EN_MURO_VSC, kVideo, "Vsc Function Test", "for example ****", kTests);
}
