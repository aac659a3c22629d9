#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "ColumnCompare.h"
#include "Verifiers.h"

namespace {

constexpr char kSettingPath[] = "/system/bin/vout_setting.conf";
constexpr char kDashes[] = "--------------------------------------------------";

constexpr std::size_t kFrameNumber = ColumnOf(kVoColumns, Unit::kFrame);
constexpr std::size_t kInputChecksum = ColumnNamed(kVoColumns, "crc_vgip");

constexpr ColumnRules kRules{
    .format = kVoFormat,
    .columns = kVoColumns,
    .rateItem = ColumnOf(kVoColumns, Unit::kMilliFramesPerSecond),
    .rateRounding = kVoRateRounding,
    .comparesWholeRates = false,
    .rateFromFrameZero = true,
    .firstDebounceCount = 1,
    .hexPrefix = "",
    .repeatItem = ColumnNamed(kVoColumns, "repeat_cnt"),
    .frameInfoItems = 1U << kFrameNumber | 1U << kInputChecksum,
    .name = "VOUT",
    .summaryTag = "VOUT",
};

bool ignoresSettings = false;
_VOUT_INFO_COMPARE_SETTING settingInUse;

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// Sets `target` to an entry's value and prints both.
template <class Number>
void Change(int line, std::string_view name, std::string_view value, int32_t number,
            Number& target) {
  const bool changes = target != number;
  target = static_cast<Number>(number);
  std::printf("[VOUT][%d] %.*s %s: %.*s\n", line, static_cast<int>(name.size()), name.data(),
              changes ? "change to" : "no change", static_cast<int>(value.size()), value.data());
}

/// True for a decimal number from 0 to `most`.
bool ReadValue(std::string_view value, int32_t most, int32_t& number) {
  return !value.empty() && value.size() <= 9 &&
         std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
         ReadNumber(value, number) && number <= most;
}

bool ApplyTolerance(int line, std::string_view name, std::string_view value,
                    _VOUT_INFO_COMPARE_SETTING& setting) {
  constexpr int32_t kDay = 24 * 60 * 60;
  const bool isError = name == "errTolerance_sec";
  int32_t seconds = 0;
  if ((!isError && name != "syncTolerance_sec") || !ReadValue(value, kDay, seconds)) return false;
  std::printf("[VOUT][%d] %s = %d\n", line, isError ? "errTolerance_sec" : "syncTolerance_sec",
              seconds);
  Change(line, name, value, seconds,
         isError ? setting.errTolerance_sec : setting.syncTolerance_sec);
  return true;
}

bool ApplyMask(int line, std::string_view name, std::string_view value,
               _VOUT_INFO_COMPARE_SETTING& setting) {
  if (!name.starts_with("mask ")) return false;
  const auto* const item = std::ranges::find(
      kVoColumns, Trim(name.substr(5)),
      [](const StageColumn& column) { return std::string_view(NameInMessages(column)); });
  int32_t flag = 0;
  if (item == std::end(kVoColumns) || !ReadValue(value, 1, flag)) return false;
  const auto index = static_cast<std::size_t>(item - std::begin(kVoColumns));
  std::printf("[VOUT][%d] maskItem[%d]=%d\n", line, static_cast<int>(index), flag);
  Change(line, name, value, flag, setting.maskItem[index]);
  return true;
}

void PrintSetting(const _VOUT_INFO_COMPARE_SETTING& setting) {
  std::printf("[VOUT] %s\n", kDashes);
  std::printf("[VOUT] FileNameIn1\t= %s\n", setting.fileNameIn1.c_str());
  std::printf("[VOUT] FileNameIn2\t= %s\n", setting.fileNameIn2.c_str());
  std::printf("[VOUT] errTolerance_sec\t= %d\n", setting.errTolerance_sec);
  std::printf("[VOUT] syncTolerance_sec\t= %d\n", setting.syncTolerance_sec);
  for (std::size_t i = 0; i < setting.maskItem.size(); ++i) {
    if (setting.maskItem[i] != 0)
      std::printf("[VOUT] maskItem[%s] is Enabled!\n", NameInMessages(kVoColumns[i]));
  }
  std::printf("[VOUT] QUICT When Error= %d\n", 0);  // the comparison runs to the end
  std::printf("[VOUT] %s\n", kDashes);
}

}  // namespace

void ReadVoutSetting(const std::string& path, _VOUT_INFO_COMPARE_SETTING& setting) {
  std::printf("Test case(VOUT) - open config file: %s ...\n", path.c_str());
  RowReader file(path);
  if (!file.IsOpen()) {
    std::printf("Test case(VOUT) - open config file1: %s fail, use default setting!!\n",
                path.c_str());
    return;
  }
  int number = 0;
  for (std::string line = file.NextLine(); !line.empty(); line = file.NextLine()) {
    ++number;
    const std::string_view entry = Trim(std::string_view(line).substr(0, line.find('#')));
    if (entry.empty()) continue;
    const auto equals = std::min(entry.find('='), entry.size());
    const std::string_view name = Trim(entry.substr(0, equals));
    const std::string_view value = Trim(entry.substr(std::min(equals + 1, entry.size())));
    if (!ApplyTolerance(number, name, value, setting) && !ApplyMask(number, name, value, setting)) {
      std::printf("[VOUT][%d] %.*s is unknown or has a wrong value, ignored\n", number,
                  static_cast<int>(entry.size()), entry.data());
    }
  }
}

bool Api_vout_info_compare(const _VOUT_INFO_COMPARE_SETTING& setting,
                           _VOUT_INFO_COMPARE_RESULT& result, CM_Verify_Result& stage) {
  PrintSetting(setting);
  return ColumnComparison(kRules, setting, setting.maskItem, result, stage).Run();
}

const _VOUT_INFO_COMPARE_SETTING& VoutSettingInUse() {
  return settingInUse;
}

void IgnoreVoutSettings() {
  ignoresSettings = true;
}

void Verify_VO(CM_Verify_Result& result, const std::string& goldenPath,
               const std::string& samplePath) {
  ListColumns(result, kVoColumns);
  _VOUT_INFO_COMPARE_SETTING setting;
  setting.fileNameIn1 = goldenPath;
  setting.fileNameIn2 = samplePath;
  if (!ignoresSettings) ReadVoutSetting(kSettingPath, setting);
  settingInUse = setting;
  _VOUT_INFO_COMPARE_RESULT first;
  const bool passed = Api_vout_info_compare(setting, first, result);
  std::printf("Api_vout_info_compare result: %s\n", passed ? "PASS" : "FAIL");
  if (first.failed) {
    std::printf("[VOUT] FAIL ON Frame[%d.%d], %s Golden[%x] != Dump[%x]\n", first.frameNumber,
                static_cast<int>(first.item), NameInMessages(kVoColumns[first.item]),
                static_cast<uint32_t>(first.golden), static_cast<uint32_t>(first.dump));
  }
  std::printf("Test case(VOUT) - Done!!@%d, rst=%d\n", first.frameCount, passed ? 0 : -1);
}
