#include "vfe/HdmiSource.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>

namespace sim {
namespace {

// What is the same for all sources of a kind.
struct Kind {
  const char* vendor;                            // at most 8 characters
  const char* product;                           // at most 16 characters
  uint32_t deviceInfo;                           // K2V_HDMI_SOURCE_*
  uint32_t depth;                                // K2V_HDMI_DEPTH_*
  int hdcpVersion;                               // K2V_HDMI_HDCP_*
  uint8_t keySelection[K2V_HDMI_HDCP_ID_BYTES];  // 20 of 40 bits are 1
};

// By SourceKind.
constexpr Kind kKinds[] = {
    {"SIMBOARD",
     "HD Tuner",
     K2V_HDMI_SOURCE_DIGITAL_STB,
     K2V_HDMI_DEPTH_8,
     K2V_HDMI_HDCP_1_4,
     {0x35, 0xA6, 0x5C, 0xC9, 0x9A}},
    {"SIMBOARD",
     "UHD Disc Player",
     K2V_HDMI_SOURCE_BLU_RAY,
     K2V_HDMI_DEPTH_10,
     K2V_HDMI_HDCP_2_2,
     {0x69, 0x3C, 0xA5, 0xD2, 0x96}},
    {"SIMBOARD", "PC Graphics", K2V_HDMI_SOURCE_PC, K2V_HDMI_DEPTH_8, K2V_HDMI_HDCP_NONE, {}},
};

constexpr uint32_t kMaxTmdsKHz = 600'000;
constexpr uint32_t kMaxUnscrambledKHz = 340'000;
constexpr uint8_t kInfoFrameOuiBytes = 3;

const Kind& KindOf(const HdmiPort& port) {
  return kKinds[static_cast<size_t>(port.kind)];
}

uint32_t PixelClockKHz(const K2V_HDMI_TIMING_T& timing) {
  const uint64_t fields = timing.scanType == K2V_HDMI_SCAN_INTERLACED ? 2 : 1;
  const uint64_t pixels = uint64_t{timing.hTotal} * timing.vTotal;
  return static_cast<uint32_t>(pixels * timing.vFreq / (fields * 100'000));
}

uint32_t FullTmdsKHz(const HdmiPort& port) {
  const uint32_t pixelKHz = PixelClockKHz(port.timing);
  return KindOf(port).depth == K2V_HDMI_DEPTH_10 ? pixelKHz / 4 * 5 : pixelKHz;
}

// Video that does not fit through the cable goes with a quarter of the chroma.
uint32_t PixelEncoding(const HdmiPort& port) {
  if (port.kind == SourceKind::kPc) return K2V_HDMI_PIXEL_RGB;
  return FullTmdsKHz(port) > kMaxTmdsKHz ? K2V_HDMI_PIXEL_YCBCR420 : K2V_HDMI_PIXEL_YCBCR444;
}

// The formats of HDMI 1.4b that came before CEA-861 had codes for them: these go by HDMI_VIC.
uint8_t HdmiVic(const K2V_HDMI_TIMING_T& timing) {
  static constexpr uint32_t kVicOf[] = {0, 95, 94, 93, 98};
  const auto* found = std::find(std::begin(kVicOf), std::end(kVicOf), timing.format);
  return found == std::end(kVicOf) ? 0 : static_cast<uint8_t>(found - std::begin(kVicOf));
}

void SetColorimetry(const HdmiPort& port, K2V_HAL_VFE_HDMI_AVI_INFO_T& info) {
  constexpr uint8_t kBt601 = 1, kBt709 = 2, kExtended = 3, kBt2020 = 6;
  if (port.kind == SourceKind::kHdrVideo) {
    info.eColorimetry = kExtended;
    info.eExtColorimetry = kBt2020;
  } else if (port.kind == SourceKind::kSdrVideo) {
    info.eColorimetry = port.timing.active.h >= 720 ? kBt709 : kBt601;
  }
}

// A computer's picture: nothing cut off, the whole range, and told as IT content.
void SetPcPicture(K2V_HAL_VFE_HDMI_AVI_INFO_T& info) {
  constexpr uint8_t kUnderscanned = 2, kFullRange = 2, kGraphics = 0;
  info.eScanInfo = kUnderscanned;
  info.eRgbRange = kFullRange;
  info.bItContent = 1;
  info.eItContentType = kGraphics;
}

void AddVsi(K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T& all, uint32_t oui,
            std::initializer_list<uint8_t> data) {
  auto& vsi = all.stVSI[all.nCount++];
  vsi.nIeeeOui = oui;
  vsi.nVersion = 1;
  vsi.nLength = static_cast<uint8_t>(kInfoFrameOuiBytes + data.size());
  std::copy(data.begin(), data.end(), vsi.nData);
}

}  // namespace

uint32_t TmdsClockKHz(const HdmiPort& port) {
  const uint32_t full = FullTmdsKHz(port);
  return PixelEncoding(port) == K2V_HDMI_PIXEL_YCBCR420 ? full / 2 : full;
}

uint32_t ColorDepth(const HdmiPort& port) {
  return KindOf(port).depth;
}
int HdcpVersion(const HdmiPort& port) {
  return KindOf(port).hdcpVersion;
}
bool MutesChanges(const HdmiPort& port) {
  return port.kind != SourceKind::kPc;
}
bool IsScrambled(const HdmiPort& port) {
  return TmdsClockKHz(port) > kMaxUnscrambledKHz;
}

int MakeAvi(const HdmiPort& port, K2V_HAL_VFE_HDMI_AVI_INFO_T& info) {
  constexpr uint8_t k4To3 = 1, k16To9 = 2, kAsPicture = 8;
  const K2V_VIDEO_RECT_T& active = port.timing.active;
  info = {};
  info.VideoIdCode = HdmiVic(port.timing) != 0 ? 0 : port.timing.format;
  info.eHDMIMode = port.timing.mode;
  info.ePixelEncoding = PixelEncoding(port);
  info.nVersion = 2;
  info.nLength = 13;
  info.bActiveFormat = 1;
  info.ePictureAspect = active.w * 3 == active.h * 4 ? k4To3 : k16To9;
  info.eActiveAspect = kAsPicture;
  SetColorimetry(port, info);
  if (port.kind == SourceKind::kPc) SetPcPicture(info);
  return K2V_RHAL_OK;
}

int MakeSpd(const HdmiPort& port, K2V_HAL_VFE_HDMI_SPD_INFO_T& info) {
  const Kind& kind = KindOf(port);
  info = {};
  std::strncpy(info.VendorName, kind.vendor, sizeof(info.VendorName) - 1);
  std::strncpy(info.ProductDescription, kind.product, sizeof(info.ProductDescription) - 1);
  info.nVersion = 1;
  info.nLength = 25;
  info.SourceDeviceInfo = kind.deviceInfo;
  return K2V_RHAL_OK;
}

int MakeVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_VSI_INFO_T& info) {
  info = {};
  info.nIeeeOui = K2V_HDMI_OUI_HDMI;
  info.nHdmiVic = HdmiVic(port.timing);
  info.eVideoFormat =
      info.nHdmiVic != 0 ? K2V_HDMI_VSI_EXTENDED_RESOLUTION : K2V_HDMI_VSI_NO_FORMAT;
  info.nVersion = 1;
  info.nLength = info.nHdmiVic != 0 ? 5 : 4;
  return K2V_RHAL_OK;
}

int MakeAllVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T& info) {
  info = {};
  if (const uint8_t vic = HdmiVic(port.timing); vic != 0) {
    AddVsi(info, K2V_HDMI_OUI_HDMI, {K2V_HDMI_VSI_EXTENDED_RESOLUTION << 5, vic});
  } else {
    AddVsi(info, K2V_HDMI_OUI_HDMI, {K2V_HDMI_VSI_NO_FORMAT << 5});
  }
  // Version 1 and, in a computer's, the wish for low latency.
  const uint8_t lowLatency = port.kind == SourceKind::kPc ? 2 : 0;
  if (IsScrambled(port)) AddVsi(info, K2V_HDMI_OUI_HDMI_FORUM, {1, lowLatency});
  return K2V_RHAL_OK;
}

int MakeDrm(const HdmiPort& port, K2V_HAL_VFE_HDMI_DRM_INFO_T& info) {
  info = {};
  if (port.kind != SourceKind::kHdrVideo) return K2V_RHAL_ERR_FAIL;
  info.nVersion = 1;
  info.nLength = 26;
  info.eEOTFtype = K2V_HDMI_EOTF_PQ;
  // BT.2020 in the order green, blue, red; D65.
  constexpr K2V_HDMI_CHROMATICITY_T kPrimaries[] = {{8500, 39850}, {6550, 2300}, {35400, 14600}};
  std::copy(std::begin(kPrimaries), std::end(kPrimaries), info.stDisplayPrimaries);
  info.stWhitePoint = {15635, 16450};
  info.nMaxMasteringLuminance = 1000;
  info.nMinMasteringLuminance = 50;
  info.nMaxCLL = 1000;
  info.nMaxFALL = 400;
  return K2V_RHAL_OK;
}

int MakePackets(const HdmiPort& port, K2V_HAL_VFE_HDMI_PACKET_INFO_T& info) {
  MakeAvi(port, info.stAVI);
  MakeSpd(port, info.stSPD);
  MakeVsi(port, info.stVSI);
  MakeDrm(port, info.stDRM);
  return K2V_RHAL_OK;
}

int CopyKeySelection(const HdmiPort& port, uint8_t* ksv) {
  if (HdcpVersion(port) == K2V_HDMI_HDCP_NONE) return K2V_RHAL_ERR_FAIL;
  std::memcpy(ksv, KindOf(port).keySelection, K2V_HDMI_HDCP_ID_BYTES);
  return K2V_RHAL_OK;
}

}  // namespace sim
