#include "vfe/HdmiSource.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <optional>

#include "vfe/Edid.h"
#include "vfe/Timing.h"

namespace sim {
namespace {

constexpr uint32_t kWideGamut = K2V_COLOR_STANDARD_BT2020;

// What all sources of a kind have in common.
struct Kind {
  std::string_view name;                         // in commands
  const char* vendor;                            // at most 8 characters
  const char* product;                           // at most 16 characters
  uint32_t deviceInfo;                           // K2V_HDMI_SOURCE_*
  uint32_t depth;                                // K2V_HDMI_DEPTH_*
  int hdcpVersion;                               // K2V_HDMI_HDCP_*
  uint8_t keySelection[K2V_HDMI_HDCP_ID_BYTES];  // 20 of 40 bits are 1; zeros without HDCP 1.x
  uint32_t eotf;                                 // K2V_HDMI_EOTF_*; SDR is not signalled
  bool isRgb;
};

// By SourceKind.
constexpr Kind kKinds[] = {
    {"sdr",
     "SIMBOARD",
     "HD Tuner",
     K2V_HDMI_SOURCE_DIGITAL_STB,
     K2V_HDMI_DEPTH_8,
     K2V_HDMI_HDCP_1_4,
     {0x35, 0xA6, 0x5C, 0xC9, 0x9A},
     K2V_HDMI_EOTF_SDR,
     false},
    {"hdr",
     "SIMBOARD",
     "UHD Disc Player",
     K2V_HDMI_SOURCE_BLU_RAY,
     K2V_HDMI_DEPTH_10,
     K2V_HDMI_HDCP_2_2,
     {},
     K2V_HDMI_EOTF_PQ,
     false},
    {"pc",
     "SIMBOARD",
     "PC Graphics",
     K2V_HDMI_SOURCE_PC,
     K2V_HDMI_DEPTH_8,
     K2V_HDMI_HDCP_NONE,
     {},
     K2V_HDMI_EOTF_SDR,
     true},
    {"hlg",
     "SIMBOARD",
     "UHD Tuner",
     K2V_HDMI_SOURCE_DIGITAL_STB,
     K2V_HDMI_DEPTH_10,
     K2V_HDMI_HDCP_2_2,
     {},
     K2V_HDMI_EOTF_HLG,
     false},
    {"deep",
     "SIMBOARD",
     "Disc Player",
     K2V_HDMI_SOURCE_BLU_RAY,
     K2V_HDMI_DEPTH_12,
     K2V_HDMI_HDCP_1_4,
     {0x4B, 0xD2, 0x2D, 0xB4, 0xA6},
     K2V_HDMI_EOTF_SDR,
     false},
    {"dvi",
     "",
     "",
     K2V_HDMI_SOURCE_UNKNOWN,
     K2V_HDMI_DEPTH_8,
     K2V_HDMI_HDCP_NONE,
     {},
     K2V_HDMI_EOTF_SDR,
     true},
};

/// Where a timing has room for the second eye's picture: nowhere, after the first one's lines and a
/// blanking, after each line, or after the pixels of each line.
enum class Room : uint8_t { kNone, kBehind, kLines, kPixels };

// By Stereo.
struct Packing {
  std::string_view name;  // in commands
  uint32_t structure;     // 3D_Structure
  uint32_t extension;     // 3D_Ext_Data
  uint8_t length;         // of the vendor-specific info-frame; 0: the source does not announce it
  Room room;
};
constexpr Packing kPackings[] = {{"", 0, 0, 0, Room::kNone},
                                 {"frame-packing", 0, 0, 5, Room::kBehind},
                                 {"side-by-side", 8, 1, 6, Room::kNone},
                                 {"top-and-bottom", 6, 0, 5, Room::kNone},
                                 {"field-alternative", 1, 0, 5, Room::kBehind},
                                 {"line-alternative", 2, 0, 5, Room::kLines},
                                 {"side-by-side-full", 3, 0, 5, Room::kPixels},
                                 {"line-interleave", 0, 0, 0, Room::kNone},
                                 {"column-interleave", 0, 0, 0, Room::kNone},
                                 {"checkerboard", 0, 0, 0, Room::kNone},
                                 {"frame-sequential", 0, 0, 0, Room::kNone}};

constexpr uint32_t kMaxTmdsKHz = 600'000;
constexpr uint32_t kMaxDviKHz = 165'000;
constexpr uint32_t kMaxUnscrambledKHz = 340'000;
constexpr uint8_t kInfoFrameOuiBytes = 3;

const Kind& KindOf(const HdmiPort& port) {
  return kKinds[static_cast<size_t>(port.kind)];
}

const Packing& PackingOf(Stereo stereo) {
  return kPackings[static_cast<size_t>(stereo)];
}

/// Whether the info-frames announce that the source sends 3D.
bool Announces3d(const HdmiPort& port) {
  return PackingOf(port.stereo).length != 0;
}

bool IsDvi(const HdmiPort& port) {
  return port.kind == SourceKind::kDvi;
}

/// How often each pixel is repeated: the pixel clock of 480i and 576i is too low for TMDS.
uint8_t PixelRepetition(const K2V_HDMI_TIMING_T& timing) {
  constexpr uint32_t k480i = 7, k576i = 22;
  return timing.format == k480i || timing.format == k576i ? 1 : 0;
}

uint32_t PixelClockKHz(const K2V_HDMI_TIMING_T& timing) {
  const uint64_t fields = timing.scanType == K2V_HDMI_SCAN_INTERLACED ? 2 : 1;
  const uint64_t pixels = uint64_t{timing.hTotal} * timing.vTotal * (1U + PixelRepetition(timing));
  return static_cast<uint32_t>(pixels * timing.vFreq / (fields * 100'000));
}

struct Encoding {
  uint32_t pixels;   // K2V_HDMI_PIXEL_*
  uint32_t tmdsKHz;  // rate of TMDS characters
};

// The best encoding that fits the link: full chroma, else a quarter of it (4:2:0) if the receiver's
// EDID lists that, else half of it (4:2:2), which carries up to 12 bits without more characters.
std::optional<Encoding> EncodingOf(const HdmiPort& port) {
  static constexpr uint32_t kBits[] = {8, 10, 12, 16};
  const Kind& kind = KindOf(port);
  const uint32_t limitKHz = IsDvi(port) ? kMaxDviKHz : kMaxTmdsKHz;
  const uint32_t pixelKHz = PixelClockKHz(port.timing);
  const uint32_t wholeKHz = pixelKHz / 8 * kBits[kind.depth] + pixelKHz % 8 * kBits[kind.depth] / 8;
  if (wholeKHz <= limitKHz) {
    return Encoding{kind.isRgb ? K2V_HDMI_PIXEL_RGB : K2V_HDMI_PIXEL_YCBCR444, wholeKHz};
  }
  if (IsDvi(port)) return std::nullopt;
  if (wholeKHz / 2 <= limitKHz && port.edidWritten && Lists420(port.edid, port.timing.format)) {
    return Encoding{K2V_HDMI_PIXEL_YCBCR420, wholeKHz / 2};
  }
  if (!kind.isRgb && pixelKHz <= limitKHz) return Encoding{K2V_HDMI_PIXEL_YCBCR422, pixelKHz};
  return std::nullopt;
}

bool IsNear(uint32_t a, uint32_t b) {
  return std::abs(static_cast<double>(a) / b - 1) < 0.005;
}

/// Field M of the AVI info-frame; 0 for aspect ratios that have no code there.
uint8_t PictureAspect(const K2V_HDMI_TIMING_T& timing, Room room) {
  constexpr uint8_t kNone = 0, k4To3 = 1, k16To9 = 2;
  constexpr uint32_t kVga = 1;
  const uint32_t code = timing.format;
  const bool isOther = (code >= 86 && code <= 92) || (code >= 98 && code <= 102);
  if (code != 0) return code == kVga ? k4To3 : isOther ? kNone : k16To9;
  const uint32_t lines = timing.active.h, pixels = timing.active.w;
  const uint32_t height = timing.full_3d_timing != 0 ? lines - timing.vTotal / 2U
                          : room == Room::kLines     ? lines / 2
                                                     : lines;
  const uint32_t width = room == Room::kPixels ? pixels / 2 : pixels;
  if (IsNear(width * 9U, height * 16U)) return k16To9;
  return IsNear(width * 3U, height * 4U) ? k4To3 : kNone;
}

// HDMI 1.4b introduced these formats before CEA-861 had codes for them: they are sent as HDMI_VIC.
uint8_t HdmiVic(const HdmiPort& port) {
  static constexpr uint32_t kVicOf[] = {0, 95, 94, 93, 98};
  if (Announces3d(port)) return 0;  // the info-frame signals 3D instead
  const auto* found = std::find(std::begin(kVicOf), std::end(kVicOf), port.timing.format);
  return found == std::end(kVicOf) ? 0 : static_cast<uint8_t>(found - std::begin(kVicOf));
}

void SetColorimetry(const HdmiPort& port, K2V_HAL_VFE_HDMI_AVI_INFO_T& info) {
  constexpr uint8_t kExtended = 3, kBt2020 = 6;
  static constexpr uint8_t kCodes[] = {1, 2, kExtended};  // by K2V_COLOR_STANDARD_*
  if (KindOf(port).isRgb) return;
  info.eColorimetry = kCodes[ColorStandard(port)];
  if (info.eColorimetry == kExtended) info.eExtColorimetry = kBt2020;
}

// A computer's picture: no overscan, full range, signalled as IT content.
void SetPcPicture(K2V_HAL_VFE_HDMI_AVI_INFO_T& info) {
  constexpr uint8_t kUnderscanned = 2, kFullRange = 2, kGraphics = 0;
  info.eScanInfo = kUnderscanned;
  info.eRgbRange = kFullRange;
  info.bItContent = 1;
  info.eItContentType = kGraphics;
}

void AddVsi(K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T& all, uint32_t oui, int size,
            std::initializer_list<uint8_t> data) {
  auto& vsi = all.stVSI[all.nCount++];
  vsi.nIeeeOui = oui;
  vsi.nVersion = 1;
  vsi.nLength = static_cast<uint8_t>(kInfoFrameOuiBytes + size);
  std::copy_n(data.begin(), size, vsi.nData);
}

}  // namespace

SourceOrder ParseSource(const Words& words, size_t first) {
  SourceOrder order;
  const K2V_HDMI_TIMING_T timing = ParseTiming(words[first]);
  for (size_t i = first + 1; i < words.size(); ++i) {
    const auto named = [&](const auto& row) { return row.name == words[i]; };
    const auto* kind = std::find_if(std::begin(kKinds), std::end(kKinds), named);
    const auto* packing = std::find_if(std::begin(kPackings), std::end(kPackings), named);
    if (kind != std::end(kKinds)) {
      order.kind = static_cast<SourceKind>(kind - std::begin(kKinds));
    } else if (packing != std::end(kPackings)) {
      order.stereo = static_cast<Stereo>(packing - std::begin(kPackings));
    } else {
      RefuseWord("invalid argument", words[i], std::string(kSourceWords));
    }
  }
  if (order.kind == SourceKind::kDvi && PackingOf(order.stereo).length != 0) {
    RefuseWord("DVI sources send no 3D info-frame:", Join(words, first), "3D of an HDMI source");
  }
  order.timing = Packed(timing, order.stereo);
  order.timing.mode = order.kind == SourceKind::kDvi ? K2V_HDMI_MODE_DVI : K2V_HDMI_MODE_HDMI;
  return order;
}

K2V_HDMI_TIMING_T Packed(const K2V_HDMI_TIMING_T& timing, Stereo stereo) {
  const auto& [name, structure, extension, length, room] = PackingOf(stereo);
  if (room == Room::kNone) return timing;
  const bool wantsFields = stereo == Stereo::kFieldAlternative;
  const bool hasFields = timing.scanType == K2V_HDMI_SCAN_INTERLACED;
  const bool fits = std::max(timing.vTotal, timing.hTotal) <= UINT16_MAX / 2;
  if (!fits || (room != Room::kPixels && hasFields != wantsFields)) {
    RefuseWord(std::string("invalid timing for ").append(name), TimingName(timing),
               wantsFields ? "an interlaced timing" : "a progressive timing of up to 4320 lines");
  }
  const auto twice = [](uint16_t value) { return static_cast<uint16_t>(2 * value); };
  K2V_HDMI_TIMING_T packed = timing;
  if (room == Room::kPixels) {
    packed.active.w = twice(timing.active.w);
    packed.hTotal = twice(timing.hTotal);
    return packed;
  }
  const bool isBehind = room == Room::kBehind;
  packed.active.h =
      static_cast<uint16_t>(timing.active.h + (isBehind ? timing.vTotal : timing.active.h));
  packed.vTotal = twice(timing.vTotal);
  packed.hFreq = twice(timing.hFreq);
  packed.full_3d_timing = isBehind;
  return packed;
}

std::string SourceName(const HdmiPort& port) {
  std::string name(KindOf(port).name);
  if (port.stereo != Stereo::kNone) name.append(" ").append(PackingOf(port.stereo).name);
  return name;
}

bool FitsLink(const HdmiPort& port) {
  return EncodingOf(port).has_value();
}

uint32_t ColorStandard(const HdmiPort& port) {
  if (KindOf(port).eotf != K2V_HDMI_EOTF_SDR) return kWideGamut;
  return port.timing.active.h >= 720 ? K2V_COLOR_STANDARD_BT709 : K2V_COLOR_STANDARD_BT601;
}

uint32_t Eotf(const HdmiPort& port) {
  return KindOf(port).eotf;
}

uint32_t TmdsClockKHz(const HdmiPort& port) {
  const auto encoding = EncodingOf(port);
  return encoding ? encoding->tmdsKHz : 0;
}

uint32_t ColorDepth(const HdmiPort& port) {
  return KindOf(port).depth;
}
int HdcpVersion(const HdmiPort& port) {
  return KindOf(port).hdcpVersion;
}
bool SendsControlPackets(const HdmiPort& port) {
  return !IsDvi(port);
}
bool MutesChanges(const HdmiPort& port) {
  return !KindOf(port).isRgb;
}
bool IsScrambled(const HdmiPort& port) {
  return TmdsClockKHz(port) > kMaxUnscrambledKHz;
}

int MakeAvi(const HdmiPort& port, K2V_HAL_VFE_HDMI_AVI_INFO_T& info) {
  constexpr uint8_t kAsPicture = 8;
  const auto encoding = EncodingOf(port);
  info = {};
  if (IsDvi(port) || !encoding) return K2V_RHAL_ERR_FAIL;
  info.VideoIdCode = HdmiVic(port) != 0 ? 0 : port.timing.format;
  info.eHDMIMode = port.timing.mode;
  info.ePixelEncoding = encoding->pixels;
  info.nVersion = 2;
  info.nLength = 13;
  info.bActiveFormat = 1;
  info.ePictureAspect = PictureAspect(port.timing, PackingOf(port.stereo).room);
  info.eActiveAspect = kAsPicture;
  info.nPixelRepetition = PixelRepetition(port.timing);
  SetColorimetry(port, info);
  if (port.kind == SourceKind::kPc) SetPcPicture(info);
  return K2V_RHAL_OK;
}

int MakeSpd(const HdmiPort& port, K2V_HAL_VFE_HDMI_SPD_INFO_T& info) {
  const Kind& kind = KindOf(port);
  info = {};
  if (IsDvi(port)) return K2V_RHAL_ERR_FAIL;
  std::strncpy(info.VendorName, kind.vendor, sizeof(info.VendorName) - 1);
  std::strncpy(info.ProductDescription, kind.product, sizeof(info.ProductDescription) - 1);
  info.nVersion = 1;
  info.nLength = 25;
  info.SourceDeviceInfo = kind.deviceInfo;
  return K2V_RHAL_OK;
}

int MakeVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_VSI_INFO_T& info) {
  info = {};
  if (IsDvi(port)) return K2V_RHAL_ERR_FAIL;
  const Packing& packing = PackingOf(port.stereo);
  info.nIeeeOui = K2V_HDMI_OUI_HDMI;
  info.nHdmiVic = HdmiVic(port);
  info.nVersion = 1;
  if (Announces3d(port)) {
    info.eVideoFormat = K2V_HDMI_VSI_3D;
    info.e3DStructure = packing.structure;
    info.e3DExtData = packing.extension;
    info.nLength = packing.length;
  } else {
    info.eVideoFormat =
        info.nHdmiVic != 0 ? K2V_HDMI_VSI_EXTENDED_RESOLUTION : K2V_HDMI_VSI_NO_FORMAT;
    info.nLength = info.nHdmiVic != 0 ? 5 : 4;
  }
  return K2V_RHAL_OK;
}

int MakeAllVsi(const HdmiPort& port, K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T& info) {
  info = {};
  K2V_HAL_VFE_HDMI_VSI_INFO_T hdmi;
  if (const int error = MakeVsi(port, hdmi)) return error;
  // The payload after the OUI: the format, then its additional fields.
  const auto format = static_cast<uint8_t>(hdmi.eVideoFormat << 5);
  const auto structure = static_cast<uint8_t>(hdmi.e3DStructure << 4);
  const auto extension = static_cast<uint8_t>(hdmi.e3DExtData << 4);
  const bool is3d = hdmi.eVideoFormat == K2V_HDMI_VSI_3D;
  AddVsi(info, hdmi.nIeeeOui, hdmi.nLength - kInfoFrameOuiBytes,
         {format, is3d ? structure : hdmi.nHdmiVic, extension});
  // Version 1 and, from a computer, the request for low latency.
  const uint8_t lowLatency = port.kind == SourceKind::kPc ? 2 : 0;
  if (IsScrambled(port)) AddVsi(info, K2V_HDMI_OUI_HDMI_FORUM, 2, {1, lowLatency});
  return K2V_RHAL_OK;
}

int MakeDrm(const HdmiPort& port, K2V_HAL_VFE_HDMI_DRM_INFO_T& info) {
  info = {};
  const uint32_t eotf = KindOf(port).eotf;
  if (eotf == K2V_HDMI_EOTF_SDR) return K2V_RHAL_ERR_FAIL;
  info.nVersion = 1;
  info.nLength = 26;
  info.eEOTFtype = eotf;
  if (eotf != K2V_HDMI_EOTF_PQ) return K2V_RHAL_OK;  // no data about the mastering display
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
  std::memcpy(ksv, KindOf(port).keySelection, K2V_HDMI_HDCP_ID_BYTES);
  return K2V_RHAL_OK;
}

}  // namespace sim
