#include "ColorGain.h"

#include <algorithm>
#include <array>

namespace {

constexpr int kMasterGainPerUnit = 80;
constexpr uint8_t kNeutralGain = 128;
constexpr int kHueStepsPerAdvancedUnit = 6;

// Table entries that the choices of the advanced menu change.
constexpr std::array kAdvancedEntries = {6U, 2U, 1U};

struct ExpertOffsets {
  int8_t saturation;
  int8_t hue;
  int8_t brightness;
};

// Reached by at(), which ends the program at an index out of range in every build.
std::array<int8_t, kAdvancedEntries.size()> advancedOffsets;
std::array<ExpertOffsets, kExpertRegionCount> expertOffsets;

uint8_t Moved(uint8_t gain, int offset) {
  return static_cast<uint8_t>(std::clamp(gain + offset, 0, 255));
}

void Keep(const ICM_PC_PARAM_T& param) {
  if (param.index < 0 || param.index >= std::ssize(advancedOffsets)) return;
  advancedOffsets.at(static_cast<uint8_t>(param.index)) = static_cast<int8_t>(param.value);
}

}  // namespace

int8_t KeptAdvancedOffset(int8_t index) {
  return advancedOffsets.at(static_cast<uint8_t>(index));
}

ICM_CM_PARAM_T KeptExpertOffsets(uint8_t region) {
  const ExpertOffsets& kept = expertOffsets.at(region);
  return {region, kept.saturation, kept.hue, kept.brightness};
}

void utility_get_test_cm_gain(CHIP_COLOR_CONTROL_T* table, unsigned char gain) {
  if (table == nullptr) return;
  std::fill(std::begin(table->stRegion), std::end(table->stRegion),
            CHIP_COLOR_CONTROL_ENTRY_T{static_cast<uint16_t>(gain * kMasterGainPerUnit),
                                       kNeutralGain, kNeutralGain, kNeutralGain, 0});
}

void utility_calc_test_cm_ui_match_gain_adv(ICM_PC_PARAM_T* param, CHIP_COLOR_CONTROL_T* in,
                                            CHIP_COLOR_CONTROL_T* out) {
  if (in == nullptr || out == nullptr) return;
  if (param != nullptr) Keep(*param);
  *out = *in;
  for (std::size_t i = 0; i < advancedOffsets.size(); ++i) {
    uint8_t& hue = out->stRegion[kAdvancedEntries.at(i)].nHueGain;
    hue = Moved(hue, kHueStepsPerAdvancedUnit * advancedOffsets.at(i));
  }
}

void utility_calc_test_cm_ui_match_gain_exp(ICM_CM_PARAM_T* param, CHIP_COLOR_CONTROL_T* in,
                                            CHIP_COLOR_CONTROL_T* out) {
  if (in == nullptr || out == nullptr) return;
  *out = *in;
  if (param != nullptr) {
    if (param->region >= expertOffsets.size()) return;
    expertOffsets.at(param->region) = {param->saturation, param->hue, param->brightness};
  }
  for (std::size_t region = 0; region < expertOffsets.size(); ++region) {
    CHIP_COLOR_CONTROL_ENTRY_T& entry = out->stRegion[region];
    const ExpertOffsets& offsets = expertOffsets.at(region);
    entry.nHueGain = Moved(entry.nHueGain, offsets.hue);
    entry.nSaturationGain = Moved(entry.nSaturationGain, offsets.saturation);
    entry.nBrightnessGain = Moved(entry.nBrightnessGain, offsets.brightness);
  }
}
