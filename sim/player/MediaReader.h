// Reads a media file and decodes what is in it.
#pragma once

#include <cstdint>
#include <string>

#include "DumpFormat.h"

namespace player {

class Screen;

/// Receives the contents of a file, in the order in which the board's drivers would get them. Times
/// count from the start of the file.
class MediaListener {
 public:
  virtual ~MediaListener() = default;

  /// A coded picture, with its size in bytes.
  virtual void TakePacket(int64_t pts90k, int64_t size, bool isKeyFrame) = 0;

  /// A decoded picture: its size, colours and checksum are in `values`. `meanLuma` is its
  /// brightness, 0 to 255, and `tick90k` the unit of the file's time stamps.
  virtual void TakePicture(int64_t pts90k, double tick90k, int meanLuma,
                           const FrameValues& values) = 0;

  /// A block of decoded sound. `sounds` is false for silence.
  virtual void TakeSound(int64_t pts90k, int sampleRate, int channelCount, uint32_t checksum,
                         bool sounds) = 0;
};

/// Decodes a whole file, or what is at an address that begins with "http://". Damaged frames are
/// skipped. Throws std::runtime_error with one line if nothing can be decoded. The pictures are
/// shown on the screen, if one is given.
void ReadMedia(const std::string& location, MediaListener& listener, Screen* screen = nullptr);

}  // namespace player
