#include "VpqTestCase.h"

#include <array>
#include <cstdio>

#include "../../RecordAdjuster.h"
#include "../../ValueTests.h"
#include "ColorGain.h"

namespace {

using namespace record_adjuster;
using namespace value_tests;

constexpr unsigned char kDefaultGain = 100;
constexpr int kMaxOffset = 50;
constexpr unsigned kExpertRegions = 6;

int Call(int (*call)()) {
  call();
  return 0;
}

/// Sets tables of neutral colour below a master gain.
int AdjustColorGain(int (*set)(CHIP_COLOR_CONTROL_T* table)) {
  Adjustable gain[] = {{"gain", 0, 255, kDefaultGain}};
  return Adjust(gain, [&](std::size_t) {
    CHIP_COLOR_CONTROL_T table{};
    utility_get_test_cm_gain(&table, static_cast<unsigned char>(gain[0].value));
    return set(&table);
  });
}

int AdjustAdvancedColor() {
  Adjustable offsets[] = {{"first", -kMaxOffset, kMaxOffset, 0},
                          {"second", -kMaxOffset, kMaxOffset, 0},
                          {"third", -kMaxOffset, kMaxOffset, 0}};
  return Adjust(offsets, [&](std::size_t) {
    CHIP_COLOR_CONTROL_T neutral{}, matched{};
    utility_get_test_cm_gain(&neutral, kDefaultGain);
    for (std::size_t i = 0; i < std::size(offsets); ++i) {
      ICM_PC_PARAM_T param = {static_cast<int8_t>(i), static_cast<uint8_t>(offsets[i].value)};
      utility_calc_test_cm_ui_match_gain_adv(&param, &neutral, &matched);
    }
    return K2V_RHAL_VPQ_SetPreferredColor(&matched);
  });
}

/// The offsets shown are those of the chosen region; the other regions keep theirs.
int AdjustExpertColor() {
  Adjustable numbers[] = {{"region", 0, kExpertRegions - 1, 0},
                          {"saturation", -kMaxOffset, kMaxOffset, 0},
                          {"hue", -kMaxOffset, kMaxOffset, 0},
                          {"brightness", -kMaxOffset, kMaxOffset, 0}};
  std::array<std::array<int, 3>, kExpertRegions> offsets{};
  int shown = 0;
  return Adjust(numbers, [&](std::size_t) {
    auto& region = offsets[static_cast<std::size_t>(numbers[0].value)];
    for (std::size_t i = 0; i < region.size(); ++i) {
      int& number = numbers[i + 1].value;
      if (numbers[0].value != shown) number = region[i];
      region[i] = number;
    }
    shown = numbers[0].value;
    CHIP_COLOR_CONTROL_T neutral{}, matched{};
    utility_get_test_cm_gain(&neutral, kDefaultGain);
    ICM_CM_PARAM_T param = {static_cast<uint8_t>(shown), static_cast<int8_t>(region[0]),
                            static_cast<int8_t>(region[1]), static_cast<int8_t>(region[2])};
    utility_calc_test_cm_ui_match_gain_exp(&param, &neutral, &matched);
    return K2V_RHAL_VPQ_SetColorManagement(&matched);
  });
}

}  // namespace

#define VPQ_AS(name, description, run, ...)                 \
  int VpqTestCase::VPQ_FunctionTest_HAL_VPQ_##name(char*) { \
    std::printf(" %s \n", __func__);                        \
    return run;                                             \
  }
#define VPQ(name, run, ...) VPQ_AS(name, "", run)
#include "VpqTests.def"
