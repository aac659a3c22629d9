// What is the same of every playing, drawn or decoded: when a stage has its rows, and the values
// by which the flashes and beeps of a synchronisation clip are known.
#pragma once

#include <cstdint>

#include "DumpFormat.h"

namespace player {

inline constexpr int64_t kSecond90k = 90000;
inline constexpr int64_t kTicksPerMs = 90;

/// What a sound block tells of its own way behind the dump.
inline constexpr int64_t kAudioDelay90k = 20 * kTicksPerMs;

/// Time from a row's pts to its dump. Sound is dumped as late as the panel's picture and its own
/// delay on top.
int64_t Latency90k(Stage stage);

/// Gives a frame the checksums that a flash has; two flash pictures take turns.
void MarkFlash(int64_t flashNumber, FrameValues& values);

/// The check value of a sound block: below 1000000 in silence, above it with a sound.
int64_t AudioCheck(uint32_t checksum, bool sounds);

/// The columns that hold checksums of pictures.
std::span<int64_t FrameValues::*const> PictureChecksums();

}  // namespace player
