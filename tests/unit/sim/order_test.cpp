// Order of calls, arguments and trace text of the receiver and the scaler.
#include <gtest/gtest.h>

#include "HalSteps.h"
#include "SimHal.h"

namespace {

constexpr int kOk = K2V_RHAL_OK, kParam = K2V_RHAL_ERR_PARAM, kOrder = K2V_RHAL_ERR_ORDER,
              kAlready = K2V_RHAL_ERR_ALREADY, kBusy = K2V_RHAL_ERR_BUSY,
              kNoSignal = K2V_RHAL_ERR_NO_SIGNAL;

struct OrderCase {
  const char* steps;
  int lastResult;
};

void CheckOrder(std::initializer_list<OrderCase> cases) {
  for (const auto& [steps, lastResult] : cases) {
    simhal::Reset();
    EXPECT_EQ(DoSteps(steps), lastResult) << steps << '\n' << simhal::State();
  }
}

TEST(Hdmi, EnforcesOrderAndArguments) {
  CheckOrder({{"h-uninit", kOrder},
              {"h-open", kOrder},
              {"h-edid", kOrder},
              {"h-hpd", kOrder},
              {"h-init h-init", kAlready},
              {"h-init h-edid4", kParam},
              {"h-init h-edid-null", kParam},
              {"h-init h-conn0", kOrder},
              {"h-init h-close", kOrder},
              {"h-init h-open", kOk},
              {"h-init h-open h-open", kAlready},
              {"h-init h-open h-uninit h-open", kOrder},
              {"h-init h-open h-conn4", kParam},
              {"h-init h-open h-disc0", kOrder},
              {"h-init h-open h-time0", kOrder},
              {"h-init h-open h-time4", kParam},
              {"h-init h-open h-time-null", kParam},
              {"h-init h-open h-conn0 h-conn0", kAlready},
              {"h-init h-open h-conn0 h-close h-open h-time0", kOrder},
              {"h-init h-open h-close h-uninit h-init", kOk}});
}

TEST(Scaler, EnforcesOrderAndArguments) {
  CheckOrder({{"s-open", kOrder},
              {"s-init s-open2", kParam},
              {"s-init s-init s-open", kOk},
              {"s-init s-open s-open", kAlready},
              {"s-init s-conn", kOrder},
              {"s-init s-in", kOrder},
              {"s-init s-in-get", kOrder},
              {"s-init s-out", kOrder},
              {"s-init s-freeze", kOrder},
              {"s-init s-open s-in", kOk},
              {"s-init s-open s-in-null", kParam},
              {"s-init s-open s-conn-type6", kParam},
              {"s-init s-open s-conn-mode4", kParam},
              {"s-init s-open s-disc", kOrder},
              {"s-init s-open s-freeze-fb", kOrder},
              {"s-init s-open s-read", kOrder},
              {"s-init s-open s-conn s-conn", kOk},
              {"s-init s-open s-conn s-conn-play", kBusy},
              {"s-init s-open s-conn s-disc s-conn-play s-read", kOk},
              {"s-init s-open s-conn s-read", kNoSignal},
              {"s-init s-open s-conn s-write", kNoSignal},
              {"s-cap", kNoSignal},
              {"s-cap-panel", kOk},
              {"s-cap-small", kParam},
              {"s-cap-place2", kParam},
              {"s-blank", kOk},
              {"s-blank-on2", kParam},
              {"s-blank-color3", kParam},
              {"s-rgb", kOk},
              {"s-rgb2", kParam},
              {"s-preview", kOk},
              {"s-dm-conn", kOrder},
              {"s-dm-open s-dm-open", kAlready},
              {"s-dm-open s-dm-conn s-dm-conn", kAlready}});
}

TEST(Trace, DecodesArgumentsAndOutputs) {
  DoSteps("h-init h-edid h-edid-null h-open h-hpd h-time0 h-conn0 h-time0 s-init s-open s-in-null");
  K2V_RHAL_VSC_Connect(0, {2, 0x1f0, 1});
  DoSteps("s-in-get s-blank");
  K2V_VIDEO_RECT_T rect = {0, 0, 2, 1};
  K2V_VIDEO_PIXEL_T pixels[2] = {};
  uint32_t standard = 9, format = 9;
  K2V_RHAL_VSC_ReadVideoFrameBuffer(0, &rect, pixels, &standard, &format);
  rect.x = 3839;
  K2V_RHAL_VSC_ReadVideoFrameBuffer(0, &rect, pixels, &standard, &format);
  const std::vector<std::string> expected = {
      "K2V_RHAL_VFE_HDMI_Initialize() = 0",
      "K2V_RHAL_VFE_HDMI_WriteEDID(0, 256 bytes crc32=de588bdb) = 0",
      "K2V_RHAL_VFE_HDMI_WriteEDID(0, NULL) = -2",
      "K2V_RHAL_VFE_HDMI_Open() = 0",
      "K2V_RHAL_VFE_HDMI_EnableHPD() = 0",
      "K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, {}) = -3",
      "K2V_RHAL_VFE_HDMI_Connect(0) = 0",
      "K2V_RHAL_VFE_HDMI_GetPortTimingInfo(0, {format=97, 3840x2160p60.00, total=4400x2250, "
      "porch=384x82, hFreq=13500, mode=1}) = 0",
      "K2V_RHAL_VSC_Initialize() = 0",
      "K2V_RHAL_VSC_Open(0) = 0",
      "K2V_RHAL_VSC_GetInputRegion(0, NULL) = -2",
      "K2V_RHAL_VSC_Connect(0, {type=2, attr=0x1f0, output=1}) = 0",
      "K2V_RHAL_VSC_GetInputRegion(0, {x=0, y=0, w=3840, h=2160}) = 0",
      "K2V_RHAL_VSC_SetWinBlank(0, 1, 2) = 0",
      "K2V_RHAL_VSC_ReadVideoFrameBuffer(0, {x=0, y=0, w=2, h=1}, 12 bytes crc32=affa92b5, {2}, "
      "{0}) = 0",
      "K2V_RHAL_VSC_ReadVideoFrameBuffer(0, {x=3839, y=0, w=2, h=1}, 12 bytes, {}, {}) = -2"};
  EXPECT_EQ(simhal::Calls(), expected);
}

TEST(Hdmi, StoresTheEdidOfEachPort) {
  std::vector<uint8_t> edid(K2V_HDMI_EDID_BYTES, 0x5a);
  DoSteps("h-init");
  ASSERT_EQ(K2V_RHAL_VFE_HDMI_WriteEDID(3, edid.data()), 0);
  EXPECT_EQ(simhal::StoredEdid(3), edid);
  EXPECT_TRUE(simhal::StoredEdid(2).empty());
}

TEST(Scaler, RegionsStayInsideSourceAndPanel) {
  DoSteps("h-init h-hpd h-open h-conn1 s-init s-open s-conn");  // 1920x1080
  const struct {
    K2V_VIDEO_RECT_T region;
    int input, output;
  } kCases[] = {
      {{0, 0, 1920, 1080}, kOk, kOk},       {{1, 0, 1920, 1080}, kParam, kOk},
      {{0, 1, 1920, 1080}, kParam, kOk},    {{1919, 1079, 1, 1}, kOk, kOk},
      {{0, 0, 0, 1080}, kParam, kParam},    {{0, 0, 1920, 0}, kParam, kParam},
      {{0, 0, 3840, 2160}, kParam, kOk},    {{1, 0, 3840, 2160}, kParam, kParam},
      {{3839, 2159, 1, 2}, kParam, kParam}, {{65535, 0, 65535, 1}, kParam, kParam},
  };
  for (const auto& [region, input, output] : kCases) {
    EXPECT_EQ(K2V_RHAL_VSC_SetInputRegion(0, region), input);
    EXPECT_EQ(K2V_RHAL_VSC_SetOutputRegion(0, region), output);
  }
}

TEST(Scaler, ConnectUsesTheLowestConnectedPortWithASignal) {
  simhal::Apply("lock 0 0");
  DoSteps("h-init h-hpd h-open h-conn0 h-conn1 s-init s-open");
  simhal::Apply("signal 0 off");
  K2V_VIDEO_RECT_T region = {};
  ASSERT_EQ(DoSteps("s-conn"), kOk);
  K2V_RHAL_VSC_GetInputRegion(0, &region);
  EXPECT_EQ(region.w, 1920);
  simhal::Apply("signal 0 on");
  ASSERT_EQ(DoSteps("s-conn"), kOk);
  K2V_RHAL_VSC_GetInputRegion(0, &region);
  EXPECT_EQ(region.w, 3840);
}

}  // namespace
