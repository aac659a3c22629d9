#include <algorithm>
#include <cstring>
#include <ostream>

#include "core/Areas.h"
#include "core/Call.h"
#include "vsc/Picture.h"

namespace sim {

// Found by argument-dependent lookup from CallText.h, so not in the unnamed namespace.
static void Put(CallText& out, const K2V_VSC_CAPTURE_INFO_T& info) {
  out.text << "{dataSize=" << info.dataSize;
  if (out.succeeded) {
    out.text << ", " << info.width << 'x' << info.height
             << ", crc32=" << Crc32Text(info.pData, info.dataSize);
  }
  out.text << '}';
}

namespace {

constexpr uint32_t kMaxSourceType = 5;  // the tuner board's sources and playback
constexpr uint32_t kMaxOutputMode = VSC_OUTPUT_AVE_MODE;
constexpr uint32_t kMaxBlankColor = K2V_VIDEO_DDI_WIN_COLOR_GRAY;

bool operator==(const K2V_VSC_INPUT_SRC_T& a, const K2V_VSC_INPUT_SRC_T& b) {
  return a.type == b.type && a.indexAttr == b.indexAttr && a.outputMode == b.outputMode;
}

// The window, or null for an invalid number.
Window* FindWindow(Board& board, uint32_t wid) {
  return wid < kWindowCount ? &board.scaler.windows[wid] : nullptr;
}

int Initialize(Board& board) {
  board.scaler.initialized = true;
  return K2V_RHAL_OK;
}

int Open(Board& board, uint32_t wid) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr) return K2V_RHAL_ERR_PARAM;
  if (!board.scaler.initialized) return K2V_RHAL_ERR_ORDER;
  if (window->open) return K2V_RHAL_ERR_ALREADY;
  window->open = true;
  return K2V_RHAL_OK;
}

int Connect(Board& board, uint32_t wid, K2V_VSC_INPUT_SRC_T source) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || source.type > kMaxSourceType || source.outputMode > kMaxOutputMode) {
    return K2V_RHAL_ERR_PARAM;
  }
  if (!window->open) return K2V_RHAL_ERR_ORDER;
  if (window->connected && !(window->source == source)) return K2V_RHAL_ERR_BUSY;
  window->connected = true;
  window->source = source;
  window->input = ActiveArea(LivePicture(board, *window));
  window->output = kPanel;
  window->written = {};
  return K2V_RHAL_OK;
}

int Disconnect(Board& board, uint32_t wid, K2V_VSC_INPUT_SRC_T source) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || source.type > kMaxSourceType) return K2V_RHAL_ERR_PARAM;
  if (!window->connected) return K2V_RHAL_ERR_ORDER;
  window->connected = false;
  window->bufferFrozen = false;
  Release(wid, HeldAt::kBuffer);
  window->written = {};
  return K2V_RHAL_OK;
}

int SetInputRegion(Board& board, uint32_t wid, K2V_VIDEO_RECT_T region) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || IsEmpty(region)) return K2V_RHAL_ERR_PARAM;
  if (!window->open) return K2V_RHAL_ERR_ORDER;
  const Picture picture = LivePicture(board, *window);
  if (picture.width > 0 && !IsInside(region, ActiveArea(picture))) return K2V_RHAL_ERR_PARAM;
  window->input = region;
  return K2V_RHAL_OK;
}

int SetOutputRegion(Board& board, uint32_t wid, K2V_VIDEO_RECT_T region) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || !IsInside(region, kPanel)) return K2V_RHAL_ERR_PARAM;
  if (!window->open) return K2V_RHAL_ERR_ORDER;
  window->output = region;
  return K2V_RHAL_OK;
}

int GetInputRegion(Board& board, uint32_t wid, K2V_VIDEO_RECT_T* region) {
  const Window* window = FindWindow(board, wid);
  if (window == nullptr || region == nullptr) return K2V_RHAL_ERR_PARAM;
  if (!window->open) return K2V_RHAL_ERR_ORDER;
  *region = window->input;
  return K2V_RHAL_OK;
}

int SetBlank(Board& board, uint32_t wid, uint32_t on, uint32_t color) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || on > 1 || color > kMaxBlankColor) return K2V_RHAL_ERR_PARAM;
  window->blank = on == 1;
  window->blankColor = color;
  return K2V_RHAL_OK;
}

int SetFreeze(Board& board, uint32_t wid, uint32_t on) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || on > 1) return K2V_RHAL_ERR_PARAM;
  if (!window->open) return K2V_RHAL_ERR_ORDER;
  if (on == 1)
    window->held = Held(board, wid, ShownPicture(board, *window), HeldAt::kWindow);
  else
    Release(wid, HeldAt::kWindow);
  window->frozen = on == 1;
  return K2V_RHAL_OK;
}

int FreezeFrameBuffer(Board& board, uint32_t wid, uint32_t on) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || on > 1) return K2V_RHAL_ERR_PARAM;
  if (!window->connected) return K2V_RHAL_ERR_ORDER;
  if (on == 1)
    window->bufferHeld = Held(board, wid, BufferedPicture(board, *window), HeldAt::kBuffer);
  else
    Release(wid, HeldAt::kBuffer);
  window->bufferFrozen = on == 1;
  if (on == 0) window->written = {};
  return K2V_RHAL_OK;
}

// The checks that reading and writing a frame buffer have in common.
int CheckFrameBuffer(const Board& board, const Window* window, const K2V_VIDEO_RECT_T* rect,
                     const void* pixels) {
  if (window == nullptr || rect == nullptr || pixels == nullptr) return K2V_RHAL_ERR_PARAM;
  if (!window->connected) return K2V_RHAL_ERR_ORDER;
  const Picture picture = BufferedPicture(board, *window);
  if (picture.width == 0) return K2V_RHAL_ERR_NO_SIGNAL;
  return IsInside(*rect, ActiveArea(picture)) ? K2V_RHAL_OK : K2V_RHAL_ERR_PARAM;
}

int ReadFrameBuffer(Board& board, uint32_t wid, const K2V_VIDEO_RECT_T* rect,
                    K2V_VIDEO_PIXEL_T* pixels, uint32_t* colorStandard, uint32_t* format) {
  const Window* window = FindWindow(board, wid);
  if (colorStandard == nullptr || format == nullptr) return K2V_RHAL_ERR_PARAM;
  if (const int error = CheckFrameBuffer(board, window, rect, pixels)) return error;
  const Picture picture = BufferedPicture(board, *window);
  const Frame frame(*window, picture);
  for (uint32_t y = 0; y < rect->h; ++y) {
    for (uint32_t x = 0; x < rect->w; ++x) *pixels++ = frame.At(rect->x + x, rect->y + y);
  }
  *colorStandard = picture.colorStandard;
  *format = K2V_PIXEL_FORMAT_YCBCR444;
  return K2V_RHAL_OK;
}

int WriteFrameBuffer(Board& board, uint32_t wid, const K2V_VIDEO_RECT_T* rect,
                     const K2V_VIDEO_PIXEL_T* pixels) {
  Window* window = FindWindow(board, wid);
  if (const int error = CheckFrameBuffer(board, window, rect, pixels)) return error;
  const uint32_t count = uint32_t{rect->w} * rect->h;
  if (count > kMaxWrittenPixels) return K2V_RHAL_ERR_PARAM;
  std::copy_n(pixels, count, window->pixels);
  window->written = *rect;
  return K2V_RHAL_OK;
}

int CaptureFrame(Board& board, uint32_t place, K2V_VSC_CAPTURE_INFO_T* info) {
  if (place > K2V_VIDEO_DDI_DISPLAY_OUTPUT || info == nullptr || info->pData == nullptr ||
      info->dataSize < K2V_CAPTURE_BYTES) {
    return K2V_RHAL_ERR_PARAM;
  }
  if (place == K2V_VIDEO_DDI_DISPLAY_OUTPUT) {
    CapturePanel(board, info->pData);
  } else if (ShownPicture(board, board.scaler.windows[0]).width == 0) {
    return K2V_RHAL_ERR_NO_SIGNAL;
  } else {
    CaptureMainWindow(board, info->pData);
  }
  info->dataSize = K2V_CAPTURE_BYTES;
  info->width = K2V_CAPTURE_WIDTH;
  info->height = K2V_CAPTURE_HEIGHT;
  return K2V_RHAL_OK;
}

int SetRgb444(Board& board, uint32_t on) {
  if (on > 1) return K2V_RHAL_ERR_PARAM;
  board.scaler.rgb444 = on == 1;
  return K2V_RHAL_OK;
}

int SetPreview(Board& board, uint32_t wid, uint32_t on) {
  Window* window = FindWindow(board, wid);
  if (window == nullptr || on > 1) return K2V_RHAL_ERR_PARAM;
  window->preview = on == 1;
  return K2V_RHAL_OK;
}

int OpenMetadata(Board& board) {
  if (board.scaler.metadataOpen) return K2V_RHAL_ERR_ALREADY;
  board.scaler.metadataOpen = true;
  return K2V_RHAL_OK;
}

int ConnectMetadata(Board& board) {
  if (!board.scaler.metadataOpen) return K2V_RHAL_ERR_ORDER;
  if (board.scaler.metadataConnected) return K2V_RHAL_ERR_ALREADY;
  board.scaler.metadataConnected = true;
  return K2V_RHAL_OK;
}

void DescribeRegion(const char* name, const K2V_VIDEO_RECT_T& region, std::ostream& out) {
  out << ", " << name << ' ' << region.x << ',' << region.y << ' ' << region.w << 'x' << region.h;
}

void DescribeWindow(const Board& board, const Window& window, std::ostream& out) {
  static constexpr const char* kSources[] = {"avd", "adc", "hdmi", "vdec", "jpeg", "playback"};
  static constexpr const char* kColors[] = {"black", "blue", "gray"};
  out << (window.open ? "open" : "closed");
  if (window.connected) {
    out << ", " << kSources[window.source.type] << " to output mode " << window.source.outputMode
        << (ShownPicture(board, window).width > 0 ? "" : ", no picture");
  }
  if (window.open) {
    DescribeRegion("input", window.input, out);
    DescribeRegion("output", window.output, out);
  }
  if (window.blank) out << ", blanked " << kColors[window.blankColor];
  if (window.frozen) out << ", frozen";
  if (window.bufferFrozen) out << ", frame buffer frozen";
  if (!IsEmpty(window.written)) DescribeRegion("written", window.written, out);
  if (window.preview) out << ", hdmi preview";
  out << '\n';
}

void Describe(const Board& board, std::ostream& out) {
  const Scaler& scaler = board.scaler;
  out << "scaler: " << (scaler.initialized ? "initialised" : "not initialised")
      << (scaler.rgb444 ? ", rgb 4:4:4" : "")
      << (scaler.metadataConnected ? ", dynamic metadata connected"
          : scaler.metadataOpen    ? ", dynamic metadata open"
                                   : "")
      << '\n';
  for (size_t i = 0; i < kWindowCount; ++i) {
    out << "  window " << i << ": ";
    DescribeWindow(board, scaler.windows[i], out);
  }
}

/// Resets receiver and scaler to their power-on state.
void BringDown(Board& board) {
  board.hdmi.initialized = board.hdmi.open = false;
  for (HdmiPort& port : board.hdmi.ports) {
    port.connected = false;
    port.hotPlug = HotPlug::kIdle;
    port.lock = {};
  }
  std::memset(&board.scaler, 0, sizeof(board.scaler));  // a temporary is too big for the stack
}

/// Does what the set's own software does to show a port full-screen.
void BringUp(Board& board, unsigned port) {
  board.hdmi.initialized = board.hdmi.open = true;
  board.hdmi.ports[port].connected = true;
  board.hdmi.ports[port].hotPlug = HotPlug::kRaised;
  Initialize(board);
  Open(board, K2V_VIDEO_WID_0);
  Connect(board, K2V_VIDEO_WID_0, {K2V_VSC_INPUTSRC_HDMI, 0, K2V_VSC_OUTPUT_DISPLAY_MODE});
}

Action ParseShow(const Words& words) {
  if (words[0] == "none") return BringDown;
  const auto port = static_cast<unsigned>(ParseNumber(words[0], "port", 0, kPortCount - 1));
  return [port](Board& board) {
    BringDown(board);
    BringUp(board, port);
  };
}

constexpr Command kCommands[] = {
    {"show", "PORT or show none",
     "start as if the set's own software showed the port full-screen, or with receiver and scaler\n"
     "      not initialised",
     1, 1, ParseShow},
};

// The packed pixels of a rectangle, as the trace shows them.
Buffer<K2V_VIDEO_PIXEL_T> PixelsOf(const K2V_VIDEO_RECT_T* rect, K2V_VIDEO_PIXEL_T* pixels) {
  return {pixels, rect == nullptr ? 0 : size_t{rect->w} * rect->h};
}

}  // namespace

constinit const Area kScalerArea = {kCommands, Describe};

}  // namespace sim

using namespace sim;

int K2V_RHAL_VSC_Initialize() {
  return Call(__func__, Initialize);
}
int K2V_RHAL_VSC_Open(__K2V_VIDEO_WID_T wid) {
  return Call(__func__, Open, wid);
}

int K2V_RHAL_VSC_Connect(__K2V_VIDEO_WID_T wid, K2V_VSC_INPUT_SRC_T source) {
  return Call(__func__, Connect, wid, source);
}

int K2V_RHAL_VSC_Disconnect(__K2V_VIDEO_WID_T wid, K2V_VSC_INPUT_SRC_T source) {
  return Call(__func__, Disconnect, wid, source);
}

int K2V_RHAL_VSC_SetInputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T region) {
  return Call(__func__, SetInputRegion, wid, region);
}

int K2V_RHAL_VSC_SetOutputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T region) {
  return Call(__func__, SetOutputRegion, wid, region);
}

int K2V_RHAL_VSC_GetInputRegion(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T* region) {
  return Call(__func__, GetInputRegion, wid, Out{region});
}

int K2V_RHAL_VSC_SetWinBlank(__K2V_VIDEO_WID_T wid, uint32_t on, K2V_VIDEO_DDI_WIN_COLOR_T color) {
  return Call(__func__, SetBlank, wid, on, color);
}

int K2V_RHAL_VSC_SetWinBlank_Sync_memc(__K2V_VIDEO_WID_T wid, uint32_t on,
                                       K2V_VIDEO_DDI_WIN_COLOR_T color) {
  return Call(__func__, SetBlank, wid, on, color);
}

int K2V_RHAL_VSC_SetWinFreeze(__K2V_VIDEO_WID_T wid, uint32_t on) {
  return Call(__func__, SetFreeze, wid, on);
}

int K2V_RHAL_VSC_FreezeVideoFrameBuffer(__K2V_VIDEO_WID_T wid, uint32_t on) {
  return Call(__func__, FreezeFrameBuffer, wid, on);
}

int K2V_RHAL_VSC_ReadVideoFrameBuffer(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T* rect,
                                      K2V_VIDEO_PIXEL_T* pixels, uint32_t* colorStandard,
                                      uint32_t* pixelColorFormat) {
  return Call(__func__, ReadFrameBuffer, wid, rect, PixelsOf(rect, pixels), Out{colorStandard},
              Out{pixelColorFormat});
}

int K2V_RHAL_VSC_WriteVideoFrameBuffer(__K2V_VIDEO_WID_T wid, K2V_VIDEO_RECT_T* rect,
                                       K2V_VIDEO_PIXEL_T* pixels) {
  return Call(__func__, WriteFrameBuffer, wid, rect, PixelsOf(rect, pixels));
}

int K2V_RHAL_VSC_CaptureVideoFrame(K2V_VIDEO_DDI_CAPTURE_PLACE_T place,
                                   K2V_VSC_CAPTURE_INFO_T* info) {
  return Call(__func__, CaptureFrame, place, info);
}

int K2V_RHAL_VSC_SetRGB444Mode(uint32_t on) {
  return Call(__func__, SetRgb444, on);
}

int K2V_RHAL_VSC_SetHDMI_Preview(__K2V_VIDEO_WID_T wid, uint32_t on) {
  return Call(__func__, SetPreview, wid, on);
}

int K2V_RHAL_VSC_DM_Open() {
  return Call(__func__, OpenMetadata);
}
int K2V_RHAL_VSC_DM_Connect() {
  return Call(__func__, ConnectMetadata);
}
