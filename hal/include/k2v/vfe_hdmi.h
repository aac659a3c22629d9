// HDMI receiver of the video front end (VFE). Ports are numbered 0 to 3. A function returns 0 or a
// failure code unless documented otherwise.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  K2V_HDMI_PORT_COUNT = 4,
  K2V_HDMI_EDID_BYTES = 256,  // base block and one CEA-861 extension
};

enum {
  K2V_HDMI_SCAN_INTERLACED = 0,
  K2V_HDMI_SCAN_PROGRESSIVE = 1,
};

enum {
  K2V_HDMI_MODE_DVI = 0,
  K2V_HDMI_MODE_HDMI = 1,
};

// Timing that a port receives; all zero if there is no signal.
typedef struct {
  uint32_t format;          // video identification code (CEA-861), 0 for a timing without one
  uint16_t hFreq;           // line frequency, 0.01 kHz
  uint16_t vFreq;           // field or frame frequency, 0.01 Hz
  uint16_t hTotal;          // pixels per line, blanking included
  uint16_t vTotal;          // lines per frame, blanking included
  uint16_t hPorch;          // blanking from the sync's leading edge to the first pixel, pixels
  uint16_t vPorch;          // the same vertically, lines
  K2V_VIDEO_RECT_T active;  // active window
  uint16_t scanType;        // K2V_HDMI_SCAN_*
  uint8_t mode;             // K2V_HDMI_MODE_*
  uint8_t reserved;
  uint32_t full_3d_timing;  // frame-packed 3D timing: 1
  uint32_t video_LR_order;  // 3D: 0 left eye first, 1 right eye first
  uint32_t extra;           // for the HAL's own use
} K2V_HDMI_TIMING_T;

// Info-frames. Numeric values are those of the bits on the wire: AVI and SPD of CEA-861-F (6.4 and
// 6.5), vendor-specific of HDMI 1.4b (8.2.3), dynamic range and mastering of CTA-861.3 (3.2).

enum {
  K2V_HDMI_PIXEL_RGB = 0,
  K2V_HDMI_PIXEL_YCBCR422 = 1,
  K2V_HDMI_PIXEL_YCBCR444 = 2,
  K2V_HDMI_PIXEL_YCBCR420 = 3,
};

// Auxiliary video information.
typedef struct {
  uint32_t VideoIdCode;      // VIC; 0: none, or the format is in the vendor-specific info-frame
  uint32_t eHDMIMode;        // K2V_HDMI_MODE_*
  uint32_t ePixelEncoding;   // Y: K2V_HDMI_PIXEL_*
  uint8_t nVersion;          // of the info-frame: 2, 3
  uint8_t nLength;           // bytes of its payload
  uint8_t bActiveFormat;     // A: the active format below is valid
  uint8_t eBarInfo;          // B: 0 none, 1 vertical, 2 horizontal, 3 both
  uint8_t eScanInfo;         // S: 0 no data, 1 overscanned, 2 underscanned
  uint8_t eColorimetry;      // C: 0 no data, 1 BT.601, 2 BT.709, 3 extended
  uint8_t eExtColorimetry;   // EC: 5 BT.2020 constant luminance, 6 BT.2020
  uint8_t ePictureAspect;    // M: 0 no data, 1 4:3, 2 16:9
  uint8_t eActiveAspect;     // R: 8 as the picture, 9 4:3, 10 16:9, 11 14:9
  uint8_t bItContent;        // ITC
  uint8_t eItContentType;    // CN: 0 graphics, 1 photo, 2 cinema, 3 game
  uint8_t eRgbRange;         // Q: 0 default of the format, 1 limited, 2 full
  uint8_t eYccRange;         // YQ: 0 limited, 1 full
  uint8_t eScaling;          // SC: 0 unknown, 1 horizontal, 2 vertical, 3 both
  uint8_t nPixelRepetition;  // PR: number of repetitions of a pixel, 0 to 9
  uint8_t reserved;
  uint16_t nTopBarEnd;       // lines
  uint16_t nBottomBarStart;  // lines
  uint16_t nLeftBarEnd;      // pixels
  uint16_t nRightBarStart;   // pixels
} K2V_HAL_VFE_HDMI_AVI_INFO_T;

// Source product description.
typedef struct {
  char VendorName[9];           // ASCII, terminated by a zero byte
  char ProductDescription[17];  // ASCII, terminated by a zero byte
  uint8_t nVersion;             // of the info-frame: 1
  uint8_t nLength;              // bytes of its payload
  uint32_t SourceDeviceInfo;    // K2V_HDMI_SOURCE_*
} K2V_HAL_VFE_HDMI_SPD_INFO_T;

enum {
  K2V_HDMI_SOURCE_UNKNOWN = 0,
  K2V_HDMI_SOURCE_DIGITAL_STB = 1,
  K2V_HDMI_SOURCE_DVD = 2,
  K2V_HDMI_SOURCE_GAME = 8,
  K2V_HDMI_SOURCE_PC = 9,
  K2V_HDMI_SOURCE_BLU_RAY = 10,
};

// IEEE identifiers of vendor-specific info-frames.
enum {
  K2V_HDMI_OUI_HDMI = 0x000C03,        // HDMI 1.4b
  K2V_HDMI_OUI_HDMI_FORUM = 0xC45DD8,  // HDMI 2.x
};

enum {
  K2V_HDMI_VSI_NO_FORMAT = 0,
  K2V_HDMI_VSI_EXTENDED_RESOLUTION = 1,  // the format is given by nHdmiVic
  K2V_HDMI_VSI_3D = 2,
};

// Vendor-specific info-frame of HDMI 1.4b.
typedef struct {
  uint32_t nIeeeOui;      // K2V_HDMI_OUI_HDMI
  uint32_t eVideoFormat;  // HDMI_Video_Format: K2V_HDMI_VSI_*
  uint32_t e3DStructure;  // 3D_Structure: 0 frame packing, 6 top and bottom, 8 side by side
  uint32_t e3DExtData;    // 3D_Ext_Data: sub-sampling of side by side
  uint8_t nVersion;       // of the info-frame: 1
  uint8_t nLength;        // bytes of its payload
  uint8_t nHdmiVic;       // HDMI_VIC: 1 2160p30, 2 2160p25, 3 2160p24, 4 4096x2160p24
  uint8_t b3DMetadata;    // 3D_Meta_present
} K2V_HAL_VFE_HDMI_VSI_INFO_T;

enum {
  K2V_HDMI_MAX_VSI = 4,
  K2V_HDMI_VSI_DATA_BYTES = 24,
};

// Vendor-specific info-frames of all vendors, as received.
typedef struct {
  uint32_t nCount;  // number of valid info-frames in stVSI, 0 to K2V_HDMI_MAX_VSI
  struct {
    uint32_t nIeeeOui;  // organisation that defines the data
    uint8_t nVersion;   // of the info-frame
    uint8_t nLength;    // bytes of its payload: 3 of the OUI and those of the data
    uint8_t nData[K2V_HDMI_VSI_DATA_BYTES];  // payload after the OUI
    uint8_t reserved[2];
  } stVSI[K2V_HDMI_MAX_VSI];
} K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T;

enum {
  K2V_HDMI_EOTF_SDR = 0,  // traditional gamma, SDR luminance range
  K2V_HDMI_EOTF_HDR = 1,  // traditional gamma, HDR luminance range
  K2V_HDMI_EOTF_PQ = 2,   // SMPTE ST 2084
  K2V_HDMI_EOTF_HLG = 3,  // BT.2100 hybrid log-gamma
};

// A point in the CIE 1931 diagram, units of 0.00002.
typedef struct {
  uint16_t x;
  uint16_t y;
} K2V_HDMI_CHROMATICITY_T;

// Dynamic range and mastering, static metadata type 1.
typedef struct {
  uint32_t nVersion;                              // of the info-frame: 1
  uint32_t nLength;                               // bytes of its payload: 26
  uint32_t eEOTFtype;                             // K2V_HDMI_EOTF_*
  uint32_t eMetadataId;                           // 0: static metadata type 1
  K2V_HDMI_CHROMATICITY_T stDisplayPrimaries[3];  // of the mastering display
  K2V_HDMI_CHROMATICITY_T stWhitePoint;
  uint16_t nMaxMasteringLuminance;  // 1 cd/m2
  uint16_t nMinMasteringLuminance;  // 0.0001 cd/m2
  uint16_t nMaxCLL;                 // maximum content light level, 1 cd/m2
  uint16_t nMaxFALL;                // maximum frame-average light level, 1 cd/m2
} K2V_HAL_VFE_HDMI_DRM_INFO_T;

// All packets of a port. Those that were not received are zero.
typedef struct {
  K2V_HAL_VFE_HDMI_AVI_INFO_T stAVI;
  K2V_HAL_VFE_HDMI_SPD_INFO_T stSPD;
  K2V_HAL_VFE_HDMI_VSI_INFO_T stVSI;
  K2V_HAL_VFE_HDMI_DRM_INFO_T stDRM;
} K2V_HAL_VFE_HDMI_PACKET_INFO_T;

// Clock of a port.
typedef struct {
  uint32_t nTmdsClockKHz;  // TMDS character rate / 1000; 0: no clock
  uint8_t bClockDetected;
  uint8_t bPllLocked;
  uint8_t reserved[2];
} K2V_HAL_VFE_HDMI_CLOCK_STATUS_T;

// Item to be read from the status and control data channel. Values are the bits of the SCDC's
// registers (HDMI 2.0, 10.4.1).
typedef uint32_t K2V_HAL_VFE_HDMI_SCDC_TYPE_T;
enum {
  K2V_HDMI_SCDC_SCRAMBLING_ENABLE = 0,     // TMDS_Config, bit 0
  K2V_HDMI_SCDC_TMDS_BIT_CLOCK_RATIO = 1,  // TMDS_Config, bit 1: 0 1/10, 1 1/40
  K2V_HDMI_SCDC_SCRAMBLING_STATUS = 2,     // Scrambler_Status, bit 0
  K2V_HDMI_SCDC_CLOCK_DETECTED = 3,        // Status_Flags_0, bit 0
  K2V_HDMI_SCDC_CHANNELS_LOCKED = 4,       // Status_Flags_0, bits 1 to 3: channels 0 to 2
};

enum {
  K2V_HDMI_DEPTH_8 = 0,  // bits per component
  K2V_HDMI_DEPTH_10 = 1,
  K2V_HDMI_DEPTH_12 = 2,
  K2V_HDMI_DEPTH_16 = 3,
};

enum {
  K2V_HDMI_HDCP_NONE = 0,
  K2V_HDMI_HDCP_1_4 = 1,
  K2V_HDMI_HDCP_2_2 = 2,
};

enum {
  K2V_HDMI_HDCP_BYTES = 320,  // receiver's key selection vector and its keys, wrapped by the board
  K2V_HDMI_HDCP_ID_BYTES = 5,
};

int K2V_RHAL_VFE_HDMI_Initialize(void);
int K2V_RHAL_VFE_HDMI_Uninitialize(void);
int K2V_RHAL_VFE_HDMI_Open(void);
int K2V_RHAL_VFE_HDMI_Close(void);

// Values of the chip, not failure codes: the number of HDMI ports, the port number that carries the
// audio return channel, 1 if HDMI 2.0 is supported, and the port whose picture is passed on (-1:
// none).
int K2V_RHAL_VFE_HDMI_GetRxPortCnt(void);
int K2V_RHAL_VFE_HDMI_GetARCChannel(void);
int K2V_RHAL_VFE_HDMI_Get_isHDMI20Supported(void);
int K2V_RHAL_VFE_HDMI_GetLogicalPort(void);

// Raises the hot-plug line of every port, so that sources read the EDID and start to send.
int K2V_RHAL_VFE_HDMI_EnableHPD(void);

// Lowers (level 0) or raises (1) the hot-plug line of one port.
int K2V_RHAL_VFE_HDMI_Set_HotPlug(uint8_t port, uint8_t level);

// 1 if a source is at the other end of the port's cable and sees its hot-plug line, else 0.
int K2V_RHAL_VFE_HDMI_GetConnectionState(uint8_t port, uint8_t* connected);

// Stores or returns the 256-byte EDID that a source on this port reads.
int K2V_RHAL_VFE_HDMI_WriteEDID(uint8_t port, const uint8_t* edid);
int K2V_RHAL_VFE_HDMI_ReadEDID(uint8_t port, uint8_t* edid);

// Connecting raises the port's hot-plug line unless it was lowered on purpose.
int K2V_RHAL_VFE_HDMI_Connect(uint8_t port);
int K2V_RHAL_VFE_HDMI_Disconnect(uint8_t port);

// What the port receives. Without a signal the timing is zero; all other functions fail.
int K2V_RHAL_VFE_HDMI_GetPortTimingInfo(uint8_t port, K2V_HDMI_TIMING_T* timing);
int K2V_RHAL_VFE_HDMI_GetClockStatus(uint8_t port, K2V_HAL_VFE_HDMI_CLOCK_STATUS_T* status);
int K2V_RHAL_VFE_HDMI_GetColorDepth(uint8_t port, uint32_t* depth);  // K2V_HDMI_DEPTH_*
int K2V_RHAL_VFE_HDMI_GetAVMute(uint8_t port, uint8_t* muted);       // general control packet
int K2V_RHAL_VFE_HDMI_GetScdcStatus(uint8_t port, K2V_HAL_VFE_HDMI_SCDC_TYPE_T type,
                                    uint32_t* value);

// The newest info-frame of a kind; a failure if the source sends none.
int K2V_RHAL_VFE_HDMI_GetPortAVIInfo(uint8_t port, K2V_HAL_VFE_HDMI_AVI_INFO_T* info);
int K2V_RHAL_VFE_HDMI_GetPortSPDInfo(uint8_t port, K2V_HAL_VFE_HDMI_SPD_INFO_T* info);
int K2V_RHAL_VFE_HDMI_GetPortVSIInfo(uint8_t port, K2V_HAL_VFE_HDMI_VSI_INFO_T* info);
int K2V_RHAL_VFE_HDMI_GetPortMultiVSIInfo(uint8_t port, K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T* info);
int K2V_RHAL_VFE_HDMI_GetDRMInfo(uint8_t port, K2V_HAL_VFE_HDMI_DRM_INFO_T* info);
int K2V_RHAL_VFE_HDMI_GetPortPacketInfo(uint8_t port, K2V_HAL_VFE_HDMI_PACKET_INFO_T* info);

// Content protection. The data are K2V_HDMI_HDCP_BYTES.
int K2V_RHAL_VFE_HDMI_WriteHDCP(uint8_t port, const uint8_t* data);
int K2V_RHAL_VFE_HDMI_ReadHDCP(uint8_t port, uint8_t* data);

// Values, not failure codes: 1 if the port supports HDCP 2.2; the current protection of its picture
// (K2V_HDMI_HDCP_*).
int K2V_RHAL_VFE_HDMI_isHDCP22Supported(uint8_t port);
int K2V_RHAL_VFE_HDMI_Get_HDCP_Version(uint8_t port);

// This receiver's HDCP 2.2 identifier, and the key selection vector of the source: 20 one bits each
// in K2V_HDMI_HDCP_ID_BYTES. The vector is zero if the source does not support HDCP 1.x.
int K2V_RHAL_VFE_HDMI_getHDCPReceiverId(uint8_t* id);
int K2V_RHAL_VFE_HDMI_GetSourceKSVData(uint8_t port, uint8_t* ksv);

#ifdef __cplusplus
}
static_assert(sizeof(K2V_HDMI_TIMING_T) == 40, "the receiver's timing record");
#endif
