// Effects of the picture-quality settings on colours.
#include <functional>
#include <vector>

#include "PanelFixture.h"
#include "PictureQuality.h"
#include "TestCase/sic_video/VpqFields.h"
#include "k2v/vpq.h"
#include "vpq/Vpq.h"

namespace {

using Quality = PanelFixture;

constexpr int kWhiteBar = 0, kYellowBar = 1, kGreenBar = 3, kRedBar = 5, kBlueBar = 6,
              kBlackBar = 7;

K2V_VPQ_COLOR_GAMUT_T SwappedRedAndBlue() {
  return {0, {0, 0, 4096, 0, 4096, 0, 4096, 0, 0}};
}

K2V_VPQ_GAMMA_LUT_T HalfBlue() {
  K2V_VPQ_GAMMA_LUT_T lut = {};
  for (int i = 0; i < 256; ++i) {
    lut.nRed[i] = lut.nGreen[i] = static_cast<uint16_t>(i * 1023 / 255);
    lut.nBlue[i] = static_cast<uint16_t>(lut.nRed[i] / 2);
  }
  return lut;
}

/// A table that rises linearly from 0 to `last`.
template <typename Record>
Record Line(size_t last) {
  Record record = {};
  for (size_t i = 0; i < std::size(record.nLut); ++i)
    record.nLut[i] = static_cast<uint16_t>(i * last / (std::size(record.nLut) - 1));
  return record;
}

/// Leaves red and blue unchanged and replaces green by half of red.
K2V_VPQ_HDR_3D_LUT_T HalfOfRedInGreen() {
  K2V_VPQ_HDR_3D_LUT_T cube = {};
  for (int i = 0; i < 729; ++i) {
    cube.nRed[i] = static_cast<uint16_t>(i / 81 * 1023 / 8);
    cube.nGreen[i] = static_cast<uint16_t>(cube.nRed[i] / 2);
    cube.nBlue[i] = static_cast<uint16_t>(i % 9 * 1023 / 8);
  }
  return cube;
}

CHIP_COLOR_CONTROL_T WithoutRed() {
  CHIP_COLOR_CONTROL_T control = {};
  for (auto& region : control.stRegion) region = {128, 128, 128, 128, 0};
  control.stRegion[0].nSaturationGain = 0;
  return control;
}

TEST_F(Quality, ColoursFollowTheSettings) {
  Connect();
  // Luma values follow BT.709: 0.2126 of red, 0.7152 of green, 0.0722 of blue.
  const struct {
    const char* what;
    std::function<int()> set;
    std::vector<std::pair<int, Rgb>> bars;
    std::function<int()> takeBack;
  } kCases[] = {
      {"brightness 0",
       [] { return K2V_RHAL_VPQ_SetBrightness(0); },
       {{kWhiteBar, {127, 127, 127}}, {kBlackBar, kBlack}},
       [] { return K2V_RHAL_VPQ_SetBrightness(50); }},
      {"brightness 100",
       [] { return K2V_RHAL_VPQ_SetBrightness(100); },
       {{kWhiteBar, kWhite}, {kBlackBar, {127, 127, 127}}},
       [] { return K2V_RHAL_VPQ_SetBrightness(50); }},
      {"contrast 0",
       [] { return K2V_RHAL_VPQ_SetContrast(0); },
       {{kWhiteBar, {127, 127, 127}}, {kBlackBar, {127, 127, 127}}},
       [] { return K2V_RHAL_VPQ_SetContrast(50); }},
      {"saturation 0",
       [] { return K2V_RHAL_VPQ_SetSaturation(0); },
       {{kWhiteBar, kWhite},
        {kYellowBar, {237, 237, 237}},
        {kRedBar, {54, 54, 54}},
        {kBlueBar, {18, 18, 18}}},
       [] { return K2V_RHAL_VPQ_SetSaturation(50); }},
      {"red gain 0",
       [] { return K2V_RHAL_VPQ_SetColorTempRedGain(0); },
       {{kWhiteBar, kCyan}, {kYellowBar, kGreen}},
       [] { return K2V_RHAL_VPQ_SetColorTempRedGain(512); }},
      {"green gain 1/2",
       [] { return K2V_RHAL_VPQ_SetColorTempGreenGain(256); },
       {{kWhiteBar, {255, 128, 255}}, {kGreenBar, {0, 128, 0}}},
       [] { return K2V_RHAL_VPQ_SetColorTempGreenGain(512); }},
      {"blue offset",
       [] { return K2V_RHAL_VPQ_SetColorTempBlueOffset(1023); },
       {{kBlackBar, {0, 0, 128}}, {kYellowBar, {255, 255, 128}}},
       [] { return K2V_RHAL_VPQ_SetColorTempBlueOffset(512); }},
      {"warm",
       [] { return K2V_RHAL_VPQ_SetColorTempLevel(5); },
       {{kWhiteBar, {255, 255, 201}}},
       [] { return K2V_RHAL_VPQ_SetColorTempLevel(2); }},
      {"cool",
       [] { return K2V_RHAL_VPQ_SetColorTempLevel(0); },
       {{kWhiteBar, {219, 255, 255}}},
       [] { return K2V_RHAL_VPQ_SetColorTempLevel(2); }},
      {"colour gain",
       [] { return K2V_RHAL_VPQ_SetColorGain(512, 256, 0); },
       {{kWhiteBar, {255, 128, 0}}},
       [] { return K2V_RHAL_VPQ_SetColorGain(512, 512, 512); }},
      {"backlight 0",
       [] { return K2V_RHAL_VPQ_SetBackLight(0); },
       {{kWhiteBar, {51, 51, 51}}, {kRedBar, {51, 0, 0}}},
       [] { return K2V_RHAL_VPQ_SetBackLight(80); }},
      {"red only",
       [] { return K2V_RHAL_VPQ_SetColorFilter(1); },
       {{kWhiteBar, kRed}, {kGreenBar, kBlack}},
       [] { return K2V_RHAL_VPQ_SetColorFilter(0); }},
      {"inversion",
       [] { return K2V_RHAL_VPQ_SetInversion(1); },
       {{kWhiteBar, kBlack}, {kYellowBar, kBlue}},
       [] { return K2V_RHAL_VPQ_SetInversion(0); }},
      {"full range",
       [] { return K2V_RHAL_VPQEX_SetHDMIDataRange(2); },
       {{kWhiteBar, {235, 235, 235}}, {kBlackBar, {16, 16, 16}}},
       [] { return K2V_RHAL_VPQEX_SetHDMIDataRange(0); }},
      {"matrix",
       [] {
         auto record = SwappedRedAndBlue();
         return K2V_RHAL_VPQ_SetColorGamut(&record);
       },
       {{kRedBar, kBlue}, {kYellowBar, kCyan}},
       [] {
         K2V_VPQ_COLOR_GAMUT_T none = {};
         return K2V_RHAL_VPQ_SetColorGamut(&none);
       }},
      {"saturation table of half the saturation",
       [] {
         auto record = Line<K2V_VPQ_SATURATION_LUT_T>(511);
         return K2V_RHAL_VPQ_SetSaturationLUT(&record);
       },
       {{kWhiteBar, kWhite}, {kRedBar, {155, 27, 27}}, {kBlackBar, kBlack}},
       [] {
         auto straight = Line<K2V_VPQ_SATURATION_LUT_T>(1023);
         return K2V_RHAL_VPQ_SetSaturationLUT(&straight);
       }},
      {"gamut table without blue",
       [] {
         // The hue of blue is the last one of its section.
         auto record = Line<K2V_VPQ_GAMUT_LUT_T>(0);
         record.nLut[0] = 1;
         record.nSection = 7;
         return K2V_RHAL_VPQ_SetGamutLUT(&record);
       },
       {{kBlueBar, {18, 18, 18}}, {kYellowBar, kYellow}, {kGreenBar, kGreen}},
       [] {
         auto straight = Line<K2V_VPQ_GAMUT_LUT_T>(4095);
         straight.nSection = 7;
         return K2V_RHAL_VPQ_SetGamutLUT(&straight);
       }},
      {"cube of colours",
       [] {
         auto record = HalfOfRedInGreen();
         return K2V_RHAL_VPQ_SetHDR3DLUT(&record);
       },
       {{kRedBar, {255, 128, 0}}, {kWhiteBar, {255, 128, 255}}, {kBlueBar, kBlue}},
       [] {
         K2V_VPQ_HDR_3D_LUT_T none = {};
         return K2V_RHAL_VPQ_SetHDR3DLUT(&none);
       }},
      {"the other cube",
       [] {
         auto record = HalfOfRedInGreen();
         return K2V_RHAL_VPQ_HDR_SetLUT(&record);
       },
       {{kGreenBar, kBlack}, {kYellowBar, {255, 128, 0}}},
       [] {
         K2V_VPQ_HDR_3D_LUT_T none = {};
         return K2V_RHAL_VPQ_HDR_SetLUT(&none);
       }},
      {"gamma table",
       [] {
         auto record = HalfBlue();
         return K2V_RHAL_VPQ_SetGammaLUT(&record);
       },
       {{kWhiteBar, {255, 255, 127}}, {kBlueBar, {0, 0, 127}}},
       [] {
         K2V_VPQ_GAMMA_LUT_T none = {};
         return K2V_RHAL_VPQ_SetGammaLUT(&none);
       }},
      {"regions of colour",
       [] {
         auto record = WithoutRed();
         return K2V_RHAL_VPQ_SetColorManagement(&record);
       },
       {{kGreenBar, kGreen}, {kBlueBar, kBlue}, {kWhiteBar, kWhite}, {kRedBar, {85, 85, 85}}},
       [] {
         CHIP_COLOR_CONTROL_T none = {};
         return K2V_RHAL_VPQ_SetColorManagement(&none);
       }},
  };
  for (const auto& test : kCases) {
    ASSERT_EQ(test.set(), 0) << test.what;
    for (const auto& [bar, color] : test.bars)
      EXPECT_TRUE(IsNear(Bar(bar), color)) << test.what << ", bar " << bar;
    ASSERT_EQ(test.takeBack(), 0) << test.what;
    EXPECT_TRUE(IsNear(Bar(kRedBar), kRed)) << "after " << test.what;
  }
}

TEST_F(Quality, GreysFollowTheSettings) {
  Connect();
  Do("picture 0 ramp");
  const auto grey = [this](int level) { return Seen(level * 960 / 256 + 2, 270); };
  EXPECT_TRUE(IsNear(grey(64), {64, 64, 64}));
  K2V_RHAL_VPQ_SetContrast(100);
  EXPECT_TRUE(IsNear(grey(64), kBlack));
  EXPECT_TRUE(IsNear(grey(128), kGrey));
  EXPECT_TRUE(IsNear(grey(160), {192, 192, 192}));
  K2V_RHAL_VPQ_SetContrast(50);
  K2V_RHAL_VPQ_SetGamma(9);
  EXPECT_TRUE(IsNear(grey(128), {91, 91, 91}));  // 255 * (128/255)^1.5
  K2V_RHAL_VPQ_SetGamma(4);
  K2V_RHAL_VPQ_SetHue(0);
  EXPECT_TRUE(IsNear(grey(128), kGrey)) << "hue has no meaning without colour";
  Do("picture 0 bars");
  const Rgb turned = Bar(kRedBar);
  EXPECT_GT(turned[1] + turned[2], 60);
}

TEST_F(Quality, SharpnessIsVisibleAtEdges) {
  Connect();
  Do("picture 0 checkerboard");
  const auto besideEdge = [this] { return std::array{Seen(59, 15)[0], Seen(60, 15)[0]}; };
  const auto neutral = besideEdge();
  EXPECT_EQ(std::abs(neutral[0] - neutral[1]), 255);
  for (const auto& soften : {K2V_RHAL_VPQ_SetSharpnessExtend, K2V_RHAL_VPQ_SetNR}) {
    soften(soften == K2V_RHAL_VPQ_SetNR ? 5 : 0);
    const auto soft = besideEdge();
    EXPECT_LT(std::abs(soft[0] - soft[1]), 200);
    soften(soften == K2V_RHAL_VPQ_SetNR ? 0 : 50);
  }
  EXPECT_EQ(besideEdge(), neutral);
}

TEST_F(Quality, NoiseOfTheSourceIsVisibleAndMoves) {
  Connect();
  Do("noise 128");
  const auto look = [this] { return picture::ToPng(panel_.Look(*sim::BoardLock(), 1000)); };
  const auto noisy = look();
  EXPECT_NE(noisy, look());
  Do("noise 0");
  EXPECT_EQ(look(), look());
  EXPECT_EQ(Bar(kRedBar), kRed);
}

TEST_F(Quality, BypassAndSplitDemoLeaveThePictureUnchanged) {
  Connect();
  K2V_RHAL_VPQ_SetSaturation(0);
  K2V_RHAL_VPQ_SetSplitDemo(1);
  EXPECT_TRUE(IsNear(Bar(kYellowBar), {237, 237, 237}));
  EXPECT_EQ(Bar(kRedBar), kRed);
  K2V_RHAL_VPQEX_SetPQBypassLv(1);
  EXPECT_EQ(Bar(kYellowBar), kYellow);
}

TEST_F(Quality, InternalPatternsCoverThePanel) {
  Connect();
  K2V_RHAL_VPQ_SET_INTERNAL_PARTTEN_1W(1, 1023);
  EXPECT_EQ(Bar(kBlackBar), kWhite);
  K2V_RHAL_VPQ_SET_INTERNAL_PARTTEN_1W(0, 1023);
  K2V_RHAL_VPQ_SetIREInnerPattern(1, 1023, 0, 0);
  EXPECT_EQ(Bar(kBlackBar), kRed);
  K2V_RHAL_VPQ_SetBlackPatternOutput(1);
  EXPECT_EQ(Bar(kWhiteBar), kBlack);
}

// Numbers at both ends of their ranges: no filter may reject them.
TEST_F(Quality, EverySettingProducesAPicture) {
  Connect();
  const struct {
    sim::VpqValue key;
    int32_t ends[2];
  } kValues[] = {
#define VPQ_VALUE(function, atPowerOn, min, max) {sim::VpqValue::k##function, {min, max}},
#include "vpq/VpqFunctions.def"
  };
  auto board = std::make_unique<sim::Board>();
  for (const auto& value : kValues) {
    for (const int32_t end : value.ends) {
      *board = *sim::BoardLock();
      sim::SetValue(board->vpq, value.key, end);
      EXPECT_NO_THROW(panel_.Look(*board, 1000)) << static_cast<unsigned>(value.key);
    }
  }
  const auto fill = [](auto& record, bool most) {
    for (const k2v::RecordField& field : k2v::FieldsOf(&record)) {
      for (size_t i = 0; i < field.count; ++i)
        k2v::SetField(&record, field, most ? field.max : field.min, i);
    }
  };
  for (const bool most : {false, true}) {
    *board = *sim::BoardLock();
    for (auto& section : board->vpq.gamutSections)
      std::ranges::fill(section, static_cast<uint16_t>(most ? 4095 : 1));
    EXPECT_NO_THROW(panel_.Look(*board, 1000));
#define VPQ_RECORD(function, type)         \
  *board = *sim::BoardLock();              \
  fill(board->vpq.records.function, most); \
  EXPECT_NO_THROW(panel_.Look(*board, 1000)) << #function;
#include "vpq/VpqFunctions.def"
  }
}

}  // namespace
