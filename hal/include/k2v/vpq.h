// Picture quality (VPQ, and its extension VPQEX): picture controls, colour, motion compensation,
// LED backlight, HDR, panel tables. Every function returns 0 or a failure code; numbers after a
// function are the valid values of its arguments. Text is written to a buffer of
// K2V_VPQ_TEXT_BYTES.
#pragma once

#include "k2v/types.h"
#include "k2v/vpq_records.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  K2V_VPQ_TEXT_BYTES = 128,
  K2V_VPQ_COLOR_REGIONS = 9,
};

// Gains of one colour region; 128 leaves the colour unchanged.
typedef struct {
  uint16_t nMasterGain;
  uint8_t nHueGain;
  uint8_t nSaturationGain;
  uint8_t nBrightnessGain;
  uint8_t nOffset;
} CHIP_COLOR_CONTROL_ENTRY_T;

typedef struct {
  CHIP_COLOR_CONTROL_ENTRY_T stRegion[K2V_VPQ_COLOR_REGIONS];
} CHIP_COLOR_CONTROL_T;

// Start-up and shutdown. Initialise before open, open before close.
int K2V_RHAL_VPQEX_Init(void);
int K2V_RHAL_VPQEX_Uninit(void);
int K2V_RHAL_VPQEX_Open(void);
int K2V_RHAL_VPQEX_Close(void);
int K2V_RHAL_VPQ_Initialize(void);
int K2V_RHAL_VPQ_Uninitialize(void);
int K2V_RHAL_VPQ_Open(void);
int K2V_RHAL_VPQ_Close(void);

// Motion estimation and compensation (MEMC).
int K2V_RHAL_VPQ_MEMC_Initialize(void);
int K2V_RHAL_VPQ_MEMC_Uninitialize(void);
int K2V_RHAL_VPQ_MEMC_SetBlurLevel(int32_t value);                    // 0 to 255
int K2V_RHAL_VPQ_MEMC_setLevel(int32_t value);                        // 0 to 255
int K2V_RHAL_VPQ_MEMC_SetJudderLevel(int32_t value);                  // 0 to 255
int K2V_RHAL_VPQ_MEMC_SetMotionComp(int32_t nBlur, int32_t nJudder);  // 0 to 10, 0 to 10
int K2V_RHAL_VPQ_MEMC_MotionCompOnOff(int32_t value);                 // 0 to 5
int K2V_RHAL_VPQ_MEMC_LowDelayMode(int32_t value);                    // 0 to 1
int K2V_RHAL_VPQ_MEMC_Force24to48(int32_t bEnable);                   // 0 to 1
int K2V_RHAL_VPQ_MEMC_SetRGBYUVMode(int32_t eMode);                   // 0 to 1
int K2V_RHAL_VPQ_MEMC_SetVideoBlock(int32_t x, int32_t y, int32_t w,
                                    int32_t h);  // 0 to 3839, 0 to 2159, 0 to 3840, 0 to 2160
int K2V_RHAL_VPQ_MEMC_SetBypassRegion(
    int32_t nRegion, int32_t x, int32_t y, int32_t w,
    int32_t h);  // 0 to 3, 0 to 3839, 0 to 2159, 0 to 3840, 0 to 2160
int K2V_RHAL_VPQ_MEMC_Freeze(int32_t bFreeze);                         // 0 to 1
int K2V_RHAL_VPQ_MEMC_SetDemoBar(int32_t bEnable, int32_t nPosition);  // 0 to 1, 0 to 3839
int K2V_RHAL_VPQ_MEMC_SetTrueMotionDemo(int32_t value);                // 0 to 1
int K2V_RHAL_VPQ_MEMC_SetReverseControl(int32_t value);                // 0 to 255
int K2V_RHAL_VPQ_MEMC_GetFrameDelay(int32_t* value);
int K2V_RHAL_VPQ_MEMC_GetFirmwareVersion(char* version);
int K2V_RHAL_VPQ_MEMC_DEBUG(void);

// LED backlight: local dimming (LD), HDR and wide colour gamut (WCG).
int K2V_RHAL_VPQ_LED_Initialize(int32_t ePanel, int32_t eBar);  // 0 to 3, 0 to 15
int K2V_RHAL_VPQ_LED_Uninitialize(void);
int K2V_RHAL_VPQ_LED_LDEnable(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_LED_LDSetLUT(int32_t value);  // 0 to 255
int K2V_RHAL_VPQ_LED_LDSetDBLUT(K2V_VPQ_LED_DB_LUT_T* record);
int K2V_RHAL_VPQ_LED_LDEnablePixelCompensation(int32_t value);      // 0 to 1
int K2V_RHAL_VPQ_LED_LDCtrlDemoMode(int32_t eMode, int32_t bCtrl);  // 0 to 3, 0 to 1
int K2V_RHAL_VPQ_LED_LDCtrlSPI(int32_t bCtrl);                      // 0 to 1
int K2V_RHAL_VPQ_LED_LDSetClippingValue(int32_t value);             // 0 to 255
int K2V_RHAL_VPQ_LED_LDSetClearPlus(int32_t value);                 // 0 to 1
int K2V_RHAL_VPQ_LED_LDCtrlStoreDimmingLuxUp(int32_t value);        // 0 to 1
int K2V_RHAL_VPQ_LED_LDSetLedPKGControl(int32_t value);             // 0 to 1
int K2V_RHAL_VPQ_LED_LDGetFirmwareVersion(char* version);
int K2V_RHAL_VPQ_LED_LDGetAPL(int32_t* value);
int K2V_RHAL_VPQ_LED_HDRInitialize(void);
int K2V_RHAL_VPQ_LED_HDRSetMode(int32_t value);                // 0 to 255
int K2V_RHAL_VPQ_LED_HDRSetDECMode(int32_t value);             // 0 to 255
int K2V_RHAL_VPQ_LED_HDRBypassMode(int32_t value);             // 0 to 1
int K2V_RHAL_VPQ_LED_HDRBypassInternalControl(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_LED_HDRSetSceneChange(int32_t value);         // 0 to 1
int K2V_RHAL_VPQ_LED_HDRCtrlStoreMode(int32_t value);          // 0 to 1
int K2V_RHAL_VPQ_LED_HDRGetFirmwareVersion(char* version);
int K2V_RHAL_VPQ_LED_WCGInitialize(int32_t ePanel);  // 0 to 3
int K2V_RHAL_VPQ_LED_WCGEnable(int32_t value);       // 0 to 1
int K2V_RHAL_VPQ_LED_WCGSetMode(int32_t value);      // 0 to 255
int K2V_RHAL_VPQ_LED_WCGBypassMode(int32_t value);   // 0 to 1
int K2V_RHAL_VPQ_LED_WCGSetLUT(int32_t value);       // 0 to 255
int K2V_RHAL_VPQ_LED_WCGGetFirmwareVersion(char* version);
int K2V_RHAL_VPQ_LED_Debug(void);

// Global dynamic backlight control (GDBC).
int K2V_RHAL_VPQEX_GDBC_Get_Mode(int32_t* value);
int K2V_RHAL_VPQEX_GDBC_Set_Mode(int32_t eMode);  // 0 to 3
int K2V_RHAL_VPQEX_GDBC_Get_DCR_BackLight(int32_t* value);
int K2V_RHAL_VPQEX_GDBC_Set_UI_DCR_BackLight(int32_t value);  // 0 to 100

// HDR and Dolby.
int K2V_RHAL_VPQ_GetSrcHdrInfo(K2V_VPQ_SRC_HDR_INFO_T* record);
int K2V_RHAL_VPQ_GetSDR2HDR(int32_t* value);
int K2V_RHAL_VPQ_SetSDR2HDR(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_GetHdrType(int32_t* value);
int K2V_RHAL_VPQ_SetDciType(int32_t value);  // 0 to 255
int K2V_RHAL_VPQ_GetDolbyHdrPicMode(int32_t* value);
int K2V_RHAL_VPQ_SetDolbyHdrPicMode(int32_t value);  // 0 to 5
int K2V_RHAL_VPQ_GetHdr10Enable(int32_t* value);
int K2V_RHAL_VPQ_SetHdr10Enable(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_GetDOLBYHDREnable(int32_t* value);
int K2V_RHAL_VPQ_SetDOLBYHDREnable(int32_t value);       // 0 to 1
int K2V_RHAL_VPQ_SetDreampanelLogEnable(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_GetDreampanelBackLight(int32_t* value);
int K2V_RHAL_VPQ_SetDreampanelBackLight(int32_t value);  // 0 to 100
int K2V_RHAL_VPQEX_SetHDRForceMode(int32_t value);       // 0 to 2
int K2V_RHAL_VPQEX_SetCurve4HDR(K2V_VPQ_HDR_CURVE_T* record);
int K2V_RHAL_VPQEX_GetHDRDolbyStatus(K2V_VPQ_HDR_STATUS_T* record);
int K2V_RHAL_VPQ_SetHDRGamutMatrix(K2V_VPQ_HDR_GAMUT_MATRIX_T* record);
int K2V_RHAL_VPQ_SetHDR3DLUT(K2V_VPQ_HDR_3D_LUT_T* record);
int K2V_RHAL_VPQ_SetHDREotf(K2V_VPQ_HDR_CURVE_T* record);
int K2V_RHAL_VPQ_SetHDROetf(K2V_VPQ_HDR_CURVE_T* record);
int K2V_RHAL_VPQ_HDR_GetPicInfo(K2V_VPQ_HDR_PIC_INFO_T* record);
int K2V_RHAL_VPQ_HDR_SetDemoMode(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_HDR_SetLUT(K2V_VPQ_HDR_3D_LUT_T* record);
int K2V_RHAL_VPQ_InitDolbyPictureConfig(K2V_VPQ_DOLBY_CONFIG_T* record);
int K2V_RHAL_VPQ_SetDolbyPictureMode(int32_t eMode);       // 0 to 5
int K2V_RHAL_VPQ_SetDolbyBackLight(int32_t nBackLight);    // 0 to 100
int K2V_RHAL_VPQ_SetDolbyBrightness(int32_t nBrightness);  // 0 to 100
int K2V_RHAL_VPQ_SetDolbyColor(int32_t nColor);            // 0 to 100
int K2V_RHAL_VPQ_SetDolbyTuningMode(int32_t eMode);        // 0 to 3
int K2V_RHAL_VPQ_GetDolbySWVersion(char* version);
int K2V_RHAL_VPQ_SetDolbyContrast(int32_t nContrast);  // 0 to 100

// Engineering menu and debugging.
int K2V_RHAL_VPQ_GetPQModule(K2V_VPQ_MODULE_T* record);
int K2V_RHAL_VPQ_SetPQModule(K2V_VPQ_MODULE_T* record);
int K2V_RHAL_VPQ_SetDemo(K2V_VPQ_DEMO_T* record);
int K2V_RHAL_VPQ_GetDebugMode(int32_t* value);
int K2V_RHAL_VPQ_SetDebugMode(int32_t value);           // 0 to 1
int K2V_RHAL_VPQ_SetBlackPatternOutput(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_SetWhitePatternOutput(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_SetODReadEnable(int32_t value);        // 0 to 1
int K2V_RHAL_VPQEX_SetPQBypassLv(int32_t value);        // 0 to 9
int K2V_RHAL_VPQ_GetENGMENU(K2V_VPQ_ENG_MENU_T* record);
int K2V_RHAL_VPQ_GetENGMENU_size(int32_t* value);
int K2V_RHAL_VPQ_GetENG_ID(K2V_VPQ_ENG_ID_T* record);
int K2V_RHAL_VPQ_SetENG_ID(K2V_VPQ_ENG_ID_T* record);
int K2V_RHAL_VPQ_SetHigh_Light_Window_forDemo(K2V_VPQ_HIGHLIGHT_WINDOW_T* record);
int K2V_RHAL_VPQ_SET_INTERNAL_PARTTEN_1W(int32_t bEnable, int32_t nWhite);  // 0 to 1, 0 to 1023
int K2V_RHAL_VPQ_GetENG_TWOLAYER_MENU(K2V_VPQ_ENG_MENU_T* record);
int K2V_RHAL_VPQ_GetENG_TWOLAYER_ID(K2V_VPQ_ENG_TWO_LAYER_ID_T* record);
int K2V_RHAL_VPQ_SetENG_TWOLAYER_ID(int32_t nLayer, int32_t nId,
                                    int32_t nValue);  // 0 to 7, 0 to 15, 0 to 1023
int K2V_RHAL_VPQ_SetSplitDemo(int32_t value);         // 0 to 1
int K2V_RHAL_VPQ_SetIREInnerPattern(int32_t bOnOff, int32_t nRed, int32_t nGreen,
                                    int32_t nBlue);  // 0 to 1, 0 to 1023, 0 to 1023, 0 to 1023
int K2V_RHAL_VPQEX_GetDataAccess(K2V_VPQ_DATA_ACCESS_T* record);

// Content of the source.
int K2V_RHAL_VPQ_GetHistogram(K2V_VPQ_HISTOGRAM_T* record);
int K2V_RHAL_VPQEX_GetCurSource(int32_t* value);
int K2V_RHAL_VPQEX_SetCurSource(int32_t value);  // 0 to 4
int K2V_RHAL_VPQ_GetHistoData_APL(int32_t* value);
int K2V_RHAL_VPQEX_GetPixelinfo(K2V_VPQ_PIXEL_INFO_T* record);
int K2V_RHAL_VPQ_GetHistoData(K2V_VPQ_HISTOGRAM_T* record);
int K2V_RHAL_VPQ_GetNoiseLevel(int32_t* value);
int K2V_RHAL_VPQ_GetMotionLevel(int32_t* value);
int K2V_RHAL_VPQ_GetSrcAplInfo(K2V_VPQ_SRC_APL_INFO_T* record);
int K2V_RHAL_VPQ_GetApl(int32_t* value);

// Panel tables.
int K2V_RHAL_VPQEX_AutoLoadPanelTables(void);
int K2V_RHAL_VPQEX_LoadOnePanelTables(const char* name);
int K2V_RHAL_VPQEX_GetPanelPqPath(char* path);
int K2V_RHAL_VPQEX_GetPanelPqName(char* name);
int K2V_RHAL_VPQEX_SetLCTable(K2V_VPQ_LOCAL_CONTRAST_TABLE_T* record);

// Colour temperature.
int K2V_RHAL_VPQ_GetColorTemp(K2V_VPQ_COLOR_TEMP_T* record);
int K2V_RHAL_VPQ_SetColorTemp(K2V_VPQ_COLOR_TEMP_T* record);
int K2V_RHAL_VPQ_SetColorTempExtend(K2V_VPQ_COLOR_TEMP_EXTEND_T* record);
int K2V_RHAL_VPQ_GetColorTempLevel(int32_t* value);
int K2V_RHAL_VPQ_SetColorTempLevel(int32_t value);  // 0 to 5
int K2V_RHAL_VPQEX_notifyPlatformColorTemp(K2V_VPQ_COLOR_TEMP_EXTEND_T* record);
int K2V_RHAL_VPQ_GetColorTempGainOffset(K2V_VPQ_COLOR_TEMP_EXTEND_T* record);
int K2V_RHAL_VPQ_SetColorTempRedGain(int32_t value);      // 0 to 1023
int K2V_RHAL_VPQ_SetColorTempGreenGain(int32_t value);    // 0 to 1023
int K2V_RHAL_VPQ_SetColorTempBlueGain(int32_t value);     // 0 to 1023
int K2V_RHAL_VPQ_SetColorTempRedOffset(int32_t value);    // 0 to 1023
int K2V_RHAL_VPQ_SetColorTempGreenOffset(int32_t value);  // 0 to 1023
int K2V_RHAL_VPQ_SetColorTempBlueOffset(int32_t value);   // 0 to 1023
int K2V_RHAL_VPQ_ResetCurColorTempData(void);
int K2V_RHAL_VPQEX_GetMagicColorTempByIndex(K2V_VPQ_MAGIC_COLOR_TEMP_T* record);
int K2V_RHAL_VPQEX_SetMagicColorTempOffset(
    int32_t nIndex, int32_t nRed, int32_t nGreen,
    int32_t nBlue);  // 0 to 9, -128 to 127, -128 to 127, -128 to 127
int K2V_RHAL_VPQ_SetColorTemperature(K2V_VPQ_COLOR_TEMPERATURE_T* record);

// Gamma and transfer functions.
int K2V_RHAL_VPQ_GetGammaNum(int32_t* value);
int K2V_RHAL_VPQ_SetGamma(int32_t value);  // 0 to 9
int K2V_RHAL_VPQEX_GetSGamma(int32_t* value);
int K2V_RHAL_VPQEX_SetSGamma(int32_t value);    // -3 to 3
int K2V_RHAL_VPQ_SetGammaLevel(int32_t value);  // 0 to 3
int K2V_RHAL_VPQEX_SetGammaCurve(K2V_VPQ_GAMMA_CURVE_T* record);
int K2V_RHAL_VPQ_SetMagicGamma_QN771(K2V_VPQ_GAMMA_CURVE_T* record);
int K2V_RHAL_VPQ_SetBRIGHTNESS_LUT_EOTF(K2V_VPQ_BRIGHTNESS_LUT_T* record);
int K2V_RHAL_VPQ_DeGammaLUT(K2V_VPQ_GAMMA_LUT_T* record);
int K2V_RHAL_VPQ_SetGammaLUT(K2V_VPQ_GAMMA_LUT_T* record);
int K2V_RHAL_VPQ_InvGammaEn(int32_t value);              // 0 to 1
int K2V_RHAL_VPQEX_SetOutputGammaSCurve(int32_t value);  // 0 to 1

// Colour, gamut and colour management.
int K2V_RHAL_VPQ_GetSaturation(int32_t* value);
int K2V_RHAL_VPQ_SetSaturation(int32_t nSaturation);  // 0 to 100
int K2V_RHAL_VPQ_GetHue(int32_t* value);
int K2V_RHAL_VPQ_SetHue(int32_t value);  // 0 to 100
int K2V_RHAL_VPQ_GetColorGain(int32_t* value);
int K2V_RHAL_VPQ_SetColorGain(int32_t nRed, int32_t nGreen,
                              int32_t nBlue);        // 0 to 1023, 0 to 1023, 0 to 1023
int K2V_RHAL_VPQ_SetColorGainExtend(int32_t value);  // 0 to 100
int K2V_RHAL_VPQ_GetFleshTone(int32_t* value);
int K2V_RHAL_VPQ_SetFleshTone(int32_t value);  // 0 to 5
int K2V_RHAL_VPQEX_GetLiveColour(int32_t* value);
int K2V_RHAL_VPQEX_SetLiveColour(int32_t value);  // 0 to 5
int K2V_RHAL_VPQ_GetColorFacOSDMap(K2V_VPQ_COLOR_OSD_MAP_T* record);
int K2V_RHAL_VPQ_SetColorFacOSDMap(int32_t eItem, int32_t nPoint,
                                   int32_t nValue);  // 0 to 4, 0 to 10, 0 to 1023
int K2V_RHAL_VPQ_SetColorFacOSDMapByLv(int32_t eItem, int32_t nLevel,
                                       int32_t nValue);  // 0 to 4, 0 to 100, 0 to 1023
int K2V_RHAL_VPQ_ResetCurColorFacOSDMap(void);
int K2V_RHAL_VPQEX_SetGamutColorSpace(int32_t value);  // 0 to 4
int K2V_RHAL_VPQ_SetColorSpace_HSI(K2V_VPQ_COLOR_SPACE_HSI_T* record);
int K2V_RHAL_VPQ_SetSaturationLUT(K2V_VPQ_SATURATION_LUT_T* record);
int K2V_RHAL_VPQ_InitColorForAdvanced(CHIP_COLOR_CONTROL_T* record);
int K2V_RHAL_VPQ_SetFreshColor(K2V_VPQ_FRESH_COLOR_T* record);
int K2V_RHAL_VPQ_SetPreferredColor(CHIP_COLOR_CONTROL_T* record);
int K2V_RHAL_VPQ_SetClearWhiteGainCtrl(K2V_VPQ_CLEAR_WHITE_GAIN_T* record);
int K2V_RHAL_VPQ_SetClearWhite(K2V_VPQ_CLEAR_WHITE_T* record);
int K2V_RHAL_VPQ_Set3DColorCorrection(K2V_VPQ_3D_COLOR_CORRECTION_T* record);
int K2V_RHAL_VPQ_SetGamutLUT(K2V_VPQ_GAMUT_LUT_T* record);
int K2V_RHAL_VPQ_SetColorGamut(K2V_VPQ_COLOR_GAMUT_T* record);
int K2V_RHAL_VPQ_SetGamut(K2V_VPQ_GAMUT_T* record);
int K2V_RHAL_VPQ_SelGamutSection(int32_t value);  // 0 to 255
int K2V_RHAL_VPQ_SetColorFilter(int32_t value);   // 0 to 3
int K2V_RHAL_VPQ_InitColorForExpert(CHIP_COLOR_CONTROL_T* record);
int K2V_RHAL_VPQ_SetColorManagement(CHIP_COLOR_CONTROL_T* record);

// Sharpness, noise and film.
int K2V_RHAL_VPQ_GetNR(int32_t* value);
int K2V_RHAL_VPQ_SetNR(int32_t value);  // 0 to 5
int K2V_RHAL_VPQ_GetSharpness(int32_t* value);
int K2V_RHAL_VPQ_SetSharpness(K2V_VPQ_SHARPNESS_T* record);
int K2V_RHAL_VPQ_SetSharpnessExtend(int32_t value);  // 0 to 100
int K2V_RHAL_VPQ_GetDeBlocking(int32_t* value);
int K2V_RHAL_VPQ_SetDeBlocking(int32_t value);  // 0 to 5
int K2V_RHAL_VPQ_GetDeRinging(int32_t* value);
int K2V_RHAL_VPQ_SetDeRinging(int32_t value);  // 0 to 5
int K2V_RHAL_VPQ_GetSRLevel(int32_t* value);
int K2V_RHAL_VPQ_SetSRLevel(int32_t value);  // 0 to 2
int K2V_RHAL_VPQ_GetODLevel(int32_t* value);
int K2V_RHAL_VPQEX_GetFilmMode(int32_t* value);
int K2V_RHAL_VPQEX_SetFilmMode(int32_t value);  // 0 to 1
int K2V_RHAL_VPQEX_GetClarityRealityCreation(int32_t* value);
int K2V_RHAL_VPQEX_SetClarityRealityCreation(int32_t value);  // 0 to 2
int K2V_RHAL_VPQEX_GetClarityResolution(int32_t* value);
int K2V_RHAL_VPQEX_SetClarityResolution(int32_t value);  // 0 to 100
int K2V_RHAL_VPQEX_GetMastered4K(int32_t* value);
int K2V_RHAL_VPQEX_SetMastered4K(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_SetSuperResolution(K2V_VPQ_SUPER_RESOLUTION_T* record);
int K2V_RHAL_VPQ_SetEdgeEnhance(K2V_VPQ_EDGE_ENHANCE_T* record);
int K2V_RHAL_VPQ_SetNoiseReduction(K2V_VPQ_NOISE_REDUCTION_T* record);
int K2V_RHAL_VPQ_SetMpegNoiseReduction(K2V_VPQ_MPEG_NOISE_REDUCTION_T* record);
int K2V_RHAL_VPQ_SetFilmMode(int32_t eMode, int32_t bRealCinema);  // 0 to 2, 0 to 1
int K2V_RHAL_VPQ_SetRealCinema(K2V_VPQ_REAL_CINEMA_T* record);
int K2V_RHAL_VPQ_SetOdExtentions(K2V_VPQ_OD_EXTENSION_T* record);
int K2V_RHAL_VPQ_SetOd(K2V_VPQ_OD_T* record);
int K2V_RHAL_VPQ_SET_DeContour(int32_t nLevel);  // 0 to 4

// Picture, contrast and backlight.
int K2V_RHAL_VPQ_GetPicMode(int32_t* value);
int K2V_RHAL_VPQ_SetPicMode(int32_t value);  // 0 to 13
int K2V_RHAL_VPQ_ResetCurPicModeData(void);
int K2V_RHAL_VPQ_GetBrightness(int32_t* value);
int K2V_RHAL_VPQ_SetBrightness(int32_t value);  // 0 to 100
int K2V_RHAL_VPQ_GetContrast(int32_t* value);
int K2V_RHAL_VPQ_SetContrast(int32_t value);  // 0 to 100
int K2V_RHAL_VPQ_GetBackLight(int32_t* value);
int K2V_RHAL_VPQ_SetBackLight(int32_t value);  // 0 to 100
int K2V_RHAL_VPQ_SetPanelBL(int32_t value);    // 0 to 100
int K2V_RHAL_VPQEX_GetDCCMode(int32_t* value);
int K2V_RHAL_VPQEX_SetDCCMode(int32_t value);        // 0 to 5
int K2V_RHAL_VPQEX_SetHDMIDataRange(int32_t value);  // 0 to 3
int K2V_RHAL_VPQEX_GetBlackAdjust(int32_t* value);
int K2V_RHAL_VPQEX_SetBlackAdjust(int32_t value);  // 0 to 5
int K2V_RHAL_VPQ_SetHDMIModeType(int32_t value);   // 0 to 2
int K2V_RHAL_VPQ_SetVDPQ_MEMORY(int32_t value);    // 0 to 1
int K2V_RHAL_VPQ_SetPanoramaType(int32_t value);   // 0 to 1
int K2V_RHAL_VPQ_SetPictureCtrl(K2V_VPQ_PICTURE_CTRL_T* record);
int K2V_RHAL_VPQ_SetFreshContrast(K2V_VPQ_FRESH_CONTRAST_T* record);
int K2V_RHAL_VPQ_SetFreshContrastLUT(K2V_VPQ_FRESH_CONTRAST_LUT_T* record);
int K2V_RHAL_VPQ_GetFreshContrastBypassLUT(K2V_VPQ_FRESH_CONTRAST_LUT_T* record);
int K2V_RHAL_VPQ_SetBlackLevel(K2V_VPQ_BLACK_LEVEL_T* record);
int K2V_RHAL_VPQ_SetTwinTvMode(int32_t value);    // 0 to 1
int K2V_RHAL_VPQ_SetAplMode(int32_t value);       // 0 to 1
int K2V_RHAL_VPQ_SetLowDelayMode(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_SetPQModeInfo(K2V_VPQ_MODE_INFO_T* record);
int K2V_RHAL_VPQ_SetInversion(int32_t value);  // 0 to 1
int K2V_RHAL_VPQ_SetLocalConstrastParam(K2V_VPQ_LOCAL_CONTRAST_T* record);

#ifdef __cplusplus
}

static_assert(sizeof(CHIP_COLOR_CONTROL_T) == 54, "nine entries of six bytes");
static_assert(sizeof(K2V_VPQ_COLOR_TEMP_EXTEND_T) == 6 * 4, "six 32-bit fields");
#endif
