#include "vsc/Picture.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/Events.h"
#include "media/Screen.h"
#include "vfe/Hdmi.h"
#include "vfe/Vby1rx.h"
#include "vpq/Vpq.h"

namespace sim {
namespace {

using Rgb = std::array<uint8_t, 3>;

// Weights of red and blue in the luma, by K2V_COLOR_STANDARD_*.
struct Matrix {
  double red, blue;
};
constexpr Matrix kMatrices[] = {{0.299, 0.114}, {0.2126, 0.0722}, {0.2627, 0.0593}};

// White, yellow, cyan, green, magenta, red, blue, black.
constexpr Rgb kBarColors[] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0},
                              {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};

constexpr Rgb kBlack = {0, 0, 0};

constexpr K2V_VSC_INPUT_TYPE kPlayback = 5;  // its number in the menus; also the decoder

// 10-bit limited range: luma 64 to 940, chroma 512 +- 448.
constexpr double kLumaOffset = 64, kLumaRange = 876, kChromaOffset = 512, kChromaRange = 896;

constexpr uint32_t kGreys = 256;  // of the ramp
constexpr uint32_t kSquaresAcross = 32, kSquaresDown = 18;

K2V_VIDEO_PIXEL_T ToPixel(const Rgb& rgb, const Matrix& matrix) {
  const double luma =
      matrix.red * rgb[0] + (1 - matrix.red - matrix.blue) * rgb[1] + matrix.blue * rgb[2];
  const auto chroma = [luma](double color, double weight) {
    const double difference = (color - luma) / (2 * (1 - weight));
    return static_cast<uint16_t>(std::lround(kChromaOffset + kChromaRange * difference));
  };
  return {chroma(rgb[2], matrix.blue),
          static_cast<uint16_t>(std::lround(kLumaOffset + kLumaRange * luma)),
          chroma(rgb[0], matrix.red)};
}

K2V_VIDEO_PIXEL_T Grey(uint32_t level) {
  const double luma = level / (kGreys - 1.0);
  return {static_cast<uint16_t>(kChromaOffset),
          static_cast<uint16_t>(std::lround(kLumaOffset + kLumaRange * luma)),
          static_cast<uint16_t>(kChromaOffset)};
}

Rgb ToRgb(const K2V_VIDEO_PIXEL_T& pixel, const Matrix& matrix) {
  const double luma = (pixel.y - kLumaOffset) / kLumaRange;
  const auto color = [luma](uint16_t chroma, double weight) {
    return luma + 2 * (1 - weight) * (chroma - kChromaOffset) / kChromaRange;
  };
  const double red = color(pixel.cr, matrix.red), blue = color(pixel.cb, matrix.blue);
  const double green =
      (luma - matrix.red * red - matrix.blue * blue) / (1 - matrix.red - matrix.blue);
  const auto byte = [](double level) {
    return static_cast<uint8_t>(std::lround(255 * std::clamp(level, 0.0, 1.0)));
  };
  return {byte(red), byte(green), byte(blue)};
}

uint32_t ScreenNumber(unsigned wid, HeldAt place) {
  return 1 + static_cast<uint32_t>(place) * kWindowCount + wid;
}

bool Contains(const K2V_VIDEO_RECT_T& rect, uint32_t x, uint32_t y) {
  return x >= rect.x && y >= rect.y && x < uint32_t{rect.x} + rect.w &&
         y < uint32_t{rect.y} + rect.h;
}

// A window on the panel.
class Layer {
 public:
  Layer(const Window& window, const Picture& picture, bool blank, const K2V_VIDEO_RECT_T& output)
      : output_(output),
        input_(InputOf(window, picture)),
        plain_(blank ? BlankColor(window) : kBlack),
        isPlain_(blank || picture.width == 0),
        frame_(window, picture) {}

  bool Covers(uint32_t x, uint32_t y) const { return Contains(output_, x, y); }

  /// The colour at a position on the panel that the layer covers.
  Rgb At(uint32_t x, uint32_t y) const {
    if (isPlain_) return plain_;
    return frame_.RgbAt(input_.x + (x - output_.x) * input_.w / output_.w,
                        input_.y + (y - output_.y) * input_.h / output_.h);
  }

 private:
  K2V_VIDEO_RECT_T output_;
  K2V_VIDEO_RECT_T input_;
  Rgb plain_;
  bool isPlain_;
  Frame frame_;
};

// Samples the panel at every fourth pixel of every fourth line, as the capture unit does.
void Capture(const std::vector<Layer>& layers, uint8_t* rgb) {
  constexpr uint32_t kStep = kPanel.w / K2V_CAPTURE_WIDTH;
  for (uint32_t y = 0; y < kPanel.h; y += kStep) {
    for (uint32_t x = 0; x < kPanel.w; x += kStep) {
      const auto top = std::find_if(layers.rbegin(), layers.rend(),
                                    [=](const Layer& layer) { return layer.Covers(x, y); });
      const Rgb color = top == layers.rend() ? kBlack : top->At(x, y);
      rgb = std::copy(color.begin(), color.end(), rgb);
    }
  }
}

}  // namespace

Frame::Frame(const Window& window, const Picture& picture) : window_(window), picture_(picture) {
  std::ranges::transform(kBarColors, bars_.begin(), [&](const Rgb& color) {
    return ToPixel(color, kMatrices[picture.colorStandard]);
  });
}

K2V_VIDEO_PIXEL_T Frame::At(uint32_t x, uint32_t y) const {
  const K2V_VIDEO_RECT_T& written = window_.written;
  if (Contains(written, x, y)) return window_.pixels[(y - written.y) * written.w + x - written.x];
  return SentAt(x, y);
}

K2V_VIDEO_PIXEL_T Frame::SentAt(uint32_t x, uint32_t y) const {
  const K2V_VIDEO_PIXEL_T& white = bars_.front();
  const K2V_VIDEO_PIXEL_T& black = bars_.back();
  switch (picture_.sent.picture) {
    case TestPicture::kWhite:
      return white;
    case TestPicture::kBlack:
      return black;
    case TestPicture::kCheckerboard:
      return (x * kSquaresAcross / picture_.width + y * kSquaresDown / picture_.height) % 2 == 0
                 ? black
                 : white;
    case TestPicture::kRamp:
      return Grey(x * kGreys / picture_.width);
    default:
      return bars_[x * bars_.size() / picture_.width];
  }
}

Rgb Frame::RgbAt(uint32_t x, uint32_t y) const {
  return ToRgb(At(x, y), kMatrices[picture_.colorStandard]);
}

std::array<uint8_t, 3> BlankColor(const Window& window) {
  // By K2V_VIDEO_DDI_WIN_COLOR_*.
  static constexpr Rgb kColors[] = {{0, 0, 0}, {0, 0, 255}, {128, 128, 128}};
  return kColors[window.blankColor];
}

Picture LivePicture(const Board& board, const Window& window) {
  if (!window.connected) return {};
  if (window.source.type == K2V_VSC_INPUTSRC_HDMI) {
    // The V-by-One receiver feeds the same digital input.
    const Picture picture = HdmiPicture(board.hdmi);
    return picture.width > 0 ? picture : Vby1Picture(board.vby1);
  }
  return kPlayersPicture;
}

Picture BufferedPicture(const Board& board, const Window& window) {
  return window.bufferFrozen ? window.bufferHeld : LivePicture(board, window);
}

Picture ShownPicture(const Board& board, const Window& window) {
  return window.frozen ? window.held : BufferedPicture(board, window);
}

Picture DisplayedPicture(const Board& board, const Window& window) {
  const bool isFrozen = ValueOf(board.vpq, VpqValue::kVPQ_MEMC_Freeze) != 0;
  return isFrozen ? window.motionHeld : ShownPicture(board, window);
}

bool TakesInPlayer(const Board& board, unsigned wid) {
  const Window& window = board.scaler.windows[wid];
  if (!window.connected) return wid == 0;
  return window.source.type == K2V_VSC_INPUTSRC_VDEC || window.source.type == kPlayback;
}

Picture Held(const Board& board, unsigned wid, Picture picture, HeldAt place) {
  const bool isHeld = picture.heldMs != 0;
  if (!isHeld) picture.heldMs = std::max<int64_t>(1, SimulatedMs(board.clock));
  if (isHeld ? picture.heldScreen == 0 : !(TakesInPlayer(board, wid) && IsPlaying()))
    return picture;
  const uint32_t number = ScreenNumber(wid, place);
  HoldScreen(picture.heldScreen, number);
  picture.heldScreen = number;
  return picture;
}

void Release(unsigned wid, HeldAt place) {
  ReleaseScreen(ScreenNumber(wid, place));
}

void FreezeMotion(Board& board, bool on) {
  for (unsigned wid = 0; wid < kWindowCount; ++wid) {
    Window& window = board.scaler.windows[wid];
    if (on)
      window.motionHeld = Held(board, wid, DisplayedPicture(board, window), HeldAt::kMotion);
    else
      Release(wid, HeldAt::kMotion);
  }
}

K2V_VIDEO_RECT_T InputOf(const Window& window, const Picture& picture) {
  return IsInside(window.input, ActiveArea(picture)) ? window.input : ActiveArea(picture);
}

K2V_VIDEO_RECT_T PlaceOf(const Board& board, unsigned wid) {
  const K2V_VIDEO_RECT_T& place = board.scaler.windows[wid].output;
  return wid == 0 && IsEmpty(place) ? kPanel : place;
}

void CapturePanel(const Board& board, uint8_t* rgb) {
  std::vector<Layer> layers;
  for (unsigned wid = 0; wid < kWindowCount; ++wid) {
    const Window& window = board.scaler.windows[wid];
    // The display does the blanking, so it covers the window even without a source.
    if (!window.connected && !window.blank) continue;
    layers.emplace_back(window, DisplayedPicture(board, window), window.blank, PlaceOf(board, wid));
  }
  Capture(layers, rgb);
}

void CaptureMainWindow(const Board& board, uint8_t* rgb) {
  const Window& window = board.scaler.windows[0];
  Capture({Layer(window, ShownPicture(board, window), false, kPanel)}, rgb);
}

bool IsEmpty(const K2V_VIDEO_RECT_T& rect) {
  return rect.w == 0 || rect.h == 0;
}

bool IsInside(const K2V_VIDEO_RECT_T& inner, const K2V_VIDEO_RECT_T& outer) {
  return !IsEmpty(inner) && inner.x >= outer.x && inner.y >= outer.y &&
         inner.x + inner.w <= outer.x + outer.w && inner.y + inner.h <= outer.y + outer.h;
}

K2V_VIDEO_RECT_T ActiveArea(const Picture& picture) {
  return {0, 0, picture.width, picture.height};
}

}  // namespace sim
