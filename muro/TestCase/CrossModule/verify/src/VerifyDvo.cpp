#include <iterator>
#include <optional>
#include <tuple>

#include "../../stages/src/CrossModuleLog.h"
#include "ComparisonRules.h"
#include "LockStep.h"
#include "Verifiers.h"

namespace {

constexpr std::size_t kFrameNumber = ColumnOf(kDvoColumns, Unit::kFrame);
constexpr std::size_t kKind = ColumnNamed(kDvoColumns, "frame_kind");
constexpr std::size_t kRate = ColumnOf(kDvoColumns, Unit::kMilliFramesPerSecond);
constexpr std::size_t kPts = ColumnNamed(kDvoColumns, "pts.L");
constexpr std::size_t kMarker = ColumnNamed(kDvoColumns, "marker");

// The fields that have a name in the result, in its order.
constexpr std::size_t kListedFields[] = {kFrameNumber, kRate, kPts};
enum Listed : std::size_t { kListedFrameNumber, kListedRate, kListedPts };

constexpr std::size_t kFieldCount = std::tuple_size_v<decltype(MURO_DVO_FIELDS::field)>;

int32_t FrameNumber(const MURO_DVO_FIELDS& row) {
  return ToNumber(row.field[kFrameNumber]);
}

/// Frames of the first two seconds, which are not compared.
bool IsStartUp(const MURO_DVO_FIELDS& row) {
  return FrameNumber(row) < StartUpFrames(ToNumber(row.field[kRate]));
}

bool IsEndOfStream(const MURO_DVO_FIELDS& row) {
  return WithoutLineEnd(row.field[kFrameNumber]) == "EOS";
}

void AppendColumn(CM_Verify_Result& result, const MURO_DVO_FIELDS& golden, std::size_t column,
                  std::string_view dump, HiddenDifference hidden = HiddenDifference::kNone) {
  AppendWrongField(result, FrameNumber(golden), column, golden.field[kListedFields[column]], dump,
                   hidden);
}

class DvoWalk : public LockStepWalk {
 public:
  using LockStepWalk::LockStepWalk;

 private:
  /// A row with a minus sign may be marked as dropped, which causes a message.
  std::size_t FindSame() override {
    const std::string_view row = golden_.row;
    if (!inStep_ || row.back() != '\n' || !sample_.file.Ahead().starts_with(row)) return 0;
    const int32_t frame = ToNumber(row);
    if (frame < kDvoFirstCheckedFrame) return 0;
    if (row.find('-') != std::string_view::npos || CountFields(row) < kFieldCount) return 0;
    lastGolden_ = lastSample_ = frame;
    return row.size();
  }

  bool IsSelected(std::string_view row, int32_t) const override {
    MURO_DVO_FIELDS fields;
    parseFields(fields, row);
    return !IsEndOfStream(fields) && FrameNumber(fields) >= kDvoFirstCheckedFrame &&
           !IsStartUp(fields);
  }

  ReadMode Judge() override {
    parseFields(goldenFields_, golden_.row);
    parseFields(sampleFields_, sample_.row);
    const bool goldenEnds = IsEndOfStream(goldenFields_);
    const bool sampleEnds = IsEndOfStream(sampleFields_);
    if (goldenEnds) log_ << "[muro:" << __LINE__ << "] golden got EOS \n";
    if (sampleEnds) log_ << "[muro:" << __LINE__ << "] sample got EOS \n";
    if (sampleEnds) return goldenEnds ? ReadMode::kEnd : UnlessGoldenIsBroken(ReadMode::kEnd);
    if (goldenEnds) return UnlessSampleIsBroken(ReadMode::kGoldenOnly);
    const int32_t golden = FrameNumber(goldenFields_);
    if (golden < kDvoFirstCheckedFrame) return UnlessGoldenIsBroken(ReadMode::kGoldenOnly);
    const int32_t sample = FrameNumber(sampleFields_);
    if (!inStep_ && !FindStart(golden, sample)) return UnlessSampleIsBroken(ReadMode::kSampleOnly);
    if (golden < sample) return SampleIsAhead(golden, sample);
    if (sample < golden) return UnlessSampleIsBroken(SampleIsBehind(golden, sample));
    return Compare(golden, sample);
  }

  /// What to read next, unless the row to be skipped is malformed: that ends the walk.
  ReadMode UnlessGoldenIsBroken(ReadMode next) { return Unless("golden", golden_, next); }
  ReadMode UnlessSampleIsBroken(ReadMode next) { return Unless("sample", sample_, next); }
  ReadMode Unless(const char* name, const Side& side, ReadMode next) {
    if (!IsBroken(name, side, kFieldCount)) return next;
    reportMissingFields(result_, goldenFields_, HiddenDifference::kMalformedRow);
    return ReadMode::kEnd;
  }

  /// Looks for golden's first checked frame in the dump. Returns true if it is the current one.
  bool FindStart(int32_t golden, int32_t sample) {
    if (!firstChecked_) {
      firstChecked_ = golden;
      log_ << "[muro:" << __LINE__ << "] golden first check no:" << golden << "\n";
    }
    inStep_ = sample == *firstChecked_;
    if (inStep_) {
      log_ << "[muro:" << __LINE__ << "] sample first check no:" << sample << " ("
           << golden_.rowsRead << " " << sample_.rowsRead << ")\n";
    } else if (sample > *firstChecked_ && !startIsMissing_) {
      // A dump that lost exactly this frame has no starting point, and must not pass because of
      // that.
      startIsMissing_ = true;
      reportMissingFields(result_, goldenFields_);
    }
    return inStep_;
  }

  ReadMode SampleIsAhead(int32_t golden, int32_t sample) {
    log_ << "[muro:" << __LINE__ << "] golden->frame_no:" << golden
         << ", but missing sampe. cur sample no:" << sample << "\n";
    reportMissingFields(result_, goldenFields_);
    if (int64_t{sample} - lastGolden_ >= 2) log_ << "loss one line error\n";
    return ReadMode::kGoldenOnly;
  }

  ReadMode SampleIsBehind(int32_t golden, int32_t sample) {
    if (sample == lastSample_ && ToNumber(sampleFields_.field[kMarker]) == 1) {
      log_ << "[muro:" << __LINE__ << "] golden->frame_no:" << golden
           << ", but sampe->frame_no:" << sample << " is repeat!!\n";
      reportRepeatFields(result_, goldenFields_, sampleFields_);
    } else {
      result_.outOfOrder = true;
    }
    return ReadMode::kSampleOnly;
  }

  ReadMode Compare(int32_t golden, int32_t sample) {
    const std::size_t fieldsBefore = result_.wrongFields.size();
    const uint32_t mask = compareFields(result_, goldenFields_, sampleFields_, log_);
    // A difference without a wrong field ends the walk, and must not count as a correct frame.
    const bool isTold = mask == 0 || result_.wrongFields.size() != fieldsBefore;
    if (isTold) CountAsCompared();
    if (mask != 0) return ReadMode::kEnd;
    if (UnlessSampleIsBroken(ReadMode::kBoth) == ReadMode::kEnd ||
        UnlessGoldenIsBroken(ReadMode::kBoth) == ReadMode::kEnd) {
      return ReadMode::kEnd;
    }
    lastGolden_ = golden;
    lastSample_ = sample;
    return ReadMode::kBoth;
  }

  MURO_DVO_FIELDS goldenFields_;
  MURO_DVO_FIELDS sampleFields_;
  std::optional<int32_t> firstChecked_;  // golden's first frame after the warm-up
  bool inStep_ = false;                  // the dump has it too
  bool startIsMissing_ = false;
  int32_t lastGolden_ = 0;  // numbers of the last rows compared
  int32_t lastSample_ = 0;
};

}  // namespace

void reportMissingFields(CM_Verify_Result& result, const MURO_DVO_FIELDS& golden,
                         HiddenDifference hidden) {
  for (std::size_t i = 0; i < std::size(kListedFields); ++i) {
    AppendColumn(result, golden, i, kMissingValue, hidden);
  }
}

void reportRepeatFields(CM_Verify_Result& result, const MURO_DVO_FIELDS& golden,
                        const MURO_DVO_FIELDS& sample) {
  for (std::size_t i = 0; i < std::size(kListedFields); ++i) {
    AppendColumn(result, golden, i, sample.field[kListedFields[i]]);
  }
}

uint32_t compareFields(CM_Verify_Result& result, const MURO_DVO_FIELDS& golden,
                       const MURO_DVO_FIELDS& sample, FrameLog& log) {
  if (IsStartUp(golden)) return 0;
  if (ToNumber(sample.field[kMarker]) < 0) {
    log << "[muro:" << __LINE__ << "] golden->frame_no:" << Printable(golden.field[kFrameNumber])
        << ", but sampe->frame_no is being drop!!\n";
    AppendColumn(result, golden, kListedFrameNumber, sample.field[kFrameNumber],
                 HiddenDifference::kDropMarker);
    return 0x2;
  }
  uint32_t mask = 0;
  if (golden.field[kFrameNumber] != sample.field[kFrameNumber]) {
    AppendColumn(result, golden, kListedFrameNumber, sample.field[kFrameNumber]);
    mask |= 0x8;
  }
  if (golden.field[kRate] != sample.field[kRate]) {
    // Only frames of this kind have their own rate.
    if (golden.field[kKind] == "2") AppendColumn(result, golden, kListedRate, sample.field[kRate]);
    mask |= 0x4;
  }
  if (golden.field[kPts] != sample.field[kPts]) {
    AppendColumn(result, golden, kListedPts, sample.field[kPts]);
    mask |= 0x2;
  }
  PrintMismatch(log, FrameNumber(golden), mask);
  return mask;
}

void Verify_DVO(CM_Verify_Result& result, const std::string& goldenPath,
                const std::string& samplePath) {
  ListColumns(result, kDvoColumns);
  StageFiles files(goldenPath, samplePath);
  if (files.AreOpen(result, nullptr, nullptr)) DvoWalk(result, files).Run();
}
