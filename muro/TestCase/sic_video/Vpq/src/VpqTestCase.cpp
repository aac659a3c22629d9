#include "VpqTestCase.h"

#include <array>
#include <cstdio>
#include <span>

#include "../../RecordAdjuster.h"
#include "../../ValueTests.h"
#include "ColorGain.h"

namespace {

using namespace record_adjuster;
using namespace value_tests;

constexpr unsigned char kDefaultGain = 100;
constexpr int kMaxOffset = 50;

int Call(int (*call)()) {
  call();
  return 0;
}

/// Sets tables of neutral colour with a master gain.
int AdjustColorGain(int (*set)(CHIP_COLOR_CONTROL_T* table)) {
  Adjustable gain[] = {{"gain", 0, 255, kDefaultGain}};
  return Adjust(gain, [&](std::size_t) {
    CHIP_COLOR_CONTROL_T table{};
    utility_get_test_cm_gain(&table, static_cast<unsigned char>(gain[0].value));
    return set(&table);
  });
}

Adjustable Offset(const char* name, int kept) {
  return {name, -kMaxOffset, kMaxOffset, kept};
}

/// The offsets start at their last settings.
int AdjustAdvancedColor() {
  Adjustable offsets[] = {Offset("first", KeptAdvancedOffset(0)),
                          Offset("second", KeptAdvancedOffset(1)),
                          Offset("third", KeptAdvancedOffset(2))};
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

/// Saturation, hue and brightness.
using Offsets = std::span<Adjustable, 3>;

/// Shows the last offsets of a region.
void ShowRegion(uint8_t region, Offsets offsets) {
  const ICM_CM_PARAM_T kept = KeptExpertOffsets(region);
  const std::array<int, Offsets::extent> values = {kept.saturation, kept.hue, kept.brightness};
  std::printf("Region %d :", region);
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    offsets[i].value = values[i];
    std::printf("%s %s = %d", i == 0 ? "" : ",", offsets[i].name, values[i]);
  }
  std::printf("\n");
}

/// The offsets are those of the chosen region and start at their last settings; the other regions
/// are unchanged.
int AdjustExpertColor() {
  Adjustable numbers[] = {{"region", 0, kExpertRegionCount - 1, 0, 0, true},
                          Offset("saturation", 0),
                          Offset("hue", 0),
                          Offset("brightness", 0)};
  const Offsets offsets = std::span(numbers).subspan<1>();
  int shown = -1;
  return Adjust(numbers, [&](std::size_t) {
    const auto region = static_cast<uint8_t>(numbers[0].value);
    if (region != shown) ShowRegion(region, offsets);
    shown = region;
    CHIP_COLOR_CONTROL_T neutral{}, matched{};
    utility_get_test_cm_gain(&neutral, kDefaultGain);
    ICM_CM_PARAM_T param = {region, static_cast<int8_t>(offsets[0].value),
                            static_cast<int8_t>(offsets[1].value),
                            static_cast<int8_t>(offsets[2].value)};
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
