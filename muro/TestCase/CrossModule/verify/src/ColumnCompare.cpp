#include "ColumnCompare.h"

#include <algorithm>
#include <cstdio>

#include "../../stages/src/CrossModuleLog.h"

namespace {

constexpr char kFailLine[] = "==================================================";

bool HasBit(std::uint32_t bits, std::size_t item) {
  return (bits >> item & 1U) != 0;
}

void PrintTitle(RowReader& file, int number) {
  const std::string title(WithoutLineEnd(file.NextLine()));
  std::printf("[Title%d] %s\n", number, Printable(title).c_str());
}

/// True if there is an item that is neither masked nor the counter.
bool HasUnmaskedItem(const RowFormat& format, std::span<const uint8_t> mask) {
  for (std::size_t i = 0; i < format.itemCount; ++i) {
    if (i != format.counterItem && mask[i] == 0) return true;
  }
  return false;
}

}  // namespace

void Verify_VO_push_frameInfo(_VOUT_INFO_COMPARE_RESULT& result, const VoFrameInfo& info) {
  result.frameInfo.push_back(info);
}

ColumnComparison::ColumnComparison(const ColumnRules& rules,
                                   const _SCALER_INFO_COMPARE_SETTING& setting,
                                   std::span<const uint8_t> mask, _VOUT_INFO_COMPARE_RESULT& result,
                                   CM_Verify_Result& stage)
    : rules_(rules),
      setting_(setting),
      mask_(mask),
      result_(result),
      stage_(stage),
      files_(setting.fileNameIn1, setting.fileNameIn2),
      sameItems_(rules.format),
      comparesAnything_(HasUnmaskedItem(rules.format, mask)),
      debounceCount_(rules.firstDebounceCount) {}

bool ColumnComparison::Run() {
  const std::string openFailure = std::string("Test case(") + rules_.name + ") - open text file";
  if (!files_.AreOpen(stage_, (openFailure + "1 fail").c_str(), (openFailure + "2 fail").c_str())) {
    return false;
  }
  PrintTitle(files_.golden, 1);
  PrintTitle(files_.sample, 2);
  Walk();
  stage_.coverage.goldenOnly += files_.golden.CountFilledLines();
  stage_.coverage.dumpOnly += files_.sample.CountFilledLines();
  result_.frameCount = rows_;
  stage_.putVerifyFrameCount(rows_);
  PrintSummary();
  return !result_.failed;
}

/// True if the current row is after the tolerance period, so that a difference fails.
bool ColumnComparison::IsJudged() const {
  return rows_ >= debounceCount_ && comparesAnything_;
}

/// Walks to the end of the longer file, or to a malformed row.
void ColumnComparison::Walk() {
  std::string_view golden;
  std::string_view sample;
  for (bool readable = true; readable; ++rows_) {
    const bool goldenIsThere = files_.golden.NextFilled(golden);
    if (goldenIsThere && TakeSame(golden)) continue;
    const bool sampleIsThere = files_.sample.NextFilled(sample);
    if (!goldenIsThere) golden_.lastRead = -1;
    if (!sampleIsThere) sample_.lastRead = -1;
    if (!goldenIsThere && !sampleIsThere) return;
    if (goldenIsThere && sampleIsThere) {
      readable = CompareRows(golden, sample);
      if (IsJudged()) ++stage_.coverage.compared;
    } else {
      NoteMissingRow(goldenIsThere, goldenIsThere ? golden : sample);
    }
  }
}

/// Consumes and counts the sample's row if its text equals golden's. Returns false if the rows must
/// be parsed: when they differ, or may contain the frame rate.
bool ColumnComparison::TakeSame(std::string_view goldenRow) {
  if (!rules_.rateFromFrameZero && !rateIsKnown_) return false;
  const SameRow same = sameItems_.Find(goldenRow, files_.sample.Ahead());
  if (same.length == 0) return false;
  const int32_t frame = ToNumber(same.text);
  if (rules_.rateFromFrameZero && frame == 0) return false;
  files_.sample.Skip(same.length);
  if (IsJudged()) ++stage_.coverage.compared;
  golden_.lastFrame = sample_.lastFrame = frame;
  if (rules_.repeatItem == 1 && ToNumber(goldenRow.substr(same.text.size() + 1)) != 0) {
    ++golden_.repeats;
    ++sample_.repeats;
  }
  return true;
}

/// Compares two rows item by item. Returns false if one of them is incomplete: then its first
/// unreadable item fails, and the items after it are not compared.
bool ColumnComparison::CompareRows(std::string_view goldenRow, std::string_view sampleRow) {
  ItemPair pair(goldenRow, sampleRow, rules_.format);
  NoteRow(golden_, pair.golden, pair.goldenCount);
  NoteRow(sample_, pair.sample, pair.sampleCount);
  if (pair.readable > rules_.rateItem) {
    LearnRate(pair.golden);
    if (rules_.comparesWholeRates) {
      for (RowItems* items : {&pair.golden, &pair.sample}) {
        int32_t& rate = (*items)[rules_.rateItem];
        rate = WholeRate(rate, rules_.rateRounding);
      }
    }
  }
  for (std::size_t i = 0; i < pair.readable; ++i) CompareItem(pair, i);
  if (!pair.whole) {
    const std::size_t item = pair.readable;
    ++itemErrors_[item];
    Fail(pair.goldenCount != 0 ? pair.golden[0] : ToNumber(sampleRow), item,
         {pair.golden[item], item < pair.goldenCount}, {pair.sample[item], item < pair.sampleCount},
         HiddenDifference::kMalformedRow);
  }
  return pair.whole;
}

/// Records a row that only one file has. It always fails: the tolerance is for pictures that differ
/// while the output settles, and an empty dump must not pass because of it.
void ColumnComparison::NoteMissingRow(bool goldenIsThere, std::string_view row) {
  const int32_t frame = ToNumber(row);
  golden_.lastFrame = goldenIsThere ? frame : -1;
  sample_.lastFrame = goldenIsThere ? -1 : frame;
  ++(goldenIsThere ? sample_ : golden_).drops;
  ++(goldenIsThere ? stage_.coverage.goldenOnly : stage_.coverage.dumpOnly);
  ++itemErrors_[0];
  Fail(frame, 0, {golden_.lastFrame, goldenIsThere}, {sample_.lastFrame, !goldenIsThere});
}

void ColumnComparison::NoteRow(Side& side, const RowItems& items, std::size_t itemCount) {
  side.lastRead = itemCount == 0 ? 0 : 1;
  side.drops += itemCount == 0 ? 1 : 0;
  side.lastFrame = itemCount == 0 ? -1 : items[0];
  const std::size_t repeat = rules_.repeatItem;
  if (repeat < itemCount && items[repeat] != 0) ++side.repeats;
}

/// Derives the lengths of the tolerances, in rows, from the golden row.
void ColumnComparison::LearnRate(const RowItems& golden) {
  const int32_t rate = golden[rules_.rateItem];
  if (rules_.rateFromFrameZero ? golden[0] != 0 || rate == 0 : rateIsKnown_) return;
  const int32_t framesPerSecond = WholeRate(rate, rules_.rateRounding);
  if (!rules_.rateFromFrameZero && framesPerSecond <= 0) return;
  const int64_t errorCount = int64_t{framesPerSecond} * setting_.errTolerance_sec;
  const int64_t syncCount = int64_t{framesPerSecond} * setting_.syncTolerance_sec;
  rateIsKnown_ = true;
  debounceCount_ = std::max(errorCount, syncCount);
  std::printf("[%s] frame rate=%d, error debounceCnt=%d, sync debounceCnt=%d\n", rules_.name,
              framesPerSecond, static_cast<int>(errorCount), static_cast<int>(syncCount));
}

void ColumnComparison::CompareItem(const ItemPair& pair, std::size_t item) {
  const int32_t golden = pair.golden[item];
  const int32_t dump = pair.sample[item];
  if (golden == dump || item == rules_.format.counterItem) return;
  ++itemErrors_[item];
  if (rows_ < debounceCount_ || mask_[item] != 0) return;
  if (HasBit(rules_.frameInfoItems, item)) {
    Verify_VO_push_frameInfo(result_, {pair.golden[0], item, golden, dump});
  }
  Fail(pair.golden[0], item, {golden}, {dump});
}

void ColumnComparison::Fail(int32_t frameNumber, std::size_t item, ItemValue golden, ItemValue dump,
                            HiddenDifference hidden) {
  ++failures_;
  const auto textOf = [&](const ItemValue& value) {
    return ItemText(value.value, value.isThere && HasBit(rules_.format.hexadecimal, item),
                    rules_.hexPrefix);
  };
  AppendWrongField(stage_, frameNumber, item, textOf(golden), textOf(dump), hidden);
  if (result_.failed) return;
  result_.failed = true;
  result_.frameNumber = frameNumber;
  result_.item = item;
  result_.golden = golden.value;
  result_.dump = dump.value;
  std::printf("[%s][%d] is_same=0@FrameNo[%d.%d], %s NOT MATCH!!\n%s\n", rules_.name, rows_,
              golden_.lastFrame, sample_.lastFrame, NameInMessages(rules_.columns[item]),
              kFailLine);
}

void ColumnComparison::PrintSummary() const {
  std::printf("[%s] file scan end@FC[%d], rst=[%d|%d]!!\n", rules_.name, rows_, golden_.lastRead,
              sample_.lastRead);
  std::printf("[%s] ------- Error count: --------\n", rules_.name);
  for (std::size_t i = 0; i < rules_.columns.size(); ++i) {
    std::printf("[%s] %s :%d\n", rules_.name, NameInMessages(rules_.columns[i]), itemErrors_[i]);
  }
  std::printf("[%s] compare frameCnt=%d(Last frame_n=%d|%d) %s !!!, errCnt=%d, ", rules_.summaryTag,
              rows_, golden_.lastFrame, sample_.lastFrame, result_.failed ? "FAIL" : "PASS",
              failures_);
  if (rules_.repeatItem != kNoItem) {
    std::printf("repeatCnr=%d/%d, ", golden_.repeats, sample_.repeats);
  }
  std::printf("DropCnt=%d/%d\n", golden_.drops, sample_.drops);
}
