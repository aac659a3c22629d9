// What the player has on the screen: a file beside the board's state that holds the picture decoded
// last, and another that is locked while the player plays.
#pragma once

#include <cstdint>
#include <filesystem>

namespace sim {

/// In front of the picture's planes, which follow each other without gaps. Formats and colours are
/// those of libavutil.
struct ScreenHeader {
  int32_t width;
  int32_t height;
  int32_t pixelFormat;
  int32_t colorSpace;
  int32_t colorRange;
  int32_t reserved;
  int64_t number;  // of the picture in the file that is played
};

/// The two files; empty where the board has no directory.
std::filesystem::path ScreenPath();
std::filesystem::path PlayingPath();

/// The file with a picture of the player that is frozen. Its number is that of the place where it
/// is frozen, from 1.
std::filesystem::path HeldScreenPath(uint32_t number);

/// Returns whether the player plays.
bool IsPlaying();

/// Keeps the picture that the player shows now, or the frozen one with the number `from`, under
/// another number. Without a picture, none is kept.
void HoldScreen(uint32_t from, uint32_t number);

/// Forgets the frozen picture.
void ReleaseScreen(uint32_t number);

}  // namespace sim
