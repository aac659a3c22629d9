#include "DumpGenerator.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "DumpWriter.h"
#include "StageFacts.h"

namespace player {

namespace {

constexpr int64_t kSampleRate = 48000;
constexpr int64_t kBlock90k = 1024 * kSecond90k / kSampleRate;

constexpr int64_t kFirstFlash90k = 4 * kSecond90k;
constexpr int64_t kFlashPeriod90k = 2 * kSecond90k;
constexpr int64_t kBeep90k = kSecond90k / 10;

constexpr int64_t kKeyFrameDistance = 30;

/// A pseudo-random number that depends only on seed, place and kind.
uint32_t Draw(uint64_t seed, int64_t place, uint64_t kind) {
  uint64_t mixed = seed * 0x9e3779b97f4a7c15U + static_cast<uint64_t>(place) * 64 + kind + 1;
  mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9U;
  mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebU;
  return static_cast<uint32_t>(mixed >> 32);
}

int64_t FramePts(const Clip& clip, int64_t frame) {
  return clip.startPts90k + frame * kSecond90k * 1000 / clip.frameRateMilliHz;
}

/// Number of the flash that starts within a span of time, counted from 0; -1 if none does.
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
  for (const auto checksum : PictureChecksums()) values.*checksum = Draw(clip.seed, frame, kind++);
  const int64_t flash = FlashOfFrame(clip, frame);
  if (flash >= 0) MarkFlash(flash, values);
}

FrameValues VideoValues(const Clip& clip, int64_t frame) {
  FrameValues values;
  values.frameNumber = frame;
  values.pts90k = FramePts(clip, frame);
  values.frameRateMilliHz = clip.frameRateMilliHz;
  values.width = clip.width;
  values.height = clip.height;
  values.inputFlags = frame % kKeyFrameDistance == 0 ? 1 : 0;
  values.inputSize = 2000 + Draw(clip.seed, frame, PictureChecksums().size()) % 60000;
  values.frameKind = 2;
  values.colourFormat = 2;
  values.memcCadence = 1;
  FillMetadata(clip, values);
  FillChecksums(clip, frame, values);
  return values;
}

/// A beep starts with its flash; a clip without beeps is audible all the time.
bool Sounds(const Clip& clip, int64_t time90k) {
  return !clip.flashesAndBeeps || FlashBetween(clip, time90k - kBeep90k, time90k + kBlock90k) >= 0;
}

FrameValues AudioValues(const Clip& clip, int64_t block) {
  FrameValues values;
  values.frameNumber = block;
  values.pts90k = clip.startPts90k + block * kBlock90k;
  values.sampleRate = kSampleRate;
  values.channelCount = 2;
  values.audioCheck = AudioCheck(Draw(clip.seed, block, 0), Sounds(clip, block * kBlock90k));
  values.audioDelay90k = kAudioDelay90k;
  return values;
}

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
  std::vector<Defect> own;
  std::copy_if(defects.begin(), defects.end(), std::back_inserter(own),
               [stage](const Defect& defect) { return defect.stage == stage; });
  DumpWriter writer(out, stage, std::move(own));
  const int64_t rows = RowCount(clip, stage);
  for (int64_t row = 0; row < rows; ++row) {
    if (!writer.Write(ValuesOf(clip, run, stage, row))) return;
  }
  writer.End();
}

}  // namespace player
