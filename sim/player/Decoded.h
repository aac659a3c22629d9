// What the board's drivers determine about decoded pictures and sound.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "DumpFormat.h"

extern "C" {
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
}

namespace player {

/// Size, colours, mastering metadata and checksum of a picture.
FrameValues PictureFacts(const AVFrame& frame);

/// Mean brightness of a picture, 0 to 255; 0 for a picture without a plane of luma.
int MeanLuma(const AVFrame& frame);

struct SoundFacts {
  uint32_t checksum;  // CRC-32 of the samples as 16-bit PCM
  bool sounds;        // loud enough to be heard
};

/// Analyses sound of any sample format.
class SoundReader {
 public:
  SoundFacts Take(const AVFrame& frame);

 private:
  struct Free {
    void operator()(SwrContext* context) const { swr_free(&context); }
  };
  /// The converter rounds differently if its output is not aligned for the vector unit.
  struct alignas(64) SampleBlock {
    int16_t samples[32];
  };
  std::span<const int16_t> Convert(const AVFrame& frame);

  std::unique_ptr<SwrContext, Free> converter_;
  std::vector<SampleBlock> samples_;
};

}  // namespace player
