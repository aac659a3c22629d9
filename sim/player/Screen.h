// Writes decoded pictures to the board's screen, for the panel.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
}

namespace player {

/// The screen of the board that this process is attached to; without a board, nothing is shown.
/// Playback does not depend on it: what cannot be written is not shown.
class Screen {
 public:
  Screen();
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  /// Shows a picture if the last one has been there long enough to be seen.
  void Show(const AVFrame& frame, int64_t number);

 private:
  using Clock = std::chrono::steady_clock;
  std::filesystem::path path_;
  int playing_ = -1;  // locked during the lifetime of this object
  std::optional<Clock::time_point> shownAt_;
  std::vector<uint8_t> bytes_;
};

}  // namespace player
