#include <array>
#include <cstdio>
#include <iterator>

#include "ColumnCompare.h"
#include "Verifiers.h"

namespace {

constexpr ColumnRules kRules{
    .format = kScalerFormat,
    .columns = kScalerColumns,
    .rateItem = ColumnOf(kScalerColumns, Unit::kMilliFramesPerSecond),
    .rateRounding = kScalerRateRounding,
    .comparesWholeRates = true,
    .rateFromFrameZero = false,
    .firstDebounceCount = 100,
    .hexPrefix = "0x",
    .repeatItem = kNoItem,
    .frameInfoItems = 0,
    .name = "SCALER",
    .summaryTag = "Scaler",
};
constexpr std::array<uint8_t, kScalerFormat.itemCount> kNoMask{};

}  // namespace

bool Api_scaler_info_compare(const _SCALER_INFO_COMPARE_SETTING& setting,
                             _VOUT_INFO_COMPARE_RESULT& result, CM_Verify_Result& stage) {
  std::printf("[SCALER] FileNameIn1\t= %s\n", setting.fileNameIn1.c_str());
  std::printf("[SCALER] FileNameIn2\t= %s\n", setting.fileNameIn2.c_str());
  std::printf("[SCALER] errTolerance_sec\t= %d\n", setting.errTolerance_sec);
  std::printf("[SCALER] syncTolerance_sec\t= %d\n", setting.syncTolerance_sec);
  return ColumnComparison(kRules, setting, kNoMask, result, stage).Run();
}

void Verify_Scaler(CM_Verify_Result& result, const std::string& goldenPath,
                   const std::string& samplePath) {
  ListColumns(result, kScalerColumns);
  _SCALER_INFO_COMPARE_SETTING setting;
  setting.fileNameIn1 = goldenPath;
  setting.fileNameIn2 = samplePath;
  _VOUT_INFO_COMPARE_RESULT first;
  const bool passed = Api_scaler_info_compare(setting, first, result);
  std::printf("Api_scaler_info_compare result: %s\n", passed ? "PASS" : "FAIL");
}
