// Gain tables of the colour management: arithmetic and values kept between calls.
#include "ColorGain.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

CHIP_COLOR_CONTROL_T Table(unsigned char gain = 100) {
  CHIP_COLOR_CONTROL_T table{};
  utility_get_test_cm_gain(&table, gain);
  return table;
}

/// The bytes 2, 3 and 4 of an entry.
std::vector<int> GainsOf(const CHIP_COLOR_CONTROL_T& table, std::size_t entry) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&table) + 6 * entry;
  return {bytes[2], bytes[3], bytes[4]};
}

TEST(ColorGain, DefaultTableIsNeutralBelowTheMasterGain) {
  const CHIP_COLOR_CONTROL_T table = Table(255);
  for (const auto& entry : table.stRegion) {
    EXPECT_EQ(entry.nMasterGain, 255 * 80);
    EXPECT_EQ(entry.nOffset, 0);
  }
  EXPECT_EQ(GainsOf(table, 8), (std::vector{128, 128, 128}));
  utility_get_test_cm_gain(nullptr, 1);
}

TEST(ColorGain, AdvancedOffsetsMoveOneByteOfMappedEntriesAndAddUp) {
  CHIP_COLOR_CONTROL_T in = Table(), out{};
  ICM_PC_PARAM_T param = {0, static_cast<uint8_t>(-50)};
  utility_calc_test_cm_ui_match_gain_adv(&param, &in, &out);
  EXPECT_EQ(GainsOf(out, 6), (std::vector{0, 128, 128}));
  param = {2, 30};
  utility_calc_test_cm_ui_match_gain_adv(&param, &in, &out);
  EXPECT_EQ(GainsOf(out, 6), (std::vector{0, 128, 128})) << "kept from the previous call";
  EXPECT_EQ(GainsOf(out, 1), (std::vector{255, 128, 128}));
  for (const int8_t index : {int8_t{-1}, int8_t{3}, int8_t{127}}) {
    param = {index, 1};
    utility_calc_test_cm_ui_match_gain_adv(&param, &in, &out);
  }
  param = {1, 2};
  utility_calc_test_cm_ui_match_gain_adv(&param, &in, &out);
  utility_calc_test_cm_ui_match_gain_adv(nullptr, &in, &in);
  EXPECT_EQ(GainsOf(in, 2), (std::vector{140, 128, 128}));
  EXPECT_EQ(std::memcmp(&in, &out, sizeof in), 0) << "no parameter: the offsets kept so far";
}

TEST(ColorGain, ExpertOffsetsMoveThreeBytesOfTheirRegionAndAddUp) {
  CHIP_COLOR_CONTROL_T in = Table(), out{};
  ICM_CM_PARAM_T param = {5, 1, -2, 3};
  utility_calc_test_cm_ui_match_gain_exp(&param, &in, &out);
  EXPECT_EQ(GainsOf(out, 5), (std::vector{126, 129, 131}));
  in.stRegion[0].nHueGain = 250;
  param = {0, -128, 127, 0};
  utility_calc_test_cm_ui_match_gain_exp(&param, &in, &out);
  EXPECT_EQ(GainsOf(out, 0), (std::vector{255, 0, 128}));
  EXPECT_EQ(GainsOf(out, 5), (std::vector{126, 129, 131}));
  EXPECT_EQ(GainsOf(out, 6), (std::vector{128, 128, 128}));
  param = {6, 1, 1, 1};
  utility_calc_test_cm_ui_match_gain_exp(&param, &in, &out);
  EXPECT_EQ(std::memcmp(&in, &out, sizeof in), 0) << "an invalid region: a plain copy";
  utility_calc_test_cm_ui_match_gain_exp(nullptr, &in, &out);
  EXPECT_EQ(GainsOf(out, 0), (std::vector{255, 0, 128}));
}

TEST(ColorGain, WithoutTablesNothingIsKept) {
  CHIP_COLOR_CONTROL_T table = Table();
  ICM_PC_PARAM_T advanced = {0, 1};
  ICM_CM_PARAM_T expert = {0, 1, 1, 1};
  utility_calc_test_cm_ui_match_gain_adv(&advanced, nullptr, &table);
  utility_calc_test_cm_ui_match_gain_adv(&advanced, &table, nullptr);
  utility_calc_test_cm_ui_match_gain_exp(&expert, nullptr, &table);
  utility_calc_test_cm_ui_match_gain_exp(&expert, &table, nullptr);
  utility_calc_test_cm_ui_match_gain_adv(nullptr, &table, &table);
  utility_calc_test_cm_ui_match_gain_exp(nullptr, &table, &table);
  const CHIP_COLOR_CONTROL_T untouched = Table();
  EXPECT_EQ(std::memcmp(&table, &untouched, sizeof table), 0);
}

}  // namespace
