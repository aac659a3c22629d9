// Picture quality of the simulated HAL: what is kept, what is refused and what is measured.
#include <gtest/gtest.h>

#include <numeric>

#include "HalSteps.h"
#include "SimHal.h"
#include "k2v/vpq.h"

namespace {

constexpr int kOk = K2V_RHAL_OK, kParam = K2V_RHAL_ERR_PARAM, kOrder = K2V_RHAL_ERR_ORDER,
              kNoSignal = K2V_RHAL_ERR_NO_SIGNAL;

TEST(Vpq, TellsWhatWasSetAndRefusesWhatIsNotInRange) {
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

TEST(Vpq, KeepsSettingsThatHaveTwoWays) {
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorFacOSDMap(4, 10, 1023), kOk);
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorFacOSDMap(5, 10, 1023), kParam);
  EXPECT_EQ(K2V_RHAL_VPQ_SetColorFacOSDMapByLv(4, 59, 7), kOk);
  K2V_VPQ_COLOR_OSD_MAP_T map{};
  map.eItem = 4;
  EXPECT_EQ(K2V_RHAL_VPQ_GetColorFacOSDMap(&map), kOk);
  EXPECT_EQ(map.nPoint[5], 7);
  EXPECT_EQ(map.nPoint[10], 1023);

  EXPECT_EQ(K2V_RHAL_VPQEX_SetMagicColorTempOffset(9, -128, 0, 127), kOk);
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

TEST(Vpq, StartAndEndHaveAnOrder) {
  EXPECT_EQ(K2V_RHAL_VPQ_Open(), kOrder);
  EXPECT_EQ(K2V_RHAL_VPQ_Initialize(), kOk);
  EXPECT_EQ(K2V_RHAL_VPQ_Open(), kOk);
  EXPECT_EQ(K2V_RHAL_VPQEX_Open(), kOrder) << "the extension has its own";
  EXPECT_EQ(K2V_RHAL_VPQ_Uninitialize(), kOk);
  EXPECT_EQ(K2V_RHAL_VPQ_Close(), kOrder);
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
  simhal::Apply("unplug 0");  // port 1 has a smaller picture, and no HDR
  K2V_RHAL_VPQ_GetHdrType(&value);
  EXPECT_EQ(value, 0);
  K2V_RHAL_VPQ_GetHistogram(&histogram);
  EXPECT_EQ(std::accumulate(std::begin(histogram.nBin), std::end(histogram.nBin), 0u),
            1920u * 1080u);
}

}  // namespace
