#include "Pipeline.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "DumpWriter.h"

namespace player {

namespace {

constexpr int64_t kDefaultRateMilliHz = 60000;

// Flags of the decoder's input buffers.
constexpr int64_t kEndOfFrame = 0x10;
constexpr int64_t kSyncFrame = 0x20;

constexpr int kDarkLuma = 64;
constexpr int kBrightLuma = 160;

constexpr int64_t kPanelRateMilliHz = 60000;
constexpr int64_t kFastestDoubledMilliHz = 30000;

constexpr int64_t kCommonRates[] = {24000, 25000, 30000, 50000, 60000, 100000, 120000};
constexpr int64_t kRatesOf1001[] = {23976, 29970, 59940, 119880};

/// The common rate with that frame duration. Rates that are slower by 1/1001 can only be
/// distinguished if time stamps count single ticks.
int64_t FrameRate(int64_t duration90k, double tick90k) {
  const double perRate = 1000.0 * kSecond90k;
  const auto distance = [&](int64_t rate) {
    return std::abs(static_cast<double>(duration90k) - perRate / static_cast<double>(rate));
  };
  int64_t nearest = kCommonRates[0];
  const auto consider = [&](int64_t rate) {
    if (distance(rate) < distance(nearest)) nearest = rate;
  };
  std::for_each(std::begin(kCommonRates), std::end(kCommonRates), consider);
  if (tick90k <= 1) std::for_each(std::begin(kRatesOf1001), std::end(kRatesOf1001), consider);
  if (distance(nearest) <= tick90k + 1) return nearest;
  return static_cast<int64_t>(perRate) / duration90k;
}

int64_t OutputRate(const DisplayMode& display, int64_t sourceRateMilliHz) {
  if (display.freeRun) return kPanelRateMilliHz;
  if (display.adaptive || sourceRateMilliHz > kFastestDoubledMilliHz) return sourceRateMilliHz;
  return 2 * sourceRateMilliHz;
}

/// How many times the display shows a picture that lasts from one time to another.
int64_t TimesShown(int64_t from90k, int64_t to90k, int64_t rateMilliHz) {
  constexpr int64_t kHalf = 1000 * kSecond90k / 2;
  const auto shownBefore = [rateMilliHz](int64_t time90k) {
    return (time90k * rateMilliHz + kHalf) / (2 * kHalf);
  };
  return shownBefore(to90k) - shownBefore(from90k);
}

/// The cadence in which motion compensation fills the panel's pictures: 11, 22, 32 …
int64_t Cadence(int64_t sourceRateMilliHz) {
  const int64_t halves = 2 * kPanelRateMilliHz / std::max<int64_t>(sourceRateMilliHz, 1000);
  const int64_t shorter = std::max<int64_t>(halves / 2, 1);
  return 10 * std::max<int64_t>(halves - shorter, 1) + shorter;
}

/// The checksum of a picture after one more block of its path, which works in mode `mode`.
int64_t BehindBlock(int64_t checksum, int mode) {
  const auto byte = [checksum](int shift) { return static_cast<Bytef>(checksum >> shift & 0xff); };
  const Bytef bytes[] = {byte(0), byte(8), byte(16), byte(24), static_cast<Bytef>(mode)};
  return static_cast<int64_t>(crc32(0, bytes, sizeof(bytes)));
}

/// Fills in the checksums from the video output to the panel. The mode of the picture quality
/// applies from its first block on.
void FillChecksums(int pictureQuality, FrameValues& values) {
  int mode = 0;
  int64_t checksum = values.crcDecoded;
  for (const auto block : PictureChecksums().subspan(1)) {
    if (block == &FrameValues::crcSharpness) mode = pictureQuality;
    values.*block = checksum = BehindBlock(checksum, mode);
  }
}

}  // namespace

void Pipeline::TakePacket(int64_t pts90k, int64_t size, bool isKeyFrame) {
  FrameValues values;
  values.frameNumber = packets_++;
  values.pts90k = pts90k;
  values.inputSize = size;
  values.inputFlags = kEndOfFrame | (isKeyFrame ? kSyncFrame : 0);
  Dump(Stage::kOmxIn, values);
}

void Pipeline::TakePicture(int64_t pts90k, double tick90k, int meanLuma,
                           const FrameValues& values) {
  LetThrough(pts90k, tick90k);
  held_ = values;
  held_->frameNumber = pictures_++;
  held_->pts90k = pts90k;
  FillChecksums(display_.pictureQuality, *held_);
  MarkIfFlash(meanLuma, *held_);
}

void Pipeline::TakeSound(int64_t pts90k, int sampleRate, int channelCount, uint32_t checksum,
                         bool sounds) {
  FrameValues values;
  values.frameNumber = sounds_++;
  values.pts90k = pts90k;
  values.sampleRate = sampleRate;
  values.channelCount = channelCount;
  values.audioCheck = AudioCheck(checksum, sounds);
  values.audioDelay90k = kAudioDelay90k;
  Dump(Stage::kAudio, values);
}

void Pipeline::End() {
  LetThrough(std::nullopt, 0);
  for (DumpWriter* dump : dumps_) {
    if (dump != nullptr) dump->End();
  }
}

/// A flash is a bright picture after a dark one.
void Pipeline::MarkIfFlash(int meanLuma, FrameValues& values) {
  if (previousLuma_ < kDarkLuma && meanLuma > kBrightLuma) MarkFlash(flashes_++, values);
  previousLuma_ = meanLuma;
}

/// Passes the picture that was held back to the stages after the decoder.
void Pipeline::LetThrough(std::optional<int64_t> nextPts90k, double tick90k) {
  if (!held_) return;
  if (nextPts90k && *nextPts90k > held_->pts90k) {
    duration90k_ = *nextPts90k - held_->pts90k;
    frameRateMilliHz_ = FrameRate(duration90k_, tick90k);
  }
  FrameValues values = *held_;
  held_.reset();
  values.frameRateMilliHz = frameRateMilliHz_ == 0 ? kDefaultRateMilliHz : frameRateMilliHz_;
  for (const Stage stage : {Stage::kVdec, Stage::kOmxOut}) Dump(stage, values);
  ToDisplay(values);
  for (const Stage stage : {Stage::kDvo, Stage::kVo, Stage::kScaler}) Dump(stage, values);
}

void Pipeline::ToDisplay(FrameValues& values) const {
  values.memcCadence = Cadence(values.frameRateMilliHz);
  values.frameRateMilliHz = OutputRate(display_, values.frameRateMilliHz);
  const int64_t shown =
      TimesShown(values.pts90k, values.pts90k + duration90k_, values.frameRateMilliHz);
  values.repeatCount = std::max<int64_t>(shown - 1, 0);
}

void Pipeline::Dump(Stage stage, FrameValues values) {
  DumpWriter* dump = dumps_[static_cast<std::size_t>(stage)];
  if (dump == nullptr) return;
  values.clock90k = clock_.At(values.pts90k + Latency90k(stage));
  dump->Write(values);
}

}  // namespace player
