// Pictures in the scaler: test pictures in a frame buffer, and captured frames.
#pragma once

#include <array>

#include "core/Board.h"

namespace sim {

/// The frame buffer of a window: eight vertical bars of 100 % colour over the whole width, or one
/// of the plain pictures that a source can send, with the pixels that were written over them. If
/// the source sends any other picture, the frame buffer has the bars.
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

/// The picture at a window's input, before any freezing; width 0 if there is none.
Picture LivePicture(const Board& board, const Window& window);

/// The picture in a window's frame buffer, and the one that it shows.
Picture BufferedPicture(const Board& board, const Window& window);
Picture ShownPicture(const Board& board, const Window& window);

/// What the display gets of it: the motion compensation after the scaler can be frozen as well.
Picture DisplayedPicture(const Board& board, const Window& window);

/// Returns whether a window shows the player's picture during playback. An unconnected main window
/// does.
bool TakesInPlayer(const Board& board, unsigned wid);

/// Where a window's picture can be frozen.
enum class HeldAt : uint8_t { kWindow, kBuffer, kMotion };

/// A window's picture as it is now, to be frozen at that place; one that is already frozen stays
/// the same. Release discards what is stored for that place.
Picture Held(const Board& board, unsigned wid, Picture picture, HeldAt place);
void Release(unsigned wid, HeldAt place);

/// Freezes the pictures of all windows as the display gets them, or releases them. Must be called
/// before the setting is stored.
void FreezeMotion(Board& board, bool on);

/// The part of a picture that a window shows: the input region, or the whole picture if the region
/// does not lie within it.
K2V_VIDEO_RECT_T InputOf(const Window& window, const Picture& picture);

/// A window's place on the panel. Without an output region, the main window covers the whole panel
/// and the sub window has no place.
K2V_VIDEO_RECT_T PlaceOf(const Board& board, unsigned wid);

/// Captures the panel with all windows, or window 0 alone on the whole panel, into
/// K2V_CAPTURE_BYTES of R, G, B.
void CapturePanel(const Board& board, uint8_t* rgb);
void CaptureMainWindow(const Board& board, uint8_t* rgb);

bool IsEmpty(const K2V_VIDEO_RECT_T& rect);

/// Returns whether `inner` is not empty and lies entirely within `outer`.
bool IsInside(const K2V_VIDEO_RECT_T& inner, const K2V_VIDEO_RECT_T& outer);

/// The whole active area of a picture.
K2V_VIDEO_RECT_T ActiveArea(const Picture& picture);

}  // namespace sim
