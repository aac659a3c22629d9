#include "VpqModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "VPQ MURO 0", "testing HAL_VPQ_Initialize", nullptr, true},
    {1, "VPQ MURO 1", "testing HAL_VPQ_Uninitialize", nullptr, true},
    {2, "VPQ MURO 2", "testing HAL_VPQ_Open", nullptr, true},
    {3, "VPQ MURO 3", "testing HAL_VPQ_Close", nullptr, true},
    {4, "VPQ MURO 4", "testing HAL_VPQ_SetPictureCtrl", nullptr, true},
    {5, "VPQ MURO 5", "testing HAL_VPQ_SetColorTemp", nullptr, true},
    {6, "VPQ MURO 6", "testing HAL_VPQ_Setharpness", nullptr, true},
    {7, "VPQ MURO 7", "testing HAL_VPQ_SetEdgeEnhance", nullptr, true},
    {8, "VPQ MURO 8", "testing HAL_VPQ_GeHistoData", nullptr, true},
    {9, "VPQ MURO 9", "testing HAL_VPQ_SetFreshContrast", nullptr, true},
    {10, "VPQ MURO 10", "testing HAL_VPQ_SetFreshContrastLUT", nullptr, true},
    {11, "VPQ MURO 11", "testing HAL_VPQ_InitColorForAdvanced", nullptr, true},
    {12, "VPQ MURO 12", "testing HAL_VPQ_InitColorForExpert", nullptr, true},
    {13, "VPQ MURO 13", "testing HAL_VPQ_SetFreshColor", nullptr, true},
    {14, "VPQ MURO 14", "testing HAL_VPQ_SetPreferredColor", nullptr, true},
    {15, "VPQ MURO 15", "testing HAL_VPQ_SetNoiseReduction", nullptr, true},
    {16, "VPQ MURO 16", "testing HAL_VPQ_SetMpegNoiseReduction", nullptr, true},
    {17, "VPQ MURO 17", "testing HAL_VPQ_SetFilmMode", nullptr, true},
    {18, "VPQ MURO 18", "testing HAL_VPQ_SetBlackLevel", nullptr, true},
    {19, "VPQ MURO 19", "testing HAL_VPQ_SetGammaLUT", nullptr, true},
    {20, "VPQ MURO 20", "testing HAL_VPQ_SetColorGamut", nullptr, true},
    {21, "VPQ MURO 21", "testing HAL_VPQ_SetColorFilter", nullptr, true},
    {22, "VPQ MURO 22", "testing HAL_VPQ_SetColorManagement", nullptr, true},
    {23, "VPQ MURO 23", "testing HAL_VPQ_SetSplitDemo", nullptr, true},
    {24, "VPQ MURO 24", "testing HAL_VPQ_Set3DColorCorrection", nullptr, true},
    {25, "VPQ MURO 25", "testing HAL_VPQ_SetSuperResolution", nullptr, true},
    {26, "VPQ MURO 26", "testing HAL_VPQ_GetMotionLevel", nullptr, true},
    {27, "VPQ MURO 27", "testing HAL_VPQ_GetNoiseLevel", nullptr, true},
    {28, "VPQ MURO 28", "testing HAL_VPQ_SetLowDelayMode", nullptr, true},
    {29, "VPQ MURO 29", "testing HAL_VPQ_GetFreshContrastBypassLUT", nullptr, true},
    {30, "VPQ MURO 30", "testing HAL_VPQ_SetColorGain", nullptr, true},
    {31, "VPQ MURO 31", "testing HAL_VPQ_SetIREInnerPattern", nullptr, true},
    {32, "VPQ MURO 32", "testing HAL_VPQ_SetClearWhite", nullptr, true},
    {33, "VPQ MURO 33", "testing HAL_VPQ_SetSaturationLUT", nullptr, true},
    {34, "VPQ MURO 34", "testing HAL_VPQ_LED_Initialize", nullptr, true},
    {35, "VPQ MURO 35", "testing HAL_VPQ_LED_LDEnable", nullptr, true},
    {36, "VPQ MURO 36", "testing HAL_VPQ_LED_LDSetLUT", nullptr, true},
    {37, "VPQ MURO 37", "testing HAL_VPQ_LED_LDEnablePixelCompensation", nullptr, true},
    {38, "VPQ MURO 38", "testing HAL_VPQ_LED_LDCtrlDemoMode", nullptr, true},
    {39, "VPQ MURO 39", "testing HAL_VPQ_LED_LDCtrlSPI", nullptr, true},
    {40, "VPQ MURO 40", "testing HAL_VPQ_SetRealCinema", nullptr, true},
    {41, "VPQ MURO 41", "testing HAL_VPQ_SetOd", nullptr, true},
    {42, "VPQ MURO 42", "testing HAL_VPQ_SET_DeContour", nullptr, true},
};

}  // namespace

VpqModule::VpqModule() {
  Declare(EN_MURO_VPQ, kVideo, "Vpq Function Test", "for example ****", kTests);
}
