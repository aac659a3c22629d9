// The board's media pipeline: what is decoded passes the stages; those in test mode dump it.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <iterator>
#include <optional>

#include "MediaReader.h"
#include "StageFacts.h"
#include "TestMode.h"

namespace player {

class DumpWriter;

/// The open dumps by Stage; null if a stage writes none.
using StageDumps = std::array<DumpWriter*, std::size(kAllStages)>;

class Pipeline : public MediaListener {
 public:
  Pipeline(const DisplayMode& display, const StageDumps& dumps, const RunClock& clock = {})
      : display_(display), dumps_(dumps), clock_(clock) {}

  void TakePacket(int64_t pts90k, int64_t size, bool isKeyFrame) override;
  void TakePicture(int64_t pts90k, double tick90k, int meanLuma,
                   const FrameValues& values) override;
  void TakeSound(int64_t pts90k, int sampleRate, int channelCount, uint32_t checksum,
                 bool sounds) override;

  /// Passes on the last picture and ends the dumps.
  void End();

  int64_t PictureCount() const { return pictures_; }
  int64_t SoundCount() const { return sounds_; }

 private:
  void MarkIfFlash(int meanLuma, FrameValues& values);
  void LetThrough(std::optional<int64_t> nextPts90k, double tick90k);
  void ToDisplay(FrameValues& values) const;
  void Dump(Stage stage, FrameValues values);

  const DisplayMode display_;
  const StageDumps dumps_;
  const RunClock clock_;
  std::optional<FrameValues> held_;  // until the next picture determines its duration
  int64_t frameRateMilliHz_ = 0;
  int64_t duration90k_ = 0;
  int previousLuma_ = 255;
  int64_t packets_ = 0;
  int64_t pictures_ = 0;
  int64_t sounds_ = 0;
  int64_t flashes_ = 0;
};

}  // namespace player
