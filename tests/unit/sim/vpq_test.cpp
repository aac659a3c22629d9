// Picture quality of the simulated HAL: stored values, rejected values and measurements.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "HalSteps.h"
#include "SimHal.h"
#include "k2v/vpq.h"

namespace {

constexpr int kOk = K2V_RHAL_OK, kParam = K2V_RHAL_ERR_PARAM, kOrder = K2V_RHAL_ERR_ORDER,
              kNoSignal = K2V_RHAL_ERR_NO_SIGNAL;

TEST(Vpq, ReturnsStoredValuesAndRejectsValuesOutOfRange) {
  int32_t value = 0;
  EXPECT_EQ(K2V_RHAL_VPQ_SetBrightness(100), kOk);
  EXPECT_EQ(K2V_RHAL_VPQ_SetBrightness(101), kParam);
  EXPECT_EQ(K2V_RHAL_VPQ_GetBrightness(&value), kOk);
  EXPECT_EQ(value, 100);
  EXPECT_EQ(K2V_RHAL_VPQ_ResetCurPicModeData(), kOk);
  K2V_RHAL_VPQ_GetBrightness(&value);
  EXPECT_EQ(value, 50);

  K2V_VPQ_COLOR_TEMP_T temperature = {-50, 1, 2, 3, 4, 50}, told{};
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorTemp(&temperature), kOk);
  temperature.nRedGain = -51;
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorTemp(&temperature), kParam);
  EXPECT_EQ(K2V_RHAL_VPQ_GetColorTemp(&told), kOk);
  EXPECT_EQ(told.nRedGain, -50);
  EXPECT_EQ(told.nBlueOffset, 50);
}

/// The setter for the value that a getter returns, looked up by name.
void* SetterOf(std::string getter) {
  static const std::map<std::string, std::string> kNamedOtherwise = {
      {"VPQ_GetODLevel", "VPQ_SetODReadEnable"},
      {"VPQEX_GDBC_Get_DCR_BackLight", "VPQEX_GDBC_Set_UI_DCR_BackLight"}};
  if (const auto other = kNamedOtherwise.find(getter); other != kNamedOtherwise.end())
    return dlsym(RTLD_DEFAULT, ("K2V_RHAL_" + other->second).c_str());
  const std::string name = "K2V_RHAL_" + getter.replace(getter.find("Get"), 3, "Set");
  void* const extended = dlsym(RTLD_DEFAULT, (name + "Extend").c_str());
  return extended != nullptr ? extended : dlsym(RTLD_DEFAULT, name.c_str());
}

TEST(Vpq, GettersReturnWhatTheirSettersStored) {
  const struct {
    const char* name;
    int (*get)(int32_t*);
  } kGetters[] = {
#define VPQ_VALUE_OF(getter, setter) {#getter, K2V_RHAL_##getter},
#include "vpq/VpqFunctions.def"
  };
  for (const auto& [name, get] : kGetters) {
    const auto set = reinterpret_cast<int (*)(int32_t)>(SetterOf(name));
    ASSERT_NE(set, nullptr) << name;
    for (const int32_t number : {1, 0}) {
      int32_t told = -1;
      EXPECT_EQ(set(number), kOk) << name;
      EXPECT_EQ(get(&told), kOk) << name;
      EXPECT_EQ(told, number) << name;
    }
  }
}

TEST(Vpq, SettingsWithTwoInterfacesAreShared) {
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorFacOSDMap(4, 10, 1023), kOk);
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorFacOSDMap(5, 10, 1023), kParam);
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorFacOSDMapByLv(4, 59, 7), kOk);
  K2V_VPQ_COLOR_OSD_MAP_T map{};
  map.eItem = 4;
  EXPECT_EQ(K2V_RHAL_VPQ_GetColorFacOSDMap(&map), kOk);
  EXPECT_EQ(map.nPoint[5], 7);
  EXPECT_EQ(map.nPoint[10], 1023);

  EXPECT_EQ(K2V_RHAL_VPQEX_SetMagicColorTempOffset(9, -128, 0, 127), kOk);
  EXPECT_EQ(K2V_RHAL_VPQEX_SetMagicColorTempOffset(10, 0, 0, 0), kParam);
  EXPECT_EQ(K2V_RHAL_VPQEX_SetMagicColorTempOffset(8, 127, -128, 127), kOk);
  EXPECT_EQ(K2V_RHAL_VPQEX_SetMagicColorTempOffset(8, 128, 0, 0), kParam);
  K2V_VPQ_MAGIC_COLOR_TEMP_T factory{};
  factory.nIndex = 9;
  EXPECT_EQ(K2V_RHAL_VPQEX_GetMagicColorTempByIndex(&factory), kOk);
  EXPECT_EQ(factory.nRedGain, 384u);
  EXPECT_EQ(factory.nBlueGain, 639u);
  factory.nIndex = 10;
  EXPECT_EQ(K2V_RHAL_VPQEX_GetMagicColorTempByIndex(&factory), kParam);

  K2V_VPQ_ENG_ID_T item = {63, 1023};
  EXPECT_EQ(K2V_RHAL_VPQ_SetENG_ID(&item), kOk);
  K2V_VPQ_ENG_MENU_T menu{};
  EXPECT_EQ(K2V_RHAL_VPQ_GetENGMENU(&menu), kOk);
  EXPECT_EQ(menu.nValue[63], 1023);
  EXPECT_EQ(K2V_RHAL_VPQ_SetENG_TWOLAYER_ID(7, 15, 9), kOk);
  K2V_VPQ_ENG_TWO_LAYER_ID_T layered = {7, 15, 0};
  EXPECT_EQ(K2V_RHAL_VPQ_GetENG_TWOLAYER_ID(&layered), kOk);
  EXPECT_EQ(layered.nValue, 9u);
}

int32_t Told(int (*get)(int32_t*)) {
  int32_t value = -1;
  EXPECT_EQ(get(&value), kOk);
  return value;
}

TEST(Vpq, EquivalentCallsShareTheirValue) {
  K2V_VPQ_PICTURE_CTRL_T picture = {1, 2, 3, 4};  // contrast, brightness, saturation, hue
  EXPECT_EQ(K2V_RHAL_VPQ_SetPictureCtrl(&picture), kOk);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetContrast), 1);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetBrightness), 2);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetSaturation), 3);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetHue), 4);
  picture.nTint = 101;
  EXPECT_EQ(K2V_RHAL_VPQ_SetPictureCtrl(&picture), kParam);
  K2V_RHAL_VPQ_SetPanelBL(7);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetBackLight), 7);
  K2V_RHAL_VPQ_ResetCurPicModeData();
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetHue), 50);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetBackLight), 80);

  K2V_VPQ_MPEG_NOISE_REDUCTION_T noise = {3, 4};
  K2V_RHAL_VPQ_SetMpegNoiseReduction(&noise);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetDeBlocking), 3);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_GetDeRinging), 4);
  K2V_RHAL_VPQ_SetFilmMode(2, 0);
  EXPECT_EQ(Told(K2V_RHAL_VPQEX_GetFilmMode), 1);
  K2V_RHAL_VPQ_SetLowDelayMode(1);
  EXPECT_EQ(Told(K2V_RHAL_VPQ_MEMC_GetFrameDelay), 1);
}

TEST(Vpq, ColourTemperatureIsSharedByAllInterfaces) {
  const auto chip = [] {
    K2V_VPQ_COLOR_TEMP_EXTEND_T record{};
    EXPECT_EQ(K2V_RHAL_VPQ_GetColorTempGainOffset(&record), kOk);
    return std::vector<uint32_t>{record.nRedGain,   record.nGreenGain,   record.nBlueGain,
                                 record.nRedOffset, record.nGreenOffset, record.nBlueOffset};
  };
  const auto user = [] {
    K2V_VPQ_COLOR_TEMP_T record{};
    EXPECT_EQ(K2V_RHAL_VPQ_GetColorTemp(&record), kOk);
    return std::vector<int>{record.nRedGain,   record.nGreenGain,   record.nBlueGain,
                            record.nRedOffset, record.nGreenOffset, record.nBlueOffset};
  };
  using Chip = std::vector<uint32_t>;
  using User = std::vector<int>;
  EXPECT_EQ(chip(), Chip(6, 512)) << "neutral after power-on";
  K2V_VPQ_COLOR_TEMP_T steps = {-50, 1, 2, 3, 4, 50};
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorTemp(&steps), kOk);
  EXPECT_EQ(chip(), (Chip{12, 522, 532, 542, 552, 1012}));
  K2V_VPQ_COLOR_TEMP_EXTEND_T extended = {0, 1023, 515, 518, 512, 502};
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorTempExtend(&extended), kOk);
  EXPECT_EQ(user(), (User{-50, 50, 0, 1, 0, -1}));
  K2V_RHAL_VPQ_SetColorTempBlueOffset(612);
  EXPECT_EQ(chip(), (Chip{0, 1023, 515, 518, 512, 612}));
  EXPECT_EQ(user().back(), 10);
  K2V_VPQ_COLOR_TEMPERATURE_T level = {1, 100, 200, 300};
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorTemperature(&level), kOk);
  EXPECT_EQ(chip()[0], 0u) << "not the selected level";
  level.eLevel = 2;
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorTemperature(&level), kOk);
  EXPECT_EQ(chip(), (Chip{100, 200, 300, 518, 512, 612}));
  K2V_RHAL_VPQ_ResetCurColorTempData();
  EXPECT_EQ(chip(), Chip(6, 512));
  EXPECT_EQ(user(), User(6, 0));
}

TEST(Vpq, EnforcesTheOrderOfStartAndEnd) {
  EXPECT_EQ(K2V_RHAL_VPQ_Open(), kOrder);
  EXPECT_EQ(K2V_RHAL_VPQ_Initialize(), kOk);
  EXPECT_EQ(K2V_RHAL_VPQ_Open(), kOk);
  EXPECT_EQ(K2V_RHAL_VPQEX_Open(), kOrder) << "the extension has a separate start";
  EXPECT_EQ(K2V_RHAL_VPQ_Uninitialize(), kOk);
  EXPECT_EQ(K2V_RHAL_VPQ_Close(), kOrder);
}

TEST(Vpq, RegionsMustBeginOnThePanel) {
  const auto set = [](int32_t x, int32_t y, int32_t w, int32_t h) {
    const int block = K2V_RHAL_VPQ_MEMC_SetVideoBlock(x, y, w, h);
    EXPECT_EQ(K2V_RHAL_VPQ_MEMC_SetBypassRegion(3, x, y, w, h), block);
    return block;
  };
  EXPECT_EQ(set(3839, 2159, 3840, 2160), kOk);
  EXPECT_EQ(set(3840, 0, 0, 0), kParam);
  EXPECT_EQ(set(0, 2160, 0, 0), kParam);
  EXPECT_EQ(set(0, 0, 3841, 0), kParam);
  EXPECT_EQ(set(0, 0, 0, 2161), kParam);
}

TEST(Vpq, PathOfThePanelIsADirectory) {
  char path[K2V_VPQ_TEXT_BYTES] = {};
  EXPECT_EQ(K2V_RHAL_VPQEX_GetPanelPqPath(path), kOk);
  EXPECT_TRUE(path[0] == '/' && path[std::strlen(path) - 1] == '/') << path;
}

TEST(Vpq, MeasuresThePictureOfTheMainWindow) {
  K2V_VPQ_HISTOGRAM_T histogram{};
  int32_t value = 77;
  EXPECT_EQ(K2V_RHAL_VPQ_GetHistogram(&histogram), kNoSignal);
  EXPECT_EQ(K2V_RHAL_VPQ_GetNoiseLevel(&value), kNoSignal);
  EXPECT_EQ(value, 77);
  DoSteps("h-init h-hpd h-open h-conn0 h-conn1 s-init s-open s-conn");
  ASSERT_EQ(K2V_RHAL_VPQ_GetHistogram(&histogram), kOk);
  EXPECT_EQ(std::accumulate(std::begin(histogram.nBin), std::end(histogram.nBin), 0u),
            3840u * 2160u);
  EXPECT_EQ(histogram.nMinimum, 64);
  EXPECT_EQ(histogram.nMaximum, 940);
  simhal::Apply("noise 12");
  simhal::Apply("motion 200");
  K2V_RHAL_VPQ_GetNoiseLevel(&value);
  EXPECT_EQ(value, 12);
  K2V_RHAL_VPQ_GetMotionLevel(&value);
  EXPECT_EQ(value, 200);
  K2V_RHAL_VPQ_GetHdrType(&value);
  EXPECT_EQ(value, 1);
  simhal::Apply("lock 0 0");
  simhal::PlugHdmi(0, "3831x2157p60 hlg");
  K2V_RHAL_VPQ_GetHdrType(&value);
  EXPECT_EQ(value, 2);
  K2V_RHAL_VPQ_GetHistogram(&histogram);
  EXPECT_EQ(std::accumulate(std::begin(histogram.nBin), std::end(histogram.nBin), 0u),
            3831u * 2157u);
  simhal::Apply("unplug 0");  // port 1 has a smaller picture, and no HDR
  K2V_RHAL_VPQ_GetHdrType(&value);
  EXPECT_EQ(value, 0);
  K2V_RHAL_VPQ_GetHistogram(&histogram);
  EXPECT_EQ(std::accumulate(std::begin(histogram.nBin), std::end(histogram.nBin), 0u),
            1920u * 1080u);
}

}  // namespace
