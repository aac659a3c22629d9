// What the board's drivers find out about decoded pictures and sound.
#pragma once

#include <cstdint>
#include <memory>
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

/// Looks at sound of any sample format.
class SoundReader {
 public:
  SoundFacts Take(const AVFrame& frame);

 private:
  struct Free {
    void operator()(SwrContext* context) const { swr_free(&context); }
  };
  bool Convert(const AVFrame& frame);

  std::unique_ptr<SwrContext, Free> converter_;
  std::vector<int16_t> samples_;
};

}  // namespace player
