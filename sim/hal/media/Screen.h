// What the player has on the screen: a file next to the board's state with the last decoded
// picture, and another file that is locked while the player plays.
#pragma once

#include <cstdint>
#include <filesystem>

namespace sim {

/// Precedes the picture's planes, which follow without gaps. Formats and colours are libavutil's
/// numbers.
struct ScreenHeader {
  int32_t width;
  int32_t height;
  int32_t pixelFormat;
  int32_t colorSpace;
  int32_t colorRange;
  int32_t reserved;
  int64_t number;  // of the picture in the file that is played
};

/// The two files; empty if the board has no state file.
std::filesystem::path ScreenPath();
std::filesystem::path PlayingPath();

/// The file with a frozen picture of the player. Its number is that of the place where it is
/// frozen, counted from 1.
std::filesystem::path HeldScreenPath(uint32_t number);

/// Returns whether the player plays.
bool IsPlaying();

/// Stores the picture that the player shows now (`from` 0), or the frozen one with the number
/// `from`, under another number. If there is no picture, none is stored.
void HoldScreen(uint32_t from, uint32_t number);

/// Deletes the frozen picture.
void ReleaseScreen(uint32_t number);

}  // namespace sim
