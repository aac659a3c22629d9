#include "StageFacts.h"

#include <cmath>
#include <limits>

namespace player {

namespace {

constexpr int64_t kStageLatency90k = 10 * kTicksPerMs;
constexpr int64_t kSilenceLimit = 1000000;

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

}  // namespace

int64_t RunClock::At(int64_t time90k) const {
  return start90k + time90k + std::llround(static_cast<double>(time90k) * driftPpm / 1e6);
}

int64_t Latency90k(Stage stage) {
  if (stage == Stage::kAudio) return Latency90k(Stage::kScaler) + kAudioDelay90k;
  return (static_cast<int64_t>(stage) + 1) * kStageLatency90k;
}

void MarkFlash(int64_t flashNumber, FrameValues& values) {
  values.crcScalerInput = kFlashes[flashNumber % 2].scalerInput;
  values.crcPanel = kFlashes[flashNumber % 2].panel;
}

int64_t AudioCheck(uint32_t checksum, bool sounds) {
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  return sounds ? kSilenceLimit + 1 + checksum % (kMost - kSilenceLimit) : checksum % kSilenceLimit;
}

std::span<int64_t FrameValues::*const> PictureChecksums() {
  return kChecksums;
}

}  // namespace player
