// A board in this process, and a view of its panel.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>

#include "Image.h"
#include "Panel.h"
#include "core/Command.h"
#include "core/SharedBoard.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vsc.h"

using Rgb = std::array<int, 3>;

/// A pixel of a picture with three bytes per pixel.
inline Rgb PixelOf(const AVFrame& picture, int x, int y) {
  const uint8_t* pixel =
      picture.data[0] + std::ptrdiff_t{y} * picture.linesize[0] + std::ptrdiff_t{3} * x;
  return {pixel[0], pixel[1], pixel[2]};
}

class PanelFixture : public testing::Test {
 protected:
  PanelFixture() {
    sim::PowerOn();
    Do("lock 0 0");
  }

  static void Do(const std::string& command) { sim::Apply(*sim::BoardLock(), command); }

  /// Connects the main window to HDMI port 0 with a source of that timing.
  static void Connect(const std::string& source = "1920x1080p60") {
    Do("plug 0 " + source);
    K2V_RHAL_VFE_HDMI_Initialize();
    K2V_RHAL_VFE_HDMI_EnableHPD();
    K2V_RHAL_VFE_HDMI_Open();
    K2V_RHAL_VFE_HDMI_Connect(0);
    K2V_RHAL_VSC_Initialize();
    K2V_RHAL_VSC_Open(0);
    ASSERT_EQ(K2V_RHAL_VSC_Connect(0, {K2V_VSC_INPUTSRC_HDMI, 0, 0}), 0);
  }

  static void Disconnect() { K2V_RHAL_VSC_Disconnect(0, {K2V_VSC_INPUTSRC_HDMI, 0, 0}); }

  /// Looks at the panel at a given board time.
  void LookAt(int64_t ms) {
    view_ = picture::Converted(panel_.Look(*sim::BoardLock(), ms), AV_PIX_FMT_RGB24);
  }

  /// The current colour at a position of the view, which has 960x540 pixels.
  Rgb Seen(int x, int y) {
    LookAt(1000);
    return InView(x, y);
  }

  /// Like `Seen`, in the last view.
  Rgb InView(int x, int y) const { return PixelOf(*view_, x, y); }

  /// The middle of one of the eight bars.
  Rgb Bar(int bar) { return Seen(60 + 120 * bar, 270); }

  panel::Panel panel_;

 private:
  picture::Picture view_;
};

/// Checks that each component is within `tolerance` of the expected one.
inline testing::AssertionResult IsNear(const Rgb& seen, const Rgb& expected, int tolerance = 2) {
  for (size_t i = 0; i < seen.size(); ++i) {
    if (std::abs(seen[i] - expected[i]) > tolerance) {
      return testing::AssertionFailure()
             << "seen " << seen[0] << ',' << seen[1] << ',' << seen[2] << ", expected "
             << expected[0] << ',' << expected[1] << ',' << expected[2];
    }
  }
  return testing::AssertionSuccess();
}

constexpr Rgb kWhite = {255, 255, 255}, kYellow = {255, 255, 0}, kCyan = {0, 255, 255},
              kGreen = {0, 255, 0}, kMagenta = {255, 0, 255}, kRed = {255, 0, 0},
              kBlue = {0, 0, 255}, kBlack = {0, 0, 0}, kGrey = {128, 128, 128};
