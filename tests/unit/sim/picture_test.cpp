// Pixels: colour bars, written pixels, captured frames.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "HalSteps.h"
#include "SimHal.h"

bool operator==(const K2V_VIDEO_PIXEL_T& a, const K2V_VIDEO_PIXEL_T& b) {
  return a.cb == b.cb && a.y == b.y && a.cr == b.cr;
}

namespace {

using Rgb = std::array<int, 3>;

class Pictures : public testing::Test {
 protected:
  void Start(const std::string& timing) {
    simhal::PlugHdmi(0, timing);
    ASSERT_EQ(DoSteps(std::string(kHdmiOn) + " s-init s-open s-conn"), 0);
  }

  K2V_VIDEO_PIXEL_T Pixel(uint16_t x, uint16_t y) {
    K2V_VIDEO_RECT_T rect = {x, y, 1, 1};
    K2V_VIDEO_PIXEL_T pixel = {};
    uint32_t format = 9;
    EXPECT_EQ(K2V_RHAL_VSC_ReadVideoFrameBuffer(0, &rect, &pixel, &standard_, &format), 0);
    EXPECT_EQ(format, uint32_t{K2V_PIXEL_FORMAT_YCBCR444});
    return pixel;
  }

  void Capture(uint32_t place) {
    captured_.assign(K2V_CAPTURE_BYTES, 1);
    ASSERT_EQ(CaptureInto(place, captured_.data(), K2V_CAPTURE_BYTES), 0);
  }

  // A captured pixel, by its position on the 3840x2160 panel.
  Rgb Captured(size_t x, size_t y) const {
    const size_t at = 3 * (y / 4 * K2V_CAPTURE_WIDTH + x / 4);
    return {captured_[at], captured_[at + 1], captured_[at + 2]};
  }

  uint32_t standard_ = 9;
  std::vector<uint8_t> captured_;
};

constexpr Rgb kWhite = {255, 255, 255}, kYellow = {255, 255, 0}, kRed = {255, 0, 0},
              kBlue = {0, 0, 255}, kBlack = {0, 0, 0}, kGray = {128, 128, 128};

TEST_F(Pictures, BarsHaveTheStandardValuesUpToTheirEdges) {
  Start("1920x1080p60");
  // 100 % colour bars of BT.709 with 10 bits: Cb, Y, Cr.
  constexpr K2V_VIDEO_PIXEL_T kBars[] = {{512, 940, 512}, {64, 877, 553},  {615, 754, 64},
                                         {167, 691, 105}, {857, 313, 919}, {409, 250, 960},
                                         {960, 127, 471}, {512, 64, 512}};
  for (uint16_t bar = 0; bar < 8; ++bar) {
    EXPECT_TRUE(Pixel(static_cast<uint16_t>(bar * 240), 0) == kBars[bar]) << bar;
    EXPECT_TRUE(Pixel(static_cast<uint16_t>(bar * 240 + 239), 1079) == kBars[bar]) << bar;
  }
}

TEST_F(Pictures, ColourStandardFollowsTheSource) {
  // 100 % yellow, calculated manually from the luma weights of each standard.
  const struct {
    const char* timing;
    uint32_t standard;
    K2V_VIDEO_PIXEL_T yellow;
  } kCases[] = {{"3840x2160p60 hdr", K2V_COLOR_STANDARD_BT2020, {64, 888, 548}},
                {"1280x720p50", K2V_COLOR_STANDARD_BT709, {64, 877, 553}},
                {"720x576p50", K2V_COLOR_STANDARD_BT601, {64, 840, 585}}};
  simhal::Apply("lock 0 0");
  Start("1920x1080p60");
  for (const auto& [timing, standard, yellow] : kCases) {
    simhal::PlugHdmi(0, timing);
    const uint16_t x = static_cast<uint16_t>(TimingOf(0).active.w / 8);
    EXPECT_TRUE(Pixel(x, 0) == yellow) << timing << ' ' << Pixel(x, 0).y << ' ' << Pixel(x, 0).cr;
    EXPECT_EQ(standard_, standard) << timing;
  }
}

TEST_F(Pictures, WrittenPixelsAreReadBackUntilTheBufferIsUnfrozen) {
  Start("1920x1080p60");
  K2V_VIDEO_RECT_T rect = {100, 50, 3, 2};
  K2V_VIDEO_PIXEL_T written[6], read[6] = {};
  for (uint16_t i = 0; i < 6; ++i) written[i] = {i, static_cast<uint16_t>(100 + i), 1023};
  ASSERT_EQ(K2V_RHAL_VSC_WriteVideoFrameBuffer(0, &rect, written), 0);
  uint32_t standard = 0, format = 0;
  ASSERT_EQ(K2V_RHAL_VSC_ReadVideoFrameBuffer(0, &rect, read, &standard, &format), 0);
  EXPECT_TRUE(std::equal(written, written + 6, read));
  EXPECT_EQ(Pixel(102, 51).y, 105);
  EXPECT_EQ(Pixel(103, 51).y, 940);
  EXPECT_EQ(Pixel(99, 50).y, 940);
  K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, 1);
  EXPECT_EQ(Pixel(100, 50).y, 100);
  K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, 0);
  EXPECT_EQ(Pixel(100, 50).y, 940);
}

TEST_F(Pictures, BufferAcceptsAtMostAStandardDefinitionFrame) {
  Start("3840x2160p60");
  std::vector<K2V_VIDEO_PIXEL_T> pixels(std::size_t{720} * 577, {512, 500, 512});
  K2V_VIDEO_RECT_T rect = {3120, 1584, 720, 576};
  EXPECT_EQ(K2V_RHAL_VSC_WriteVideoFrameBuffer(0, &rect, pixels.data()), 0);
  EXPECT_EQ(Pixel(3839, 2159).y, 500);
  rect = {0, 0, 720, 577};
  EXPECT_EQ(K2V_RHAL_VSC_WriteVideoFrameBuffer(0, &rect, pixels.data()), K2V_RHAL_ERR_PARAM);
}

TEST_F(Pictures, PanelShowsWindowsAtTheirPositionsAndBlanksInTheirColour) {
  Start("1920x1080p60");
  K2V_RHAL_VSC_SetInputRegion(0, {1200, 0, 240, 1080});  // the red bar
  K2V_RHAL_VSC_SetOutputRegion(0, {0, 0, 1920, 1080});
  K2V_RHAL_VSC_Open(1);
  K2V_RHAL_VSC_Connect(1, kPlayback);
  K2V_RHAL_VSC_SetOutputRegion(1, {1600, 800, 960, 540});
  Capture(K2V_VIDEO_DDI_DISPLAY_OUTPUT);
  EXPECT_EQ(Captured(0, 0), kRed);
  EXPECT_EQ(Captured(1916, 0), kRed);
  EXPECT_EQ(Captured(1920, 0), kBlack);    // outside both windows
  EXPECT_EQ(Captured(1600, 800), kWhite);  // the sub window is in front of the main window
  EXPECT_EQ(Captured(1600 + 120, 800), kYellow);
  EXPECT_EQ(Captured(1596, 800), kRed);
  K2V_RHAL_VSC_SetWinBlank(1, 1, K2V_VIDEO_DDI_WIN_COLOR_GRAY);
  K2V_RHAL_VSC_SetWinBlank_Sync_memc(0, 1, K2V_VIDEO_DDI_WIN_COLOR_BLUE);
  Capture(K2V_VIDEO_DDI_DISPLAY_OUTPUT);
  EXPECT_EQ(Captured(1600, 800), kGray);
  EXPECT_EQ(Captured(0, 0), kBlue);
  Capture(K2V_VIDEO_DDI_SCALER_OUTPUT);  // the scaler applies neither blanking nor position
  EXPECT_EQ(Captured(3836, 2156), kRed);
}

TEST_F(Pictures, FrozenBufferKeepsItsPictureWithoutASignal) {
  Start("1920x1080p60");
  K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, 1);
  simhal::Unplug(0);
  EXPECT_EQ(Pixel(1919, 0).y, 64);
  K2V_RHAL_VSC_FreezeVideoFrameBuffer(0, 0);
  EXPECT_EQ(DoSteps("s-read"), K2V_RHAL_ERR_NO_SIGNAL);
}

TEST_F(Pictures, FrozenWindowKeepsItsPictureWithoutASignal) {
  Start("1920x1080p60");
  K2V_RHAL_VSC_SetWinFreeze(0, 1);
  simhal::Unplug(0);
  Capture(K2V_VIDEO_DDI_SCALER_OUTPUT);
  EXPECT_EQ(Captured(0, 0), kWhite);
  K2V_RHAL_VSC_SetWinFreeze(0, 0);
  EXPECT_EQ(DoSteps("s-cap"), K2V_RHAL_ERR_NO_SIGNAL);
  Capture(K2V_VIDEO_DDI_DISPLAY_OUTPUT);
  EXPECT_EQ(Captured(0, 0), kBlack);
}

}  // namespace
