#include "AvSync.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "Ansi.h"
#include "ColumnCompare.h"
#include "LateStage.h"
#include "ReportTable.h"
#include "RowReader.h"

namespace {

constexpr int kDemoOffsetMs = -10;

constexpr int64_t kTicksPerMs = 90;
constexpr int32_t kFirstAudioPts = 300 * kTicksPerMs;
constexpr uint32_t kBeepRange = 45000;
constexpr std::size_t kFirstBeepRow = 100;
constexpr int kSilence = 1000000;  // a beep is louder
constexpr std::size_t kScalerLead = 10;

constexpr const char* kVoFlashes[] = {"1e82234e", "4830d127"};
constexpr const char* kScalerFlashes[] = {"1b184f64", "c5b6c53"};

int offsetMs = 0;

bool IsOneOf(std::span<const char* const> markers, const std::string& text) {
  return std::find(markers.begin(), markers.end(), text) != markers.end();
}

std::string Hex(int32_t value) {
  std::array<char, 8> digits;
  const auto end =
      std::to_chars(digits.begin(), digits.end(), static_cast<uint32_t>(value), 16).ptr;
  return {digits.begin(), end};
}

/// Opens the dump and skips its title.
bool OpenDump(RowReader& reader, const char* function, const std::string& path, std::ostream& log) {
  if (!reader.IsOpen()) {
    CmLog(function, log) << ansi::kFail << "ERROR: can not open " << path << '\n';
    return false;
  }
  reader.NextLine();
  return true;
}

constexpr std::size_t kAudioItems = std::size(kAudioColumns);

bool ReadVoRow(std::string_view row, RowItems& items) {
  return ReadItems(row, kVoFormat, items) == kVoFormat.itemCount;
}

bool ReadScalerRow(std::string_view row, RowItems& items) {
  return ReadItems(row, kScalerFormat, items) == kScalerFormat.itemCount;
}

bool ReadAudioRow(std::string_view row, RowItems& items) {
  std::array<std::string_view, kAudioItems> fields;
  if (SplitRow(row, {',', ','}, fields) != fields.size()) return false;
  std::transform(fields.begin(), fields.end(), items.begin(), ToNumber);
  return true;
}

/// Passes the rows up to the first malformed one to `take`.
AV_Sync_Info Fetch(MODULE_TYPE module, const char* function, const std::string& path,
                   std::ostream& log, bool (*read)(std::string_view row, RowItems& items),
                   void (*take)(const RowItems& items, std::vector<AV_Sync_Field>& fields)) {
  AV_Sync_Info info{module, {}, true};
  RowReader reader(path);
  if (!OpenDump(reader, function, path, log)) return info;
  RowItems items;
  for (std::string_view row; info.whole && reader.NextFilled(row);) {
    info.whole = !IsPiece(row) && read(row, items);
    if (info.whole) take(items, info.fields);
  }
  if (!info.whole) {
    CmLog(function, log) << ansi::kFail << "ERROR: " << path << " is broken behind frame "
                         << (info.fields.empty() ? -1 : info.fields.back().frameNumber) << '\n';
  }
  return info;
}

uint32_t Unsigned(int32_t item) {
  return static_cast<uint32_t>(item);
}

bool IsBeep(const AV_Sync_Field& sample) {
  return ToNumber(sample.firstText) > kSilence;
}

/// The samples of the three stages and the output stream.
struct Analysis {
  const std::vector<AV_Sync_Field>& vo;
  const std::vector<AV_Sync_Field>& scaler;
  const AV_Sync_Info* audio;
  std::ostream& out;
};

enum class Verdict { kSkipped, kPassed, kFailed };

/// Position of a flash's beep.
struct Beep {
  std::size_t index = 0;  // sample 0 means that there is no beep
  bool isThere = false;
  bool isExpected = false;  // false: the flash is too early for the search to find one
};

/// Counts over all flashes.
struct Tally {
  int flashes = 0;
  int skipped = 0;
  int failed = 0;
  int withBeep = 0;
  int firstWithoutBeep = 0;  // number of the flash; 0 if there is none
  int32_t firstFrameWithoutBeep = 0;
};

/// The Scaler sample of the flash: the panel shows it up to ten frames before the frame that has
/// the flash's number at the output. The index after the last sample if the frame was not dumped.
std::size_t FindScalerSample(const std::vector<AV_Sync_Field>& samples, int32_t frame) {
  const auto sameFrame = std::find_if(samples.begin(), samples.end(), [frame](const auto& sample) {
    return sample.frameNumber == frame;
  });
  const auto lead = std::min<std::ptrdiff_t>(sameFrame - samples.begin(), kScalerLead);
  if (sameFrame == samples.end()) return samples.size();
  const auto flash = std::find_if(sameFrame - lead, sameFrame, [](const auto& sample) {
    return IsOneOf(kScalerFlashes, sample.firstText);
  });
  return static_cast<std::size_t>(flash - samples.begin());
}

int64_t TimeDiffMs(const AV_Sync_Field& vo, const AV_Sync_Field& scaler,
                   const AV_Sync_Field& audio) {
  const int64_t dumped = int64_t{audio.time90k} - scaler.time90k;
  const int64_t presented = int64_t{vo.firstValue} - audio.firstValue - audio.secondValue;
  return (dumped + presented) / kTicksPerMs + offsetMs;
}

std::string PadRight(std::string text, std::size_t width) {
  return text.append(width - std::min(width, text.size()), ' ');
}

std::string PadLeft(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

void PrintHead(std::ostream& out) {
  out << report_table::kHeadingColour << "[AV Sync Result]" << ansi::kReset << '\n'
      << PadRight("beep", 6) << PadRight("Frame", 15) << PadRight(" TimeDiff", 12)
      << PadRight("Result", 18) << "Posision\n";
}

/// "+3ms", " 0ms" or " -3ms", padded to the width of its column.
std::string DifferenceText(int64_t diffMs) {
  std::string text = diffMs >= 1 ? "+" : " ";
  return PadRight(text.append(std::to_string(diffMs)).append("ms    "), 12);
}

std::string FailureText(int64_t diffMs) {
  if (diffMs > 0) return "FAIL(+" + std::to_string(diffMs - kAheadToleranceMs) + "ms)   ";
  return "FAIL: (" + std::to_string(diffMs - kDelayToleranceMs) + "ms)  ";
}

Verdict PrintVerdict(std::ostream& out, int64_t diffMs) {
  const bool passed = diffMs >= kDelayToleranceMs && diffMs <= kAheadToleranceMs;
  out << DifferenceText(diffMs) << (passed ? ansi::kPass : ansi::kFail)
      << PadRight(passed ? "PASS" : FailureText(diffMs), 18) << ansi::kReset;
  return passed ? Verdict::kPassed : Verdict::kFailed;
}

void PrintPosition(std::ostream& out, const char* label, std::size_t position) {
  out << label << PadLeft(std::to_string(position), 7);
}

/// Searches for a beep as documented for `AVsync_Find_Audio_Frame_By_Time`.
Beep FindBeep(uint32_t time, uint32_t range, const AV_Sync_Info* audio) {
  const std::vector<AV_Sync_Field>& samples = audio->fields;
  if (samples.size() <= kFirstBeepRow) return {.isExpected = true};
  const auto before = [](int64_t limit) {
    return [limit](const AV_Sync_Field& sample) { return limit > sample.firstValue; };
  };
  const auto from = samples.begin() + kFirstBeepRow;
  const auto lower = std::find_if_not(from, samples.end(), before(int64_t{time} - range));
  const auto upper = std::find_if_not(lower, samples.end(), before(int64_t{time} + range));
  const auto beep = std::find_if(lower, upper, IsBeep);
  if (beep == upper) return {.isExpected = upper != from};
  return {static_cast<std::size_t>(beep - samples.begin()), true, true};
}

/// Prints the event of the flash at `voIndex` as one line, and records it as a mark.
Verdict PrintEvent(const Analysis& analysis, int number, std::size_t voIndex, std::size_t beep,
                   std::vector<SyncMark>& marks) {
  std::ostream& out = analysis.out;
  const AV_Sync_Field& flash = analysis.vo[voIndex];
  out << report_table::kTitleColour << PadLeft(std::to_string(number), 4) << ansi::kReset
      << "| frame " << PadLeft(std::to_string(flash.frameNumber), 7) << "  ";
  const std::size_t scaler = FindScalerSample(analysis.scaler, flash.frameNumber);
  if (scaler == analysis.scaler.size() || analysis.audio->fields.empty()) {
    out << "skipped: no "
        << (analysis.audio->fields.empty() ? "Audio sample" : "Scaler sample of this frame")
        << '\n';
    return Verdict::kSkipped;
  }
  const AV_Sync_Field& sound = analysis.audio->fields[beep];
  const int64_t diffMs = TimeDiffMs(flash, analysis.scaler[scaler], sound);
  const Verdict verdict = PrintVerdict(out, diffMs);
  marks.push_back({flash.firstValue, sound.firstValue, diffMs, verdict == Verdict::kPassed});
  PrintPosition(out, "       [VO]    ", voIndex);
  PrintPosition(out, "       [Scaler]", scaler);
  PrintPosition(out, "       [Audio] ", beep);
  out << '\n';
  return verdict;
}

void Count(Tally& tally, const AV_Sync_Field& flash, Verdict verdict, const Beep& beep) {
  tally.skipped += verdict == Verdict::kSkipped ? 1 : 0;
  tally.failed += verdict == Verdict::kFailed ? 1 : 0;
  tally.withBeep += beep.isThere ? 1 : 0;
  if (beep.isThere || !beep.isExpected || tally.firstWithoutBeep != 0) return;
  tally.firstWithoutBeep = tally.flashes;
  tally.firstFrameWithoutBeep = flash.frameNumber;
}

/// Prints all events and counts them.
Tally PrintEvents(const Analysis& analysis, AvSyncVerdict& result) {
  Tally tally;
  for (std::size_t i = 0; i < analysis.vo.size(); ++i) {
    const AV_Sync_Field& flash = analysis.vo[i];
    if (!IsOneOf(kVoFlashes, flash.secondText)) continue;
    const Beep beep = FindBeep(flash.firstValue, kBeepRange, analysis.audio);
    const Verdict verdict = PrintEvent(analysis, ++tally.flashes, i, beep.index, result.marks);
    Count(tally, flash, verdict, beep);
    if (verdict != Verdict::kFailed || !beep.isThere || result.failedFrame != -1) continue;
    result.failedFrame = flash.frameNumber;
    result.failedFlash90k = flash.firstValue;
  }
  return tally;
}

std::string OfFlashes(int count, const Tally& tally) {
  return std::to_string(count) + " of " + std::to_string(tally.flashes) + " flashes ";
}

/// Why the analysis failed; empty when it passed.
std::string WhyFailed(const Tally& tally, bool dumpsAreWhole) {
  if (tally.flashes == 0) return "no flash to judge";
  if (tally.skipped == tally.flashes) return "no flash to judge, all were skipped";
  if (tally.withBeep == 0) return "no beep at any flash";
  if (tally.firstWithoutBeep != 0) {
    return "no beep at flash " + std::to_string(tally.firstWithoutBeep) + " (frame " +
           std::to_string(tally.firstFrameWithoutBeep) + ")";
  }
  if (tally.failed != 0) return OfFlashes(tally.failed, tally) + "outside the tolerance";
  if (tally.skipped != 0) return OfFlashes(tally.skipped, tally) + "skipped";
  return dumpsAreWhole ? "" : "a dump has a malformed row";
}

void PrintLegend(std::ostream& out) {
  out << " *AV sync tolerance:(+20ms) ~ (-30ms)\n"
         "(TimeDiff = videoTime - audioTime,    +:audio ahead  -:audio delay)\n";
}

}  // namespace

AV_Sync_Field::AV_Sync_Field(int32_t frame, uint32_t time, std::string text1, std::string text2,
                             uint32_t value)
    : frameNumber(frame),
      time90k(time),
      firstText(std::move(text1)),
      secondText(std::move(text2)),
      firstValue(value) {}

AV_Sync_Field::AV_Sync_Field(int32_t frame, uint32_t time, std::string text, uint32_t value1,
                             uint32_t value2)
    : frameNumber(frame),
      time90k(time),
      firstText(std::move(text)),
      firstValue(value1),
      secondValue(value2) {}

AV_Sync_Info Fetch_AVsync_Info_VO(const std::string& path, std::ostream& log) {
  return Fetch(MODULE_VO, "Fetch_AVsync_Info_VO", path, log, ReadVoRow,
               [](const RowItems& items, std::vector<AV_Sync_Field>& fields) {
                 fields.emplace_back(items[ColumnOf(kVoColumns, Unit::kFrame)],
                                     Unsigned(items[kVoFormat.counterItem]),
                                     Hex(items[ColumnNamed(kVoColumns, "crc_vo")]),
                                     Hex(items[ColumnNamed(kVoColumns, "crc_vgip")]),
                                     Unsigned(items[ColumnNamed(kVoColumns, "pts.L")]));
               });
}

AV_Sync_Info Fetch_AVsync_Info_Scaler(const std::string& path, std::ostream& log) {
  return Fetch(MODULE_SCALER, "Fetch_AVsync_Info_Scaler", path, log, ReadScalerRow,
               [](const RowItems& items, std::vector<AV_Sync_Field>& fields) {
                 fields.emplace_back(items[ColumnOf(kScalerColumns, Unit::kFrame)],
                                     Unsigned(items[kScalerFormat.counterItem]),
                                     Hex(items[ColumnNamed(kScalerColumns, "crc_panel_if")]),
                                     Hex(items[ColumnNamed(kScalerColumns, "crc_vgip")]), 0U);
               });
}

AV_Sync_Info Fetch_AVsync_Info_Audio(const std::string& path, std::ostream& log) {
  log << "[Cross Module][Audio] skip first 300ms test data\n";
  return Fetch(MODULE_AUDIO, "Fetch_AVsync_Info_Audio", path, log, ReadAudioRow,
               [](const RowItems& items, std::vector<AV_Sync_Field>& fields) {
                 const int32_t pts = items[ColumnNamed(kAudioColumns, "pts")];
                 if (pts < kFirstAudioPts) return;
                 fields.emplace_back(
                     items[ColumnOf(kAudioColumns, Unit::kFrame)],
                     Unsigned(items[ColumnNamed(kAudioColumns, "90k_counter")]),
                     std::to_string(items[ColumnOf(kAudioColumns, Unit::kChecksum)]), Unsigned(pts),
                     Unsigned(items[ColumnNamed(kAudioColumns, "delay")]));
               });
}

std::size_t AVsync_Find_Audio_Frame_By_Time(uint32_t time, uint32_t range,
                                            const AV_Sync_Info* audio) {
  return FindBeep(time, range, audio).index;
}

void Set_AVsync_Offset(int milliseconds) {
  offsetMs = milliseconds;
}

AvSyncVerdict AnalyseAvSync(const AV_Sync_Info& vo, const AV_Sync_Info& scaler,
                            const AV_Sync_Info& audio, std::ostream& out) {
  AvSyncVerdict result;
  CmLog("Print_AVsync_Anayze_Result", out) << "List the AV Sync Result:\n";
  PrintHead(out);
  const Tally tally = PrintEvents({vo.fields, scaler.fields, &audio, out}, result);
  PrintLegend(out);
  result.reason = WhyFailed(tally, vo.whole && scaler.whole && audio.whole);
  result.passed = result.reason.empty();
  if (!result.passed) out << ansi::kFail << "FAIL: " << result.reason << ansi::kReset << '\n';
  return result;
}

bool Print_AVsync_Anayze_Result(const AV_Sync_Info* vo, const AV_Sync_Info* scaler,
                                const AV_Sync_Info* audio, std::ostream& out) {
  return AnalyseAvSync(*vo, *scaler, *audio, out).passed;
}

AvSyncVerdict VerifyAvSync(const CM_TestCase& testCase, const StagePath& golden,
                           const StagePath& dump, std::ostream& out, std::ostream& log) {
  Set_AVsync_Offset(testCase.IsDemo() ? kDemoOffsetMs : 0);
  const AV_Sync_Info vo = Fetch_AVsync_Info_VO(dump(MODULE_VO), log);
  const AV_Sync_Info scaler = Fetch_AVsync_Info_Scaler(dump(MODULE_SCALER), log);
  const AV_Sync_Info audio = Fetch_AVsync_Info_Audio(dump(MODULE_AUDIO), log);
  AvSyncVerdict verdict = AnalyseAvSync(vo, scaler, audio, out);
  if (verdict.failedFrame != -1) {
    const std::string late =
        NameLateStage({verdict.failedFrame, verdict.failedFlash90k, golden, dump});
    out << ansi::kFail << " First bad stage: " << late << ansi::kReset << '\n';
    verdict.reason += ", first bad stage: " + late;
  }
  return verdict;
}

bool Verify_AVsync() {
  const CM_TestCase* testCase = KnownTestCase("Verify_AVsync");
  if (testCase == nullptr) return false;
  return VerifyAvSync(
             *testCase, [&](MODULE_TYPE stage) { return testCase->Get_Golden_Path(stage); },
             [](MODULE_TYPE stage) { return *Get_Module_by_ID(stage)->dumpPath; }, std::cout,
             std::cout)
      .passed;
}
