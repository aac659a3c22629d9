#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <tuple>

#include "ComparisonRules.h"
#include "LockStep.h"
#include "Verifiers.h"

namespace {

/// Indexes of the output's columns.
struct Output {
  static constexpr std::size_t kFrameNumber = ColumnOf(kOmxOutputColumns, Unit::kFrame);
  static constexpr std::size_t kWidth = ColumnNamed(kOmxOutputColumns, "width");
  static constexpr std::size_t kHdrInfo = ColumnNamed(kOmxOutputColumns, "hdrInfo");
  static constexpr std::size_t kRate = ColumnOf(kOmxOutputColumns, Unit::kMilliFramesPerSecond);
  static constexpr std::size_t kPts = ColumnNamed(kOmxOutputColumns, "pts.L");
};

/// Indexes of the input's columns.
struct Input {
  static constexpr std::size_t kFrameNumber = ColumnOf(kOmxInputColumns, Unit::kFrame);
  static constexpr std::size_t kSize = ColumnNamed(kOmxInputColumns, "input_size");
  static constexpr std::size_t kFlags = ColumnNamed(kOmxInputColumns, "input_flags");
  static constexpr std::size_t kPts = ColumnNamed(kOmxInputColumns, "pts.L");
};

int32_t FrameNumber(const OMX_MURO_FIELDS& row) {
  return ToNumber(row.field[Output::kFrameNumber]);
}
int32_t FrameNumber(const MURO_OMX_INPUT_FIELDS& row) {
  return ToNumber(row.field[Input::kFrameNumber]);
}

int32_t StartUpFramesOf(const OMX_MURO_FIELDS& row) {
  return StartUpFrames(ToNumber(row.field[Output::kRate]));
}
bool IsStartUp(const OMX_MURO_FIELDS& row) {
  return FrameNumber(row) < StartUpFramesOf(row);
}
/// The input of the decoder has no frame rate.
bool IsStartUp(const MURO_OMX_INPUT_FIELDS&) {
  return false;
}

/// Recognises rows of the first two seconds without parsing each one: the text between the 90 kHz
/// counter and the pts, including the frame rate, seldom changes.
template <class Fields>
class StartUpRows {
 public:
  bool Contains(std::string_view row, std::string_view behindCounter) {
    if (known_.empty() || !behindCounter.starts_with(known_)) Learn(row, behindCounter);
    return known_.empty() || (!IsPlainlyLarge(row) && ToNumber(row) < frames_);
  }

  /// True if a row that `Contains` has checked definitely has all its fields.
  bool IsWhole(std::string_view behindCounter) const {
    return !known_.empty() && IsPlain(behindCounter.substr(known_.size()), 1);
  }

 private:
  /// True for more digits than the number of start-up frames has: most rows need not be parsed.
  bool IsPlainlyLarge(std::string_view row) const {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return row.size() > digits_ && row[0] != '0' &&
           std::all_of(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(digits_) + 1,
                       isDigit);
  }

  void Learn(std::string_view row, std::string_view behindCounter) {
    OMX_MURO_FIELDS fields;
    parseFields(fields, row);
    const char* const pts = fields.field.back().data();
    known_ = pts == nullptr ? "" : std::string(behindCounter.data(), pts);
    frames_ = StartUpFramesOf(fields);
    digits_ = std::to_string(frames_).size();
  }

  std::string known_;  // of the last row that was parsed
  int32_t frames_ = 0;
  std::size_t digits_ = 1;
};
template <>
class StartUpRows<MURO_OMX_INPUT_FIELDS> {
 public:
  bool Contains(std::string_view, std::string_view) { return false; }
  bool IsWhole(std::string_view) const { return false; }
};

template <class Fields>
void ReportAllFields(CM_Verify_Result& result, const Fields& golden, HiddenDifference hidden) {
  for (std::size_t i = 0; i < golden.field.size(); ++i) {
    AppendWrongField(result, FrameNumber(golden), i, golden.field[i], kMissingValue, hidden);
  }
}

/// Appends column `i` and returns its bit if the rows differ in it.
template <class Fields>
uint32_t CompareField(CM_Verify_Result& result, const Fields& golden, const Fields& sample,
                      std::size_t i, uint32_t bit) {
  if (golden.field[i] == sample.field[i]) return 0;
  AppendWrongField(result, FrameNumber(golden), i, golden.field[i], sample.field[i]);
  return bit;
}

/// A rate that is slightly off only causes a warning.
uint32_t CompareRate(CM_Verify_Result& result, const OMX_MURO_FIELDS& golden,
                     const OMX_MURO_FIELDS& sample, FrameLog& log) {
  if (golden.field[Output::kRate] == sample.field[Output::kRate]) return 0;
  const int32_t goldenRate = ToNumber(golden.field[Output::kRate]);
  const int32_t sampleRate = ToNumber(sample.field[Output::kRate]);
  log << "[muro] warning frame_no:" << FrameNumber(golden) << " golden_fps:" << goldenRate
      << ", sample_fps:" << sampleRate << " \n";
  if (std::abs(int64_t{goldenRate} - sampleRate) <= kOmxRateTolerance) return 0;
  return CompareField(result, golden, sample, Output::kRate, 0x4);
}

void PrintLarger(FrameLog& log, int32_t golden, int32_t sample) {
  log << "[muro:" << __LINE__ << "] golden->frame_no:" << golden
      << ", but sampe->frame_no:" << sample << " is larger!!\n";
}
void PrintLagging(FrameLog& log, const OMX_MURO_FIELDS&, int32_t golden, int32_t sample) {
  log << "[muro:" << __LINE__ << "] golden->frame_no:" << golden
      << ", but sampe->frame_no:" << sample << " is less!!\n";
}
void PrintLagging(FrameLog& log, const MURO_OMX_INPUT_FIELDS&, int32_t golden, int32_t sample) {
  log << "[muro:" << __LINE__ << "] golden->frame_no:" << golden
      << ", but missing sampe. cur sample no:" << sample << "\n";
}

template <class Fields>
class OmxWalk : public LockStepWalk {
 public:
  OmxWalk(CM_Verify_Result& result, StageFiles& files, int32_t warmUpRows)
      : LockStepWalk(result, files), warmUpRows_(warmUpRows) {}

 private:
  std::size_t FindSame() override {
    if (golden_.rowsRead <= warmUpRows_ || sample_.rowsRead < warmUpRows_) return 0;
    const SameRow same = SameButSecondField(golden_.row, sample_.file.Ahead());
    if (same.length == 0 || startUp_.Contains(golden_.row, same.text)) return 0;
    // The text is that of the fields after the first two.
    const bool isWhole = startUp_.IsWhole(same.text) || CountFields(same.text) + 2 >= kFieldCount;
    return isWhole ? same.length : 0;
  }

  bool IsSelected(std::string_view row, int32_t rowsRead) const override {
    Fields fields;
    parseFields(fields, row);
    return rowsRead > warmUpRows_ && !IsStartUp(fields);
  }

  ReadMode Judge() override {
    if (golden_.rowsRead <= warmUpRows_ && sample_.rowsRead <= warmUpRows_) return ReadMode::kBoth;
    Fields golden;
    parseFields(golden, golden_.row);
    // A line without an end is not a row: read in pieces, it would be thousands of wrong fields.
    if (IsPiece(golden_.row, kDataLimit) || IsPiece(sample_.row, kDataLimit))
      return EndIfBroken(golden);
    if (IsStartUp(golden)) return ReadMode::kGoldenOnly;
    Fields sample;
    parseFields(sample, sample_.row);
    if (IsStartUp(sample)) return ReadMode::kSampleOnly;
    const int32_t goldenNumber = FrameNumber(golden);
    const int32_t sampleNumber = FrameNumber(sample);
    if (goldenNumber < sampleNumber) {
      reportMissingFields(result_, golden);
      PrintLarger(log_, goldenNumber, sampleNumber);
      return ReadMode::kGoldenOnly;
    }
    if (sampleNumber < goldenNumber) {
      reportMissingFields(result_, golden);
      PrintLagging(log_, golden, goldenNumber, sampleNumber);
      return ReadMode::kSampleOnly;
    }
    CountAsCompared();
    if (compareFields(result_, golden, sample, log_) != 0) {
      NoteExtraColumns();
      return ReadMode::kEnd;
    }
    return EndIfBroken(golden);
  }

  /// Ends the walk if one of the rows is malformed.
  ReadMode EndIfBroken(const Fields& golden) {
    if (!IsBroken("golden", golden_, kFieldCount) && !IsBroken("sample", sample_, kFieldCount))
      return ReadMode::kBoth;
    reportMissingFields(result_, golden, HiddenDifference::kMalformedRow);
    return ReadMode::kEnd;
  }

  /// The last field includes its line end; an additional column removes it from that field.
  void NoteExtraColumns() {
    if (CountFields(golden_.row) == CountFields(sample_.row)) return;
    for (VerifyFailField& field : result_.wrongFields) {
      if (field.hidden == HiddenDifference::kLineEnd) field.hidden = HiddenDifference::kExtraColumn;
    }
  }

  static constexpr std::size_t kFieldCount = std::tuple_size_v<decltype(Fields::field)>;

  const int32_t warmUpRows_;
  StartUpRows<Fields> startUp_;
};

template <class Fields>
void Verify(CM_Verify_Result& result, const std::string& goldenPath, const std::string& samplePath,
            int32_t warmUpRows) {
  StageFiles files(goldenPath, samplePath);
  if (files.AreOpen(result, nullptr, nullptr)) OmxWalk<Fields>(result, files, warmUpRows).Run();
}

}  // namespace

void reportMissingFields(CM_Verify_Result& result, const OMX_MURO_FIELDS& golden,
                         HiddenDifference hidden) {
  ReportAllFields(result, golden, hidden);
}

void reportMissingFields(CM_Verify_Result& result, const MURO_OMX_INPUT_FIELDS& golden,
                         HiddenDifference hidden) {
  ReportAllFields(result, golden, hidden);
}

uint32_t compareFields(CM_Verify_Result& result, const OMX_MURO_FIELDS& golden,
                       const OMX_MURO_FIELDS& sample, FrameLog& log) {
  if (IsStartUp(golden)) return 0;
  uint32_t mask = CompareField(result, golden, sample, Output::kFrameNumber, 0x80);
  if (golden.field[Output::kWidth] != sample.field[Output::kWidth]) {
    log << "[muro] warning frame_no:" << FrameNumber(golden)
        << " golden_width:" << ToNumber(golden.field[Output::kWidth])
        << ", sample_width:" << ToNumber(sample.field[Output::kWidth]) << " \n";
  }
  mask |= CompareField(result, golden, sample, Output::kHdrInfo, 0x8);
  mask |= CompareRate(result, golden, sample, log);
  mask |= CompareField(result, golden, sample, Output::kPts, 0x2);
  PrintMismatch(log, FrameNumber(golden), mask);
  return mask;
}

uint32_t compareFields(CM_Verify_Result& result, const MURO_OMX_INPUT_FIELDS& golden,
                       const MURO_OMX_INPUT_FIELDS& sample, FrameLog& log) {
  uint32_t mask = CompareField(result, golden, sample, Input::kFrameNumber, 0x20);
  mask |= CompareField(result, golden, sample, Input::kSize, 0x8);
  mask |= CompareField(result, golden, sample, Input::kFlags, 0x4);
  mask |= CompareField(result, golden, sample, Input::kPts, 0x2);
  PrintMismatch(log, FrameNumber(golden), mask);
  return mask;
}

void Verify_OMX_Output(CM_Verify_Result& result, const std::string& goldenPath,
                       const std::string& samplePath) {
  ListColumns(result, kOmxOutputColumns);
  Verify<OMX_MURO_FIELDS>(result, goldenPath, samplePath, kOmxOutputWarmUpRows);
}

void Verify_OMX_Input(CM_Verify_Result& result, const std::string& goldenPath,
                      const std::string& samplePath) {
  ListColumns(result, kOmxInputColumns);
  Verify<MURO_OMX_INPUT_FIELDS>(result, goldenPath, samplePath, kOmxInputWarmUpRows);
}
