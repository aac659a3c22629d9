// What generated and decoded dumps have in common: when a stage writes its rows, and the values
// that identify the flashes and beeps of a synchronisation clip.
#pragma once

#include <cstdint>

#include "DumpFormat.h"

namespace player {

inline constexpr int64_t kSecond90k = 90000;
inline constexpr int64_t kTicksPerMs = 90;

/// The 90 kHz counter of one playback. No board's crystal runs exactly at the speed of the file's
/// time stamps, and each playback starts at a different count.
struct RunClock {
  int64_t start90k = 10 * kSecond90k;  // when the file starts
  double driftPpm = 0;                 // how much faster than the time stamps it runs

  /// The counter at a time after the start of the file, in ticks of the time stamps.
  int64_t At(int64_t time90k) const;
};

/// The delay of a sound block's path after the dump.
inline constexpr int64_t kAudioDelay90k = 20 * kTicksPerMs;

/// Time from a row's pts to its dump. The latency of sound is that of the panel's picture plus its
/// own delay.
int64_t Latency90k(Stage stage);

/// Gives a frame the checksums of a flash; two flash pictures alternate.
void MarkFlash(int64_t flashNumber, FrameValues& values);

/// The check value of a sound block: below 1000000 in silence, above it if audible.
int64_t AudioCheck(uint32_t checksum, bool sounds);

/// The columns that hold checksums of pictures.
std::span<int64_t FrameValues::*const> PictureChecksums();

}  // namespace player
