// The comparison of dumps whose rows are numbers in columns, for the video output and the scaler:
// row by row and item by item, with tolerance at the start and masks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "../../stages/src/VerifyResult.h"
#include "ComparisonRules.h"
#include "RowReader.h"
#include "StageFiles.h"

inline constexpr RowFormat kVoFormat = FormatOf(kVoColumns);
inline constexpr RowFormat kScalerFormat = FormatOf(kScalerColumns);

/// What to compare, and how strictly.
struct _SCALER_INFO_COMPARE_SETTING {
  std::string fileNameIn1;  // golden
  std::string fileNameIn2;  // sample
  int32_t errTolerance_sec = kSettlingSeconds;
  int32_t syncTolerance_sec = kSettlingSeconds;
};
struct _VOUT_INFO_COMPARE_SETTING : _SCALER_INFO_COMPARE_SETTING {
  std::array<uint8_t, kVoFormat.itemCount> maskItem{};  // 1: not compared
};

/// A frame whose number or input picture differs outside the tolerance.
struct VoFrameInfo {
  int32_t frameNumber;
  std::size_t item;
  int32_t golden;
  int32_t dump;
};

/// The first failure, and statistics of the comparison.
struct _VOUT_INFO_COMPARE_RESULT {
  bool failed = false;
  int32_t frameNumber = 0;
  std::size_t item = 0;
  int32_t golden = 0;
  int32_t dump = 0;
  int32_t frameCount = 0;  // rows processed
  std::vector<VoFrameInfo> frameInfo;
};

/// Compares the two files of the setting. The first failure is stored in `result`, every failing
/// field in the stage's wrong fields. Returns true if there is no failure and both files could be
/// opened.
bool Api_vout_info_compare(const _VOUT_INFO_COMPARE_SETTING& setting,
                           _VOUT_INFO_COMPARE_RESULT& result, CM_Verify_Result& stage);
bool Api_scaler_info_compare(const _SCALER_INFO_COMPARE_SETTING& setting,
                             _VOUT_INFO_COMPARE_RESULT& result, CM_Verify_Result& stage);

/// Records a frame event.
void Verify_VO_push_frameInfo(_VOUT_INFO_COMPARE_RESULT& result, const VoFrameInfo& info);

/// Changes the setting according to a settings file: one `name = value` per line, `#` starts a
/// comment. Names are errTolerance_sec, syncTolerance_sec and "mask" with an item's name. Prints
/// every entry; an invalid one is reported and ignored. A missing file changes nothing.
void ReadVoutSetting(const std::string& path, _VOUT_INFO_COMPARE_SETTING& setting);

/// The setting used in the last verification of the video output; before the first one, the setting
/// without a settings file.
const _VOUT_INFO_COMPARE_SETTING& VoutSettingInUse();

/// The differences between the comparisons of the two stages.
struct ColumnRules {
  RowFormat format;
  std::span<const StageColumn> columns;
  std::size_t rateItem;
  int32_t rateRounding;          // added to thousandths of a frame per second before the division
  bool comparesWholeRates;       // the rate is compared in frames per second
  bool rateFromFrameZero;        // the rate is that of frame 0, else the first valid one
  int32_t firstDebounceCount;    // rows of tolerance while the rate is unknown
  const char* hexPrefix;         // printed before failing hexadecimal values
  std::size_t repeatItem;        // counts repeats; `kNoItem` if the stage has none
  std::uint32_t frameInfoItems;  // bit n: a difference in item n is a frame event
  const char* name;              // in messages: "[VOUT]", "Test case(VOUT)"
  const char* summaryTag;
};
inline constexpr std::size_t kNoItem = kMaxItems;

/// One run of the comparison.
class ColumnComparison {
 public:
  /// `mask` has one flag per item.
  ColumnComparison(const ColumnRules& rules, const _SCALER_INFO_COMPARE_SETTING& setting,
                   std::span<const uint8_t> mask, _VOUT_INFO_COMPARE_RESULT& result,
                   CM_Verify_Result& stage);

  /// Compares and prints. Returns true if nothing failed.
  bool Run();

 private:
  /// Counts for each of the two files.
  struct Side {
    int32_t lastFrame = -1;
    int32_t lastRead = 1;  // of the frame number: 1 read, 0 not a number, -1 end of the file
    int32_t drops = 0;     // rows whose frame number could not be read
    int32_t repeats = 0;   // frames that were shown more than once
  };

  /// The value of an item, -1 if the row or the item is missing.
  struct ItemValue {
    int32_t value;
    bool isThere = true;
  };

  void Walk();
  bool IsJudged() const;
  bool TakeSame(std::string_view goldenRow);
  bool CompareRows(std::string_view goldenRow, std::string_view sampleRow);
  void NoteMissingRow(bool goldenIsThere, std::string_view row);
  void NoteRow(Side& side, const RowItems& items, std::size_t itemCount);
  void LearnRate(const RowItems& golden);
  void CompareItem(const ItemPair& pair, std::size_t item);
  void Fail(int32_t frameNumber, std::size_t item, ItemValue golden, ItemValue dump,
            HiddenDifference hidden = HiddenDifference::kNone);
  void PrintSummary() const;

  const ColumnRules& rules_;
  const _SCALER_INFO_COMPARE_SETTING& setting_;
  const std::span<const uint8_t> mask_;
  _VOUT_INFO_COMPARE_RESULT& result_;
  CM_Verify_Result& stage_;
  StageFiles files_;
  SameItems sameItems_;
  Side golden_;
  Side sample_;
  const bool comparesAnything_;  // false: all items are masked
  int64_t debounceCount_;
  bool rateIsKnown_ = false;
  int32_t rows_ = 0;
  int32_t failures_ = 0;
  std::array<int32_t, kMaxItems> itemErrors_{};
};
