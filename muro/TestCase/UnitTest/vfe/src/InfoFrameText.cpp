#include "InfoFrameText.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <initializer_list>

namespace {

struct Field {
  const char* name;
  uint32_t value;
  const char* unit = "";
};

constexpr char kPixels[] = " pixels";
constexpr char kLines[] = " lines";
constexpr char kChromaticity[] = " x 0.00002";
constexpr uint32_t kOuiBytes = 3;

void Print(std::initializer_list<Field> fields) {
  for (const Field& field : fields) {
    std::printf("%s : %" PRIu32 "%s\n", field.name, field.value, field.unit);
  }
}

void PrintPoint(const char* name, const K2V_HDMI_CHROMATICITY_T& point) {
  std::printf("%s : %d, %d%s\n", name, point.x, point.y, kChromaticity);
}

void PrintOui(uint32_t oui) {
  std::printf("nIeeeOui : %02X-%02X-%02X\n", oui >> 16 & 0xFF, oui >> 8 & 0xFF, oui & 0xFF);
}

}  // namespace

void PrintClockStatus(const K2V_HAL_VFE_HDMI_CLOCK_STATUS_T& status) {
  Print({{"nTmdsClockKHz", status.nTmdsClockKHz, " kHz"},
         {"bClockDetected", status.bClockDetected},
         {"bPllLocked", status.bPllLocked}});
}

void PrintTimingInfo(const K2V_HDMI_TIMING_T& timing) {
  Print({{"format", timing.format},
         {"hFreq", timing.hFreq, " x 0.01 kHz"},
         {"vFreq", timing.vFreq, " x 0.01 Hz"},
         {"hTotal", timing.hTotal, kPixels},
         {"vTotal", timing.vTotal, kLines},
         {"hPorch", timing.hPorch, kPixels},
         {"vPorch", timing.vPorch, kLines},
         {"active.x", timing.active.x, kPixels},
         {"active.y", timing.active.y, kLines},
         {"active.w", timing.active.w, kPixels},
         {"active.h", timing.active.h, kLines},
         {"scanType", timing.scanType},
         {"mode", timing.mode},
         {"full_3d_timing", timing.full_3d_timing},
         {"video_LR_order", timing.video_LR_order},
         {"extra", timing.extra}});
}

void PrintAviInfo(const K2V_HAL_VFE_HDMI_AVI_INFO_T& info) {
  Print({{"VideoIdCode", info.VideoIdCode},
         {"eHDMIMode", info.eHDMIMode},
         {"ePixelEncoding", info.ePixelEncoding},
         {"nVersion", info.nVersion},
         {"nLength", info.nLength, " bytes"},
         {"bActiveFormat", info.bActiveFormat},
         {"eBarInfo", info.eBarInfo},
         {"eScanInfo", info.eScanInfo},
         {"eColorimetry", info.eColorimetry},
         {"eExtColorimetry", info.eExtColorimetry},
         {"ePictureAspect", info.ePictureAspect},
         {"eActiveAspect", info.eActiveAspect},
         {"bItContent", info.bItContent},
         {"eItContentType", info.eItContentType},
         {"eRgbRange", info.eRgbRange},
         {"eYccRange", info.eYccRange},
         {"eScaling", info.eScaling},
         {"nPixelRepetition", info.nPixelRepetition},
         {"nTopBarEnd", info.nTopBarEnd, kLines},
         {"nBottomBarStart", info.nBottomBarStart, kLines},
         {"nLeftBarEnd", info.nLeftBarEnd, kPixels},
         {"nRightBarStart", info.nRightBarStart, kPixels}});
}

void PrintSpdInfo(const K2V_HAL_VFE_HDMI_SPD_INFO_T& info) {
  std::printf("VendorName : %.8s\nProductDescription : %.16s\n", info.VendorName,
              info.ProductDescription);
  Print({{"nVersion", info.nVersion},
         {"nLength", info.nLength, " bytes"},
         {"SourceDeviceInfo", info.SourceDeviceInfo}});
}

void PrintVsiInfo(const K2V_HAL_VFE_HDMI_VSI_INFO_T& info) {
  PrintOui(info.nIeeeOui);
  Print({{"eVideoFormat", info.eVideoFormat},
         {"e3DStructure", info.e3DStructure},
         {"e3DExtData", info.e3DExtData},
         {"nVersion", info.nVersion},
         {"nLength", info.nLength, " bytes"},
         {"nHdmiVic", info.nHdmiVic},
         {"b3DMetadata", info.b3DMetadata}});
}

void _dump_multi_vsif(const K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T* info) {
  Print({{"nCount", info->nCount}});
  for (uint32_t i = 0; i < std::min<uint32_t>(info->nCount, K2V_HDMI_MAX_VSI); ++i) {
    const auto& vsi = info->stVSI[i];
    std::printf("stVSI[%" PRIu32 "]\n", i);
    PrintOui(vsi.nIeeeOui);
    Print({{"nVersion", vsi.nVersion}, {"nLength", vsi.nLength, " bytes"}});
    const uint32_t dataBytes = std::max<uint32_t>(vsi.nLength, kOuiBytes) - kOuiBytes;
    std::printf("nData :");
    for (uint32_t at = 0; at < std::min<uint32_t>(dataBytes, K2V_HDMI_VSI_DATA_BYTES); ++at) {
      std::printf(" %02x", vsi.nData[at]);
    }
    std::putchar('\n');
  }
}

void _dump_drm_info(const K2V_HAL_VFE_HDMI_DRM_INFO_T* info) {
  Print({{"nVersion", info->nVersion},
         {"nLength", info->nLength, " bytes"},
         {"eEOTFtype", info->eEOTFtype},
         {"eMetadataId", info->eMetadataId}});
  PrintPoint("stDisplayPrimaries[0]", info->stDisplayPrimaries[0]);
  PrintPoint("stDisplayPrimaries[1]", info->stDisplayPrimaries[1]);
  PrintPoint("stDisplayPrimaries[2]", info->stDisplayPrimaries[2]);
  PrintPoint("stWhitePoint", info->stWhitePoint);
  Print({{"nMaxMasteringLuminance", info->nMaxMasteringLuminance, " cd/m2"},
         {"nMinMasteringLuminance", info->nMinMasteringLuminance, " x 0.0001 cd/m2"},
         {"nMaxCLL", info->nMaxCLL, " cd/m2"},
         {"nMaxFALL", info->nMaxFALL, " cd/m2"}});
}

void PrintPacketInfo(const K2V_HAL_VFE_HDMI_PACKET_INFO_T& info) {
  std::puts("stAVI");
  PrintAviInfo(info.stAVI);
  std::puts("stSPD");
  PrintSpdInfo(info.stSPD);
  std::puts("stVSI");
  PrintVsiInfo(info.stVSI);
  std::puts("stDRM");
  _dump_drm_info(&info.stDRM);
}
