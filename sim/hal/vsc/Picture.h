// Pictures as the scaler has them: colour bars in a frame buffer, and captured frames.
#pragma once

#include <array>

#include "core/Board.h"

namespace sim {

/// The frame buffer of a window: eight vertical bars of 100 % colour over the whole width, or one
/// of the plain pictures that a source can send, with the pixels that were written over them. Where
/// the source sends more than that, the frame buffer still has the bars.
class Frame {
 public:
  Frame(const Window& window, const Picture& picture);

  /// 10-bit limited-range YCbCr of a pixel inside the picture.
  K2V_VIDEO_PIXEL_T At(uint32_t x, uint32_t y) const;

  /// The same pixel as 8-bit full-range R, G, B.
  std::array<uint8_t, 3> RgbAt(uint32_t x, uint32_t y) const;

 private:
  K2V_VIDEO_PIXEL_T SentAt(uint32_t x, uint32_t y) const;

  const Window& window_;
  Picture picture_;
  std::array<K2V_VIDEO_PIXEL_T, 8> bars_;
};

/// R, G, B of a window while it is blanked.
std::array<uint8_t, 3> BlankColor(const Window& window);

/// What the decoder delivers.
constexpr Picture kPlayersPicture = {
    1920, 1080, K2V_COLOR_STANDARD_BT709, K2V_HDMI_EOTF_SDR, {}, false, Stereo::kNone, 6000, 0, 0};

/// The picture that a window takes in, before any freezing; none: width 0.
Picture LivePicture(const Board& board, const Window& window);

/// The picture in a window's frame buffer, and the one that it shows.
Picture BufferedPicture(const Board& board, const Window& window);
Picture ShownPicture(const Board& board, const Window& window);

/// What the display gets of it: the motion compensation after the scaler can be frozen, too.
Picture DisplayedPicture(const Board& board, const Window& window);

/// Returns whether a window shows the player while that plays. An unconnected main window does.
bool TakesInPlayer(const Board& board, unsigned wid);

/// Where a window's picture can be frozen.
enum class HeldAt : uint8_t { kWindow, kBuffer, kMotion };

/// A picture of a window as it is now, for the place that freezes it; one that is frozen already
/// stays the same. Release forgets what is kept for that place.
Picture Held(const Board& board, unsigned wid, Picture picture, HeldAt place);
void Release(unsigned wid, HeldAt place);

/// Freezes the pictures of all windows as the display gets them, or lets them run. To be called
/// before the setting is kept.
void FreezeMotion(Board& board, bool on);

/// The part of a picture that a window shows. A source that shrank below the region set is shown
/// whole.
K2V_VIDEO_RECT_T InputOf(const Window& window, const Picture& picture);

/// A window's place on the panel. The main window has all of it until it is put elsewhere; the
/// sub window has none.
K2V_VIDEO_RECT_T PlaceOf(const Board& board, unsigned wid);

/// Captures the panel with all windows, or window 0 alone on the whole panel, into
/// K2V_CAPTURE_BYTES of R, G, B.
void CapturePanel(const Board& board, uint8_t* rgb);
void CaptureMainWindow(const Board& board, uint8_t* rgb);

bool IsEmpty(const K2V_VIDEO_RECT_T& rect);

/// Tells whether `inner` is not empty and lies wholly inside `outer`.
bool IsInside(const K2V_VIDEO_RECT_T& inner, const K2V_VIDEO_RECT_T& outer);

/// The whole active area of a picture.
K2V_VIDEO_RECT_T ActiveArea(const Picture& picture);

}  // namespace sim
