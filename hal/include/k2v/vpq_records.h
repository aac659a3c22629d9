// Parameter records of the picture quality (VPQ), plain C.
#pragma once

#include <stdint.h>

// Basic picture controls.
typedef struct {
  uint8_t nContrast;
  uint8_t nBrightness;
  uint8_t nColor;
  uint8_t nTint;
} K2V_VPQ_PICTURE_CTRL_T;

// Colour temperature in the user interface: steps around the factory's adjustment.
typedef struct {
  int8_t nRedGain;
  int8_t nGreenGain;
  int8_t nBlueGain;
  int8_t nRedOffset;
  int8_t nGreenOffset;
  int8_t nBlueOffset;
} K2V_VPQ_COLOR_TEMP_T;

// Colour temperature in the chip; 512 is neutral.
typedef struct {
  uint32_t nRedGain;
  uint32_t nGreenGain;
  uint32_t nBlueGain;
  uint32_t nRedOffset;
  uint32_t nGreenOffset;
  uint32_t nBlueOffset;
} K2V_VPQ_COLOR_TEMP_EXTEND_T;

// Colour temperature of one level (cool to warm).
typedef struct {
  uint32_t eLevel;
  uint16_t nRedGain;
  uint16_t nGreenGain;
  uint16_t nBlueGain;
} K2V_VPQ_COLOR_TEMPERATURE_T;

// A factory colour temperature, requested by its index.
typedef struct {
  uint32_t nIndex;
  uint32_t nRedGain;
  uint32_t nGreenGain;
  uint32_t nBlueGain;
} K2V_VPQ_MAGIC_COLOR_TEMP_T;

// One block of the picture-quality pipeline.
typedef struct {
  uint32_t eModule;
  uint32_t bEnable;
} K2V_VPQ_MODULE_T;

// Demonstration: half of the panel without processing.
typedef struct {
  uint32_t eModule;
  uint32_t eSide;  // left, right
  uint32_t bEnable;
} K2V_VPQ_DEMO_T;

// How the user's range of 0 to 100 of a control maps to the chip: eleven support points.
typedef struct {
  uint32_t eItem;  // brightness, contrast, saturation, hue, sharpness
  uint16_t nPoint[11];
} K2V_VPQ_COLOR_OSD_MAP_T;

// Engineering menu.
typedef struct {
  uint32_t nId;
  uint32_t nValue;
} K2V_VPQ_ENG_ID_T;

typedef struct {
  uint32_t nItems;
  uint16_t nValue[64];
} K2V_VPQ_ENG_MENU_T;

typedef struct {
  uint32_t nLayer;
  uint32_t nId;
  uint32_t nValue;
} K2V_VPQ_ENG_TWO_LAYER_ID_T;

// Gamma: one curve per colour, and one curve for all.
typedef struct {
  uint16_t nRed[256];
  uint16_t nGreen[256];
  uint16_t nBlue[256];
} K2V_VPQ_GAMMA_LUT_T;

typedef struct {
  uint32_t nTableSize;  // number of valid points
  uint16_t nCurve[1024];
} K2V_VPQ_GAMMA_CURVE_T;

// Transfer functions, linear light in 16 bits.
typedef struct {
  uint16_t nLut[256];
} K2V_VPQ_BRIGHTNESS_LUT_T;

typedef struct {
  uint32_t eCurve;  // gamma, PQ, HLG
  uint16_t nLut[256];
} K2V_VPQ_HDR_CURVE_T;

// HDR: gamut matrix in units of 1/4096, and a cube of 9 points per side.
typedef struct {
  int16_t nMatrix[9];
} K2V_VPQ_HDR_GAMUT_MATRIX_T;

typedef struct {
  uint16_t nRed[729];
  uint16_t nGreen[729];
  uint16_t nBlue[729];
} K2V_VPQ_HDR_3D_LUT_T;

typedef struct {
  uint32_t eDynamicRange;  // SDR, HDR10, HLG, Dolby
  uint32_t bDolbyActive;
} K2V_VPQ_HDR_STATUS_T;

// Light levels in cd/m2.
typedef struct {
  uint32_t eTransfer;   // gamma, gamma of HDR range, PQ, HLG
  uint32_t ePrimaries;  // BT.601, BT.709, BT.2020
  uint16_t nMaxMasteringLuminance;
  uint16_t nMaxContentLight;
  uint16_t nMaxFrameAverageLight;
} K2V_VPQ_SRC_HDR_INFO_T;

typedef struct {
  uint16_t nAverage;  // luma of the picture
  uint16_t nMaximum;
} K2V_VPQ_HDR_PIC_INFO_T;

// Content of the source; luma of 10 bits.
typedef struct {
  uint16_t nAverage;
  uint16_t nMinimum;
  uint16_t nMaximum;
  uint32_t nBin[32];  // pixels, 32 luma steps each
} K2V_VPQ_HISTOGRAM_T;

typedef struct {
  uint16_t nAverage;
  uint16_t nMinimum;
  uint16_t nMaximum;
} K2V_VPQ_SRC_APL_INFO_T;

typedef struct {
  uint16_t x;
  uint16_t y;
  uint16_t nRed;
  uint16_t nGreen;
  uint16_t nBlue;
} K2V_VPQ_PIXEL_INFO_T;

// Sharpness and contrast.
typedef struct {
  uint8_t bEnable;
  uint8_t nLevel;
  uint8_t nStrength;
} K2V_VPQ_SUPER_RESOLUTION_T;

typedef struct {
  uint8_t nHorizontal;
  uint8_t nVertical;
  uint8_t nDetail;
} K2V_VPQ_SHARPNESS_T;

typedef struct {
  uint8_t bEnable;
  uint8_t nLevel;
} K2V_VPQ_EDGE_ENHANCE_T;

typedef struct {
  uint8_t nLevel;
  uint8_t nBlackGain;
  uint8_t nWhiteGain;
} K2V_VPQ_FRESH_CONTRAST_T;

typedef struct {
  uint16_t nLut[33];
} K2V_VPQ_FRESH_CONTRAST_LUT_T;

typedef struct {
  uint8_t bEnable;
  uint8_t nStrength;
  uint8_t nBlackGain;
  uint8_t nWhiteGain;
} K2V_VPQ_LOCAL_CONTRAST_T;

typedef struct {
  uint16_t nCurve[128];
} K2V_VPQ_LOCAL_CONTRAST_TABLE_T;

typedef struct {
  uint8_t eLevel;  // low, high, automatic
  uint8_t eSource;
} K2V_VPQ_BLACK_LEVEL_T;

// Colour.
typedef struct {
  uint16_t nLut[33];
} K2V_VPQ_SATURATION_LUT_T;

typedef struct {
  uint8_t nLevel;
  uint8_t nSaturation;
  uint8_t nSkinProtection;
} K2V_VPQ_FRESH_COLOR_T;

typedef struct {
  uint16_t nRedGain;
  uint16_t nGreenGain;
  uint16_t nBlueGain;
} K2V_VPQ_CLEAR_WHITE_GAIN_T;

typedef struct {
  uint8_t nLevel;
  uint8_t nThreshold;
} K2V_VPQ_CLEAR_WHITE_T;

typedef struct {
  uint8_t bEnable;
  int8_t nRed;
  int8_t nGreen;
  int8_t nBlue;
} K2V_VPQ_3D_COLOR_CORRECTION_T;

typedef struct {
  uint8_t nRegion;
  int8_t nHue;
  int8_t nSaturation;
  int8_t nIntensity;
} K2V_VPQ_COLOR_SPACE_HSI_T;

typedef struct {
  uint32_t nSection;
  uint16_t nLut[128];
} K2V_VPQ_GAMUT_LUT_T;

// Matrix in units of 1/4096.
typedef struct {
  uint32_t eGamut;  // native, BT.709, DCI-P3, BT.2020, automatic
  int16_t nMatrix[9];
} K2V_VPQ_COLOR_GAMUT_T;

typedef struct {
  uint32_t eGamut;
  uint32_t eSource;
} K2V_VPQ_GAMUT_T;

// Noise, film and overdrive.
typedef struct {
  uint8_t nSpatial;
  uint8_t nTemporal;
} K2V_VPQ_NOISE_REDUCTION_T;

typedef struct {
  uint8_t nBlocking;
  uint8_t nRinging;
} K2V_VPQ_MPEG_NOISE_REDUCTION_T;

typedef struct {
  uint8_t bEnable;
  uint8_t eCadence;  // automatic, 3:2, 2:2
} K2V_VPQ_REAL_CINEMA_T;

typedef struct {
  uint8_t bEnable;
  uint8_t nTable[289];  // 17 by 17 steps of old and new level
} K2V_VPQ_OD_T;

typedef struct {
  uint8_t bReadEnable;
  uint8_t nGain;
} K2V_VPQ_OD_EXTENSION_T;

// Local dimming, demonstration and modes.
typedef struct {
  uint16_t nLut[256];
} K2V_VPQ_LED_DB_LUT_T;

typedef struct {
  uint16_t x;
  uint16_t y;
  uint16_t w;
  uint16_t h;
  uint8_t bEnable;
  uint8_t nDarken;  // of the area outside
} K2V_VPQ_HIGHLIGHT_WINDOW_T;

typedef struct {
  uint32_t ePicMode;
  uint32_t eSource;
  uint32_t eDynamicRange;
} K2V_VPQ_MODE_INFO_T;

typedef struct {
  uint32_t ePicMode;
  uint16_t nMinLuminance;  // 0.0001 cd/m2
  uint16_t nMaxLuminance;  // cd/m2
} K2V_VPQ_DOLBY_CONFIG_T;

typedef struct {
  uint32_t bPanelTables;  // loaded
  uint32_t bFactoryData;
} K2V_VPQ_DATA_ACCESS_T;
