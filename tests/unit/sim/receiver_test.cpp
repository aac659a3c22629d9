// Values that the simulated receivers report for sources of all kinds, and the call order that they
// enforce.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "SimHal.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vfe_vby1rx.h"

namespace {

constexpr int kOk = K2V_RHAL_OK, kFail = K2V_RHAL_ERR_FAIL, kParam = K2V_RHAL_ERR_PARAM,
              kOrder = K2V_RHAL_ERR_ORDER, kAlready = K2V_RHAL_ERR_ALREADY,
              kNoSignal = K2V_RHAL_ERR_NO_SIGNAL;

void BringUp() {
  K2V_RHAL_VFE_HDMI_Initialize();
  K2V_RHAL_VFE_HDMI_Open();
  K2V_RHAL_VFE_HDMI_EnableHPD();
}

/// An EDID that lists 3840x2160p60 also for 4:2:0, in a capability map, and 4096x2160p60 for 4:2:0
/// only. Bit 0 of the map belongs to another timing.
void StoreEdid(uint8_t port) {
  constexpr uint8_t kExtension[] = {
      0x02, 0x03, 0x0e, 0x00, 0x42, 0x10, 0x61,
      0xe2, 0x0f, 0x02, 0xe2, 0x0e, 0x66, 0xe0};  // the last block has no tag
  uint8_t edid[K2V_HDMI_EDID_BYTES] = {};
  std::copy(std::begin(kExtension), std::end(kExtension), edid + K2V_HDMI_EDID_BYTES / 2);
  ASSERT_EQ(K2V_RHAL_VFE_HDMI_WriteEDID(port, edid), kOk);
}

TEST(HdmiSource, SendsWhatFitsItsKindTimingAndLink) {
  constexpr uint32_t kRgb = K2V_HDMI_PIXEL_RGB, k422 = K2V_HDMI_PIXEL_YCBCR422,
                     k444 = K2V_HDMI_PIXEL_YCBCR444, k420 = K2V_HDMI_PIXEL_YCBCR420;
  const struct {
    const char* source;
    uint32_t vic, hdmiVic, pixel, colorimetry, itContent, aspect, repetition, depth, tmdsKHz,
        scrambled;
    int hdcp;
    uint32_t vendorInfoFrames;
  } kCases[] = {
      // Kinds, and formats for bandwidths that are too small for full chroma.
      {"3840x2160p60 hdr", 97, 0, k420, 3, 0, 2, 0, 1, 371250, 1, 2, 2},
      {"3840x2160p50 hdr", 96, 0, k422, 3, 0, 2, 0, 1, 594000, 1, 2, 2},  // not in the map
      {"4096x2160p60 hlg", 102, 0, k420, 3, 0, 0, 0, 1, 371250, 1, 2, 2},
      {"3840x2160p60 deep", 97, 0, k420, 2, 0, 2, 0, 2, 445500, 1, 1, 2},
      {"1920x1080p60 hdr", 16, 0, k444, 3, 0, 2, 0, 1, 185625, 0, 2, 1},
      {"1920x1080p60 deep", 16, 0, k444, 2, 0, 2, 0, 2, 222750, 0, 1, 1},
      {"3840x2160p60 pc", 97, 0, kRgb, 0, 1, 2, 0, 0, 594000, 1, 0, 2},
      // Codes and aspect ratios.
      {"1920x1080i50", 20, 0, k444, 2, 0, 2, 0, 0, 74250, 0, 1, 1},
      {"720x576p50", 18, 0, k444, 1, 0, 2, 0, 0, 27000, 0, 1, 1},
      {"720x576i50", 22, 0, k444, 1, 0, 2, 1, 0, 27000, 0, 1, 1},
      {"720x480i60", 7, 0, k444, 1, 0, 2, 1, 0, 27027, 0, 1, 1},
      {"1280x720p100", 41, 0, k444, 2, 0, 2, 0, 0, 148500, 0, 1, 1},
      {"1280x720p120", 47, 0, k444, 2, 0, 2, 0, 0, 148500, 0, 1, 1},
      {"2560x1080p60", 90, 0, k444, 2, 0, 0, 0, 0, 198000, 0, 1, 1},
      {"3840x2160p24", 0, 3, k444, 2, 0, 2, 0, 0, 297000, 0, 1, 1},
      {"4096x2160p24", 0, 4, k444, 2, 0, 0, 0, 0, 297000, 0, 1, 1},
      {"640x480p60", 1, 0, k444, 1, 0, 1, 0, 0, 25200, 0, 1, 1},
      {"1920x1200p60 pc", 0, 0, kRgb, 0, 1, 0, 0, 0, 154128, 0, 0, 1},  // 16:10
      {"1280x1024p60 pc", 0, 0, kRgb, 0, 1, 0, 0, 0, 91065, 0, 0, 1},   // 5:4
      {"1366x768p60 pc", 0, 0, kRgb, 0, 1, 2, 0, 0, 72332, 0, 0, 1},
      {"1600x1200p60 pc", 0, 0, kRgb, 0, 1, 1, 0, 0, 130416, 0, 0, 1},
  };
  simhal::Apply("lock 0 0");
  BringUp();
  StoreEdid(2);
  K2V_RHAL_VFE_HDMI_Connect(2);
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.source);
    simhal::PlugHdmi(2, c.source);
    K2V_HAL_VFE_HDMI_PACKET_INFO_T all{};
    K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T vendors{};
    K2V_HAL_VFE_HDMI_CLOCK_STATUS_T clock{};
    uint32_t depth = 99, scrambled = 99;
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortPacketInfo(2, &all), kOk);
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortMultiVSIInfo(2, &vendors), kOk);
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetClockStatus(2, &clock), kOk);
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetColorDepth(2, &depth), kOk);
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetScdcStatus(2, K2V_HDMI_SCDC_SCRAMBLING_STATUS, &scrambled), kOk);
    EXPECT_EQ(all.stAVI.VideoIdCode, c.vic);
    EXPECT_EQ(all.stVSI.nHdmiVic, c.hdmiVic);
    EXPECT_EQ(all.stAVI.ePixelEncoding, c.pixel);
    EXPECT_EQ(all.stAVI.eColorimetry, c.colorimetry);
    EXPECT_EQ(all.stAVI.bItContent, c.itContent);
    EXPECT_EQ(all.stAVI.ePictureAspect, c.aspect);
    EXPECT_EQ(all.stAVI.nPixelRepetition, c.repetition);
    EXPECT_EQ(depth, c.depth);
    EXPECT_EQ(clock.nTmdsClockKHz, c.tmdsKHz);
    EXPECT_EQ(scrambled, c.scrambled);
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_Get_HDCP_Version(2), c.hdcp);
    EXPECT_EQ(vendors.nCount, c.vendorInfoFrames);
  }
}

TEST(HdmiSource, IsNotLockedIfTheTimingExceedsTheLink) {
  simhal::Apply("lock 0 0");
  BringUp();
  K2V_RHAL_VFE_HDMI_Connect(0);
  const struct {
    const char* source;
    bool withEdid;
    bool locks;
  } kCases[] = {
      {"3840x2160p60 hdr", false, true},  // fits with subsampled chroma
      {"3840x2160p60", false, true},      {"3840x2160p120", true, false},
      {"3840x2160p120 hdr", true, false}, {"4096x2160p60 pc", false, true},
      {"4096x2160p100 pc", true, false},  {"1920x1080p60 dvi", true, true},
      {"1920x1080p120 dvi", true, false},  // single link, 165 MHz
      {"1920x1080p120", true, true},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.source);
    uint8_t none[K2V_HDMI_EDID_BYTES] = {};
    K2V_RHAL_VFE_HDMI_WriteEDID(0, none);
    if (c.withEdid) StoreEdid(0);
    simhal::PlugHdmi(0, c.source);
    K2V_HDMI_TIMING_T timing{};
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, &timing), kOk);
    EXPECT_EQ(timing.active.w != 0, c.locks);
    EXPECT_EQ(simhal::State().find("more than the link carries") == std::string::npos, c.locks);
  }
}

TEST(HdmiSource, Reports3dFormats) {
  simhal::Apply("lock 0 0");
  BringUp();
  K2V_RHAL_VFE_HDMI_Connect(0);
  const struct {
    const char* source;
    int width, height, vTotal;
    uint32_t full, tmdsKHz, structure, extension;
    std::vector<uint8_t> data;
  } kCases[] = {
      {"1920x1080p24 frame-packing", 1920, 2205, 2250, 1, 148500, 0, 0, {0x40, 0x00}},
      {"1280x720p60 frame-packing", 1280, 1470, 1500, 1, 148500, 0, 0, {0x40, 0x00}},
      {"1920x1080i60 side-by-side", 1920, 1080, 1125, 0, 74250, 8, 1, {0x40, 0x80, 0x10}},
      {"1920x1080p24 top-and-bottom", 1920, 1080, 1125, 0, 74250, 6, 0, {0x40, 0x60}},
      {"1920x1080i60 field-alternative", 1920, 2205, 2250, 1, 148500, 1, 0, {0x40, 0x10}},
      {"1920x1080p24 line-alternative", 1920, 2160, 2250, 0, 148500, 2, 0, {0x40, 0x20}},
      {"1920x1080p24 side-by-side-full", 3840, 1080, 1125, 0, 148500, 3, 0, {0x40, 0x30}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.source);
    simhal::PlugHdmi(0, c.source);
    K2V_HDMI_TIMING_T timing{};
    K2V_HAL_VFE_HDMI_VSI_INFO_T vsi{};
    K2V_HAL_VFE_HDMI_MULTIPLE_VSI_T all{};
    K2V_HAL_VFE_HDMI_CLOCK_STATUS_T clock{};
    K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, &timing);
    K2V_RHAL_VFE_HDMI_GetPortVSIInfo(0, &vsi);
    K2V_RHAL_VFE_HDMI_GetPortMultiVSIInfo(0, &all);
    K2V_RHAL_VFE_HDMI_GetClockStatus(0, &clock);
    EXPECT_EQ(timing.active.w, c.width);
    EXPECT_EQ(timing.active.h, c.height);
    EXPECT_EQ(timing.vTotal, c.vTotal);
    EXPECT_EQ(timing.full_3d_timing, c.full);
    EXPECT_EQ(clock.nTmdsClockKHz, c.tmdsKHz);
    EXPECT_EQ(vsi.eVideoFormat, uint32_t{K2V_HDMI_VSI_3D});
    EXPECT_EQ(vsi.e3DStructure, c.structure);
    EXPECT_EQ(vsi.e3DExtData, c.extension);
    const auto* data = all.stVSI[0].nData;
    EXPECT_EQ(std::vector<uint8_t>(data, data + all.stVSI[0].nLength - 3), c.data);
  }
  ASSERT_EQ(simhal::Apply("plug 0 1280x720p50 frame-packing"), "");
  ASSERT_EQ(simhal::Apply("timing 0 1920x1080p24"), "");
  EXPECT_NE(simhal::State().find("1920x2205p24.00 sdr frame-packing"), std::string::npos);
  const struct {
    const char* command;
    const char* refusal;
  } kRefused[] = {
      {"timing 0 1920x1080i50", "invalid timing for frame-packing"},
      {"plug 1 1920x1080p24 field-alternative", "invalid timing for field-alternative"},
      {"plug 1 1920x1080i50 line-alternative", "invalid timing for line-alternative"},
      {"plug 1 1920x1080p24 dvi side-by-side", "DVI sources send no 3D info-frame"},
      {"plug 1 1920x1080p24 dvi line-alternative", "DVI sources send no 3D info-frame"},
  };
  for (const auto& [command, refusal] : kRefused)
    EXPECT_NE(simhal::Apply(command).find(refusal), std::string::npos) << command;
}

// The eyes share the frames of a 2D picture, and no info-frame announces these formats.
TEST(HdmiSource, DoesNotAnnounceOther3dFormats) {
  simhal::Apply("lock 0 0");
  BringUp();
  K2V_RHAL_VFE_HDMI_Connect(0);
  for (const std::string packing :
       {"line-interleave", "column-interleave", "checkerboard", "frame-sequential"}) {
    simhal::PlugHdmi(0, "1920x1080p24 " + packing);
    K2V_HDMI_TIMING_T timing{};
    K2V_HAL_VFE_HDMI_VSI_INFO_T vsi{};
    K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, &timing);
    K2V_RHAL_VFE_HDMI_GetPortVSIInfo(0, &vsi);
    EXPECT_EQ(timing.active.h, 1080) << packing;
    EXPECT_EQ(vsi.eVideoFormat, uint32_t{K2V_HDMI_VSI_NO_FORMAT}) << packing;
    EXPECT_NE(simhal::State().find("1920x1080p24.00 sdr " + packing), std::string::npos);
    EXPECT_EQ(simhal::Apply("plug 1 1920x1080p60 dvi " + packing), "");
  }
}

TEST(HdmiSource, DviHasNoPackets) {
  static uint8_t bytes[K2V_HDMI_HDCP_ID_BYTES];
  BringUp();
  simhal::PlugHdmi(0, "1280x1024p60 dvi");
  K2V_RHAL_VFE_HDMI_Connect(0);
  K2V_HDMI_TIMING_T timing{};
  K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, &timing);
  EXPECT_EQ(timing.active.w, 1280);
  EXPECT_EQ(timing.mode, K2V_HDMI_MODE_DVI);
  K2V_HAL_VFE_HDMI_PACKET_INFO_T all{};
  all.stSPD.nVersion = 9;
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortPacketInfo(0, &all), kOk);
  EXPECT_EQ(all.stAVI.nVersion + all.stSPD.nVersion + all.stVSI.nVersion, 0);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortAVIInfo(0, &all.stAVI), kFail);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortSPDInfo(0, &all.stSPD), kFail);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortVSIInfo(0, &all.stVSI), kFail);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetAVMute(0, bytes), kFail);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_Get_HDCP_Version(0), K2V_HDMI_HDCP_NONE);
}

TEST(HdmiSource, OnlyHdrReportsItsMasteringDisplay) {
  BringUp();
  K2V_HAL_VFE_HDMI_DRM_INFO_T drm{};
  K2V_RHAL_VFE_HDMI_Connect(0);
  K2V_RHAL_VFE_HDMI_Connect(1);
  ASSERT_EQ(K2V_RHAL_VFE_HDMI_GetDRMInfo(0, &drm), kOk);
  EXPECT_EQ(drm.eEOTFtype, static_cast<uint32_t>(K2V_HDMI_EOTF_PQ));
  // The x and y coordinates of BT.2020 red are 0.708 and 0.292.
  EXPECT_EQ(drm.stDisplayPrimaries[2].x, 35400);
  EXPECT_EQ(drm.stDisplayPrimaries[2].y, 14600);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetDRMInfo(1, &drm), kFail);
  simhal::Apply("lock 0 0");
  simhal::PlugHdmi(1, "3840x2160p50 hlg");
  ASSERT_EQ(K2V_RHAL_VFE_HDMI_GetDRMInfo(1, &drm), kOk);
  EXPECT_EQ(drm.eEOTFtype, static_cast<uint32_t>(K2V_HDMI_EOTF_HLG));
  EXPECT_EQ(drm.nMaxCLL, 0);
}

TEST(HdmiSource, OnlyHdcp1HasAKeySelectionVector) {
  simhal::Apply("lock 0 0");
  BringUp();
  K2V_RHAL_VFE_HDMI_Connect(0);
  for (const auto& [source, ones] : {std::pair{"1920x1080p60", 20},
                                     {"1920x1080p60 deep", 20},
                                     {"1920x1080p60 hdr", 0},
                                     {"1920x1080p60 pc", 0}}) {
    uint8_t ksv[K2V_HDMI_HDCP_ID_BYTES] = {};
    simhal::PlugHdmi(0, source);
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetSourceKSVData(0, ksv), kOk);
    int count = 0;
    for (const uint8_t byte : ksv) count += std::popcount(byte);
    EXPECT_EQ(count, ones) << source;
  }
}

struct Signal {
  int width;
  int mute;  // mute state of the receiver; negative: error code
};

Signal PollPort0() {
  K2V_HDMI_TIMING_T timing{};
  uint8_t muted = 99;
  const int result = K2V_RHAL_VFE_HDMI_GetAVMute(0, &muted);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, &timing), kOk);
  return {timing.active.w, result == kOk ? muted : result};
}

TEST(HdmiLock, IsLostIfTheSourceStartsOrChangesItsTiming) {
  constexpr Signal kNone = {0, kNoSignal};
  const struct {
    const char* before;
    const char* change;
    Signal first, second, third;
  } kCases[] = {
      {"", "timing 0 1920x1080p50", {0, 1}, {0, 1}, {1920, 0}},
      {"plug 0 1920x1200p60 pc", "timing 0 1920x1080p50", kNone, kNone, {1920, 0}},
      {"mute 0 on", "timing 0 1920x1080p50", {0, 1}, {0, 1}, {1920, 1}},
      {"unplug 0", "plug 0 1920x1080p50", kNone, kNone, {1920, 0}},
      {"", "plug 0 1920x1080p50", kNone, kNone, {1920, 0}},
      {"signal 0 off", "signal 0 on", kNone, kNone, {3840, 0}},
      {"", "signal 0 on", {3840, 0}, {3840, 0}, {3840, 0}},
      {"signal 0 off", "timing 0 1920x1080p50", kNone, kNone, kNone},
      {"", "timing 1 1920x1080p50", {3840, 0}, {3840, 0}, {3840, 0}},
      {"lock 0 0", "timing 0 1920x1080p50", {1920, 0}, {1920, 0}, {1920, 0}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.before) + ", " + c.change);
    simhal::Reset();
    BringUp();
    simhal::Apply("lock 0 0");
    K2V_RHAL_VFE_HDMI_Connect(0);
    simhal::Apply(c.before);
    if (!std::string(c.before).starts_with("lock")) simhal::Apply("lock 0 2");
    ASSERT_EQ(simhal::Apply(c.change), "");
    for (const Signal& expected : {c.first, c.second, c.third}) {
      const Signal seen = PollPort0();
      EXPECT_EQ(seen.width, expected.width);
      EXPECT_EQ(seen.mute, expected.mute);
    }
  }
}

TEST(HdmiLock, IsLostIfTheHotPlugLineIsRaisedAgain) {
  simhal::Apply("lock 0 2");
  BringUp();
  K2V_RHAL_VFE_HDMI_Connect(0);
  for (const auto& raise : std::vector<std::function<int()>>{
           [] { return K2V_RHAL_VFE_HDMI_Set_HotPlug(0, 1); }, K2V_RHAL_VFE_HDMI_EnableHPD}) {
    EXPECT_EQ(raise(), kOk);
    EXPECT_EQ(PollPort0().width, 3840) << "it was raised already";
    EXPECT_EQ(K2V_RHAL_VFE_HDMI_Set_HotPlug(0, 0), kOk);
    EXPECT_EQ(PollPort0().width, 0);
    EXPECT_EQ(raise(), kOk);
    for (const int width : {0, 0, 3840}) EXPECT_EQ(PollPort0().width, width);
  }
}

TEST(HdmiLock, TakesTime) {
  BringUp();
  K2V_RHAL_VFE_HDMI_Connect(0);
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(simhal::Apply("timing 0 1920x1080p50"), "");
  EXPECT_NE(simhal::State().find("connected, not locked"), std::string::npos);
  K2V_HAL_VFE_HDMI_CLOCK_STATUS_T clock{};
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetClockStatus(0, &clock), kOk);
  EXPECT_EQ(clock.bPllLocked, 0);
  while (PollPort0().width == 0) std::this_thread::yield();
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(299));
  // A receiver that is started while a source is connected locks to its signal immediately.
  simhal::Apply("timing 0 3840x2160p60");
  K2V_RHAL_VFE_HDMI_Disconnect(0);
  K2V_RHAL_VFE_HDMI_Connect(0);
  EXPECT_EQ(PollPort0().width, 3840);
}

TEST(HdmiPort, StoresEdidAndHdcpDataSeparately) {
  K2V_RHAL_VFE_HDMI_Initialize();
  uint8_t written[K2V_HDMI_HDCP_BYTES], read[K2V_HDMI_HDCP_BYTES] = {};
  for (int i = 0; i < K2V_HDMI_HDCP_BYTES; ++i) written[i] = static_cast<uint8_t>(255 - i);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_WriteHDCP(3, written), kOk);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_ReadHDCP(3, read), kOk);
  EXPECT_TRUE(std::equal(written, written + K2V_HDMI_HDCP_BYTES, read));
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_ReadEDID(3, read), kOk);
  EXPECT_EQ(read[0], 0);
  K2V_RHAL_VFE_HDMI_WriteEDID(2, written);
  K2V_RHAL_VFE_HDMI_ReadEDID(2, read);
  EXPECT_TRUE(std::equal(written, written + K2V_HDMI_EDID_BYTES, read));
}

TEST(HdmiPort, ConnectionStateFollowsCableAndHotPlug) {
  K2V_RHAL_VFE_HDMI_Initialize();
  const auto state = [] {
    uint8_t connected = 99;
    K2V_RHAL_VFE_HDMI_GetConnectionState(0, &connected);
    return int{connected};
  };
  K2V_RHAL_VFE_HDMI_Open();
  EXPECT_EQ(state(), 0) << "no source sees a hot-plug line yet";
  K2V_RHAL_VFE_HDMI_Connect(0);
  EXPECT_EQ(state(), 1) << "connecting raises the port's line";
  K2V_RHAL_VFE_HDMI_Set_HotPlug(0, 0);
  EXPECT_EQ(state(), 0);
  K2V_RHAL_VFE_HDMI_Disconnect(0);
  K2V_RHAL_VFE_HDMI_Connect(0);
  EXPECT_EQ(state(), 0) << "but connecting does not raise a line that is held low";
  K2V_RHAL_VFE_HDMI_EnableHPD();
  EXPECT_EQ(state(), 1);
  simhal::Apply("signal 0 off");
  EXPECT_EQ(state(), 1);
  simhal::Unplug(0);
  EXPECT_EQ(state(), 0);
}

TEST(HdmiStatus, NeedsASignalAndAnOpenReceiver) {
  static K2V_HAL_VFE_HDMI_AVI_INFO_T avi;
  static uint8_t bytes[K2V_HDMI_EDID_BYTES];
  simhal::Apply("lock 0 0");
  BringUp();
  K2V_RHAL_VFE_HDMI_Connect(0);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortAVIInfo(0, &avi), kOk);
  ASSERT_EQ(simhal::Apply("signal 0 off"), "");
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetPortAVIInfo(0, &avi), kNoSignal);
  K2V_RHAL_VFE_HDMI_Close();
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_GetAVMute(0, bytes), kOrder);
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_ReadEDID(0, bytes), kOk);
  K2V_RHAL_VFE_HDMI_Uninitialize();
  EXPECT_EQ(K2V_RHAL_VFE_HDMI_ReadEDID(0, bytes), kOrder);
}

TEST(Vby1, FollowsItsInputsAndEnforcesOrder) {
  constexpr uint32_t kSource = K2V_VFE_TIMING_SOURCE_VBY1RX;
  K2V_VBY1RX_TIMING_T timing{};
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_GetTimingInfo(&timing, kSource), kOrder);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_Open(), kOrder);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_Initialize(), kOk);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_Initialize(), kAlready);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_Connect(0), kOrder);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_Open(), kOk);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_Connect(3), kParam);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_Connect(2), kOk);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_GetTimingInfo(nullptr, kSource), kParam);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_GetTimingInfo(&timing, kSource - 1), kParam);
  EXPECT_EQ(K2V_RHAL_VFE_VBY1RX_GetTimingInfo(&timing, kSource), kOk);
  EXPECT_EQ(timing.active.w, 0);
  EXPECT_EQ(simhal::Apply("lock 0 2"), "");
  EXPECT_EQ(simhal::Apply("vby1 plug 2 3840x2160p60"), "");
  for (const int height : {0, 0, 2160}) {
    K2V_RHAL_VFE_VBY1RX_GetTimingInfo(&timing, kSource);
    EXPECT_EQ(timing.active.h, height);
  }
  EXPECT_EQ(simhal::Apply("vby1 plug 1 1920x1080p60"), "") << "not the selected one";
  K2V_RHAL_VFE_VBY1RX_GetTimingInfo(&timing, kSource);
  EXPECT_EQ(timing.active.h, 2160);
  EXPECT_EQ(simhal::Apply("vby1 unplug 2"), "");
  K2V_RHAL_VFE_VBY1RX_GetTimingInfo(&timing, kSource);
  EXPECT_EQ(timing.active.h, 0);
  EXPECT_EQ(simhal::Apply("vby1 plug 2"),
            "missing timing after 'plug 2': expected plug PORT TIMING");
  EXPECT_EQ(simhal::Apply("vby1 pull 2"),
            "invalid arguments 'pull 2': expected plug PORT TIMING or unplug PORT");
}

}  // namespace
