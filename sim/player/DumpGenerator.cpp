#include "DumpGenerator.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

namespace player {

namespace {

constexpr int64_t kSecond90k = 90000;
constexpr int64_t kTicksPerMs = 90;

constexpr int64_t kSampleRate = 48000;
constexpr int64_t kBlock90k = 1024 * kSecond90k / kSampleRate;
constexpr int64_t kAudioDelay90k = 20 * kTicksPerMs;
constexpr int64_t kSilenceLimit = 1000000;

constexpr int64_t kFirstFlash90k = 4 * kSecond90k;
constexpr int64_t kFlashPeriod90k = 2 * kSecond90k;
constexpr int64_t kBeep90k = kSecond90k / 10;

constexpr int64_t kStageLatency90k = 10 * kTicksPerMs;
constexpr int64_t kKeyFrameDistance = 30;

/// Checksums of the two flash pictures, which take turns.
struct Flash {
  int64_t scalerInput;
  int64_t panel;
};
constexpr Flash kFlashes[] = {{0x1e82234e, 0x1b184f64}, {0x4830d127, 0xc5b6c53}};

constexpr int64_t FrameValues::*kChecksums[] = {
    &FrameValues::crcDecoded,    &FrameValues::crcOutput,         &FrameValues::crcScalerInput,
    &FrameValues::crcRgbToYuv,   &FrameValues::crcDeinterlaceHzd, &FrameValues::crcDeinterlace,
    &FrameValues::crcDownscaleH, &FrameValues::crcDownscaleV,     &FrameValues::crcCapture,
    &FrameValues::crcMemory,     &FrameValues::crcUpscale,        &FrameValues::crcSharpness,
    &FrameValues::crcColour,     &FrameValues::crcMemcIn,         &FrameValues::crcMemcOut,
    &FrameValues::crcOverdrive,  &FrameValues::crcPanel,
};

/// A number that looks random and is the same for the same seed, place and kind.
uint32_t Draw(uint64_t seed, int64_t place, uint64_t kind) {
  uint64_t mixed = seed * 0x9e3779b97f4a7c15U + static_cast<uint64_t>(place) * 64 + kind + 1;
  mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9U;
  mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebU;
  return static_cast<uint32_t>(mixed >> 32);
}

int64_t FramePts(const Clip& clip, int64_t frame) {
  return clip.startPts90k + frame * kSecond90k * 1000 / clip.frameRateMilliHz;
}

/// Number of the flash that starts within a stretch of time, counted from 0; -1 when none does.
int64_t FlashBetween(const Clip& clip, int64_t from90k, int64_t to90k) {
  const int64_t behind = to90k - 1 - kFirstFlash90k;
  if (!clip.flashesAndBeeps || behind < 0) return -1;
  const int64_t flash = behind / kFlashPeriod90k;
  return kFirstFlash90k + flash * kFlashPeriod90k >= from90k ? flash : -1;
}

/// Number of the flash that a frame shows; -1 for any other frame.
int64_t FlashOfFrame(const Clip& clip, int64_t frame) {
  const int64_t from = FramePts(clip, frame) - clip.startPts90k;
  const int64_t to = FramePts(clip, frame + 1) - clip.startPts90k;
  return FlashBetween(clip, from, to);
}

void FillMetadata(const Clip& clip, FrameValues& values) {
  values.transfer = values.matrix = values.primaries = 1;
  if (!clip.hdr) return;
  values.hdrType = 1;
  values.primaryX1 = 34000, values.primaryX2 = 13250, values.primaryX3 = 7500;
  values.primaryY1 = 16000, values.primaryY2 = 34500, values.primaryY3 = 3000;
  values.whiteX = 15635, values.whiteY = 16450;
  values.maxLuminance = 10000000, values.minLuminance = 50;
  values.transfer = 16, values.matrix = values.primaries = 9;
  values.maxCll = 1000, values.maxFall = 400;
}

void FillChecksums(const Clip& clip, int64_t frame, FrameValues& values) {
  uint64_t kind = 0;
  for (const auto checksum : kChecksums) values.*checksum = Draw(clip.seed, frame, kind++);
  const int64_t flash = FlashOfFrame(clip, frame);
  if (flash < 0) return;
  values.crcScalerInput = kFlashes[flash % 2].scalerInput;
  values.crcPanel = kFlashes[flash % 2].panel;
}

FrameValues VideoValues(const Clip& clip, int64_t frame) {
  FrameValues values;
  values.frameNumber = frame;
  values.pts90k = FramePts(clip, frame);
  values.frameRateMilliHz = clip.frameRateMilliHz;
  values.width = clip.width;
  values.height = clip.height;
  values.inputFlags = frame % kKeyFrameDistance == 0 ? 1 : 0;
  values.inputSize = 2000 + Draw(clip.seed, frame, std::size(kChecksums)) % 60000;
  values.frameKind = 2;
  values.colourFormat = 2;
  values.memcCadence = 1;
  FillMetadata(clip, values);
  FillChecksums(clip, frame, values);
  return values;
}

/// A beep sounds from its flash on; a clip without beeps sounds all the time.
int64_t AudioCheck(const Clip& clip, int64_t block, int64_t time90k) {
  const int64_t drawn = Draw(clip.seed, block, 0) % kSilenceLimit;
  const bool beeps = FlashBetween(clip, time90k - kBeep90k, time90k + kBlock90k) >= 0;
  return clip.flashesAndBeeps && !beeps ? drawn : kSilenceLimit + 1 + drawn;
}

FrameValues AudioValues(const Clip& clip, int64_t block) {
  FrameValues values;
  values.frameNumber = block;
  values.pts90k = clip.startPts90k + block * kBlock90k;
  values.sampleRate = kSampleRate;
  values.channelCount = 2;
  values.audioCheck = AudioCheck(clip, block, block * kBlock90k);
  values.audioDelay90k = kAudioDelay90k;
  return values;
}

/// Time from a row's pts to its dump. Sound is dumped as late as the panel's picture and its own
/// delay on top.
int64_t Latency90k(Stage stage) {
  if (stage == Stage::kAudio) return Latency90k(Stage::kScaler) + kAudioDelay90k;
  return (static_cast<int64_t>(stage) + 1) * kStageLatency90k;
}

void Garble(std::string& row, uint64_t seed) {
  for (std::size_t i = 0; i + 1 < row.size(); i += 3) {
    const auto place = static_cast<int64_t>(i);
    row[i] = static_cast<char>(Draw(seed, place, 0) & 0x7f);
    if (row[i] == '\n') row[i] = '#';
  }
}

/// Writes the rows of one dump and puts its defects in.
class DefectiveWriter {
 public:
  DefectiveWriter(std::ostream& out, Stage stage, std::span<const Defect> defects)
      : out_(out), format_(FormatOf(stage)) {
    std::copy_if(defects.begin(), defects.end(), std::back_inserter(defects_),
                 [stage](const Defect& defect) { return defect.stage == stage; });
    std::stable_sort(defects_.begin(), defects_.end(),
                     [](const Defect& a, const Defect& b) { return a.frame < b.frame; });
    out_ << TitleOf(format_);
  }

  /// Writes a row. Returns false when the file ends in it.
  bool Write(FrameValues values) {
    const std::span<const Defect> here = DefectsOf(values.frameNumber);
    for (const Defect& defect : here) ChangeValues(defect, values);
    values.clock90k += delay90k_;
    std::string row = RowOf(format_, values);
    if (Has(here, DefectKind::kGarble)) Garble(row, static_cast<uint64_t>(values.frameNumber));
    if (Has(here, DefectKind::kTruncate)) return Put(row.substr(0, row.size() / 2)), false;
    if (Has(here, DefectKind::kRepeat)) row += RowOf(format_, ShownAgain(values));
    if (Has(here, DefectKind::kSwap))
      held_ += row;
    else if (!Has(here, DefectKind::kDrop))
      Put(row);
    return true;
  }

  void End() { Put(EndOf(format_)); }

 private:
  std::span<const Defect> DefectsOf(int64_t frame) {
    while (next_ < defects_.size() && defects_[next_].frame < frame) ++next_;
    std::size_t behind = next_;
    while (behind < defects_.size() && defects_[behind].frame == frame) ++behind;
    return std::span<const Defect>(defects_).subspan(next_, behind - next_);
  }

  static bool Has(std::span<const Defect> defects, DefectKind kind) {
    return std::any_of(defects.begin(), defects.end(),
                       [kind](const Defect& defect) { return defect.kind == kind; });
  }

  void ChangeValues(const Defect& defect, FrameValues& values) {
    if (defect.kind == DefectKind::kLate) delay90k_ += defect.value.value_or(0) * kTicksPerMs;
    if (defect.kind != DefectKind::kChange) return;
    int64_t& value = values.*defect.column->value;
    value = defect.value.value_or(value ^ 1);
  }

  static FrameValues ShownAgain(FrameValues values) {
    values.repeatDrop = 1;
    ++values.repeatCount;
    return values;
  }

  /// Writes text, and behind it what was held back for it.
  void Put(const std::string& text) {
    out_ << text << held_;
    held_.clear();
  }

  std::ostream& out_;
  const DumpFormat& format_;
  std::vector<Defect> defects_;
  std::size_t next_ = 0;
  int64_t delay90k_ = 0;
  std::string held_;
};

}  // namespace

int64_t RowCount(const Clip& clip, Stage stage) {
  if (stage != Stage::kAudio) return clip.frameCount;
  return (FramePts(clip, clip.frameCount) - clip.startPts90k) / kBlock90k;
}

FrameValues ValuesOf(const Clip& clip, const Run& run, Stage stage, int64_t row) {
  const bool audio = stage == Stage::kAudio;
  FrameValues values = audio ? AudioValues(clip, row) : VideoValues(clip, row);
  values.clock90k = run.clock90k + values.pts90k + Latency90k(stage);
  if (audio) values.clock90k += run.audioOffsetMs * kTicksPerMs;
  return values;
}

void WriteDump(std::ostream& out, const Clip& clip, const Run& run, Stage stage,
               std::span<const Defect> defects) {
  DefectiveWriter writer(out, stage, defects);
  const int64_t rows = RowCount(clip, stage);
  for (int64_t row = 0; row < rows; ++row) {
    if (!writer.Write(ValuesOf(clip, run, stage, row))) return;
  }
  writer.End();
}

}  // namespace player
