#include "Scene.h"

#include <algorithm>
#include <optional>

#include "PictureQuality.h"
#include "k2v/vbe.h"
#include "vsc/Picture.h"

namespace panel {
namespace {

constexpr int kPanelPerView = sim::kPanel.w / kViewWidth;
constexpr int kShift = 4;       // of the picture against burn-in, in pixels of the view
constexpr int kFaultyStep = 2;  // of a window in the wrong place, in pixels of the view
constexpr sim::Color kBlack = {0, 0, 0};

using sim::PanelFault;

constexpr K2V_VSC_INPUT_TYPE kPlayback = 5;  // as the menus count it; it is the decoder, too
constexpr sim::Picture kPlayersPicture = {1920, 1080,  K2V_COLOR_STANDARD_BT709, K2V_HDMI_EOTF_SDR,
                                          {},   false, sim::Stereo::kNone,       6000,
                                          0};

int Rounded(int panelPixels) {
  return (panelPixels + kPanelPerView / 2) / kPanelPerView;
}

struct Place {
  int x, y, w, h;  // in the view
};

/// At least a pixel of the view.
Place InView(const K2V_VIDEO_RECT_T& rect) {
  const int x = std::min(Rounded(rect.x), kViewWidth - 1);
  const int y = std::min(Rounded(rect.y), kViewHeight - 1);
  return {x, y, std::clamp(Rounded(rect.x + rect.w) - x, 1, kViewWidth - x),
          std::clamp(Rounded(rect.y + rect.h) - y, 1, kViewHeight - y)};
}

std::string CropFilter(const K2V_VIDEO_RECT_T& part, const sim::Picture& whole) {
  if (part.w == whole.width && part.h == whole.height) return "";
  return Printed("crop=w=max(1\\,iw*%d/%d):h=max(1\\,ih*%d/%d):x=iw*%d/%d:y=ih*%d/%d,", part.w,
                 whole.width, part.h, whole.height, part.x, whole.width, part.y, whole.height);
}

/// Half of the window goes without the picture quality while a demonstration is on.
std::string PictureFilters(const sim::Board& board) {
  const sim::Vpq& vpq = board.vpq;
  if (board.display.Has(PanelFault::kSettings)) return "";
  std::string filters = QualityFilters(vpq, Stage::kPicture);
  const Demo demo = DemoOf(vpq);
  if (filters.empty() || !demo.on) return filters;
  const char* const bareEdge = demo.rightSide ? "0" : "iw/2";
  const char* const barePlace = demo.rightSide ? "0" : "W/2";
  return std::string("split[bare][done];[done]") + filters +
         "[done];[bare]crop=iw/2:ih:" + bareEdge + ":0[bare];[done][bare]overlay=" + barePlace +
         ":0:format=gbrp";
}

/// Builds a scene plane by plane. The picture so far is always called [all].
class Builder {
 public:
  explicit Builder(sim::Color ground) {
    Add(PlainInput{ground, kViewWidth, kViewHeight});
    scene_.filters = "[in0]null[all]";
  }

  /// Puts a window's picture in its place. `filters` end in a comma, or are empty.
  void AddPicture(const std::string& picture, const std::string& filters, const Place& place,
                  const std::string& quality) {
    scene_.filters += Printed(";%s%sscale=%d:%d:flags=area,format=gbrp", picture.c_str(),
                              filters.c_str(), place.w, place.h);
    if (!quality.empty()) scene_.filters.append(",").append(quality);
    Overlay(place);
  }

  void AddPlain(sim::Color color, const Place& place) {
    scene_.filters.append(";").append(Add(PlainInput{color, place.w, place.h})).append("null");
    Overlay(place);
  }

  /// Lays pixels over a picture that goes on under the name that is returned.
  std::string Written(const std::string& picture, const WrittenInput& input, const Place& place) {
    scene_.filters.append(";").append(Add(input)) += Printed(
        "scale=%d:%d:flags=neighbor,format=gbrp[written];%s[written]overlay="
        "%d:%d:format=gbrp[buffer]",
        place.w, place.h, picture.c_str(), place.x, place.y);
    return "[buffer]";
  }

  /// Filters for all that is there so far.
  void Apply(const std::string& filters) {
    if (!filters.empty()) scene_.filters.append(";[all]").append(filters).append("[all]");
  }

  std::string Add(const SceneInput& input) {
    scene_.inputs.push_back(input);
    return Printed("[in%zu]", scene_.inputs.size() - 1);
  }

  Scene Finish(bool changes) {
    scene_.filters += ";[all]null[out]";
    scene_.changes = changes;
    return std::move(scene_);
  }

 private:
  void Overlay(const Place& place) {
    scene_.filters +=
        Printed("[window];[all][window]overlay=%d:%d:format=gbrp[all]", place.x, place.y);
  }

  Scene scene_;
};

bool IsPlayers(K2V_VSC_INPUT_TYPE type) {
  return type == K2V_VSC_INPUTSRC_VDEC || type == kPlayback;
}

/// A window that shows what the player decodes.
bool ShowsPlayer(const sim::Board& board, unsigned wid, bool isPlaying) {
  const sim::Window& window = board.scaler.windows[wid];
  if (!isPlaying || window.frozen || window.bufferFrozen) return false;
  return window.connected ? IsPlayers(window.source.type) : wid == 0;
}

void AddWritten(Builder& builder, std::string& name, const sim::Window& window, unsigned wid,
                const sim::Picture& picture) {
  if (sim::IsEmpty(window.written)) return;
  const Size canvas = CanvasOf(picture);
  const auto scaled = [](int value, int canvasSize, int size) { return value * canvasSize / size; };
  const K2V_VIDEO_RECT_T& at = window.written;
  const Place place = {scaled(at.x, canvas.width, picture.width),
                       scaled(at.y, canvas.height, picture.height),
                       std::max(1, scaled(at.w, canvas.width, picture.width)),
                       std::max(1, scaled(at.h, canvas.height, picture.height))};
  name = builder.Written(name, {wid, picture.colorStandard}, place);
}

void AddWindow(Builder& builder, const sim::Board& board, unsigned wid, bool isPlaying) {
  const sim::Window& window = board.scaler.windows[wid];
  const bool plays = ShowsPlayer(board, wid, isPlaying);
  if (!window.connected && !window.blank && !plays) return;
  const K2V_VIDEO_RECT_T rect = sim::PlaceOf(board, wid);
  if (sim::IsEmpty(rect)) return;
  Place place = InView(rect);
  if (board.display.Has(PanelFault::kWindow)) place.x += kFaultyStep;
  const sim::Picture picture = plays ? kPlayersPicture : sim::ShownPicture(board, window);
  if (window.blank) {
    const auto [red, green, blue] = sim::BlankColor(window);
    if (board.display.Has(PanelFault::kBlank)) return builder.AddPlain({blue, red, 96}, place);
    return builder.AddPlain({red, green, blue}, place);
  }
  if (picture.width == 0 || picture.muted) return builder.AddPlain(kBlack, place);
  std::string name = plays ? builder.Add(PlayedInput{}) : builder.Add(SentInput{picture});
  if (!plays) AddWritten(builder, name, window, wid, picture);
  const K2V_VIDEO_RECT_T part =
      window.connected ? sim::InputOf(window, picture) : sim::ActiveArea(picture);
  builder.AddPicture(name, CropFilter(part, picture), place, PictureFilters(board));
}

// The 3D formatter.

/// How the pictures of the two eyes come in, by VBE_INPUT_TYPE_*, as `stereo3d` calls it; empty:
/// both eyes get the same picture, one after the other or made of one.
constexpr const char* kPackings[] = {"",    "ab2l", "sbs2l", "",     "", "icl", "irl",
                                     "abl", "",     "irl",   "sbsl", "", ""};
constexpr uint8_t kOff = 0, kThreeToTwo = 3, kTwoToThree = 2;

/// Moves a picture sideways and shows its own edge where it came from.
std::string MovedSideways(int pixels) {
  if (pixels == 0) return "null";
  const int amount = std::abs(pixels);
  return Printed("crop=iw-%d:ih:%d:0,pad=iw+%d:ih:%d:0", amount, std::max(0, -pixels), amount,
                 std::max(0, pixels));
}

/// One eye's picture in half the panel's lines.
std::string EyeFilters(const std::string& packing, const char* eye, int shift) {
  const std::string unpacked =
      packing.empty() ? "" : Printed("stereo3d=%s:%s,", packing.c_str(), eye);
  return unpacked + Printed("scale=%d:%d:flags=area,", kViewWidth, kViewHeight / 2) +
         MovedSideways(shift);
}

/// The eyes' pictures on alternate lines, as a panel with polarised lines shows them.
std::string FormatterFilters(const sim::Formatter3d& formatter) {
  if (!formatter.open || formatter.format == VBE_INPUT_TYPE_3DOFF) return "";
  const bool makesDepth =
      formatter.format == VBE_INPUT_TYPE_2DTO3D || formatter.mode == kTwoToThree;
  const std::string packing = makesDepth ? "" : kPackings[formatter.format];
  const char* const left = formatter.rightFirstIn ? "mr" : "ml";
  const char* const right = formatter.rightFirstIn ? "ml" : "mr";
  if (formatter.mode == kThreeToTwo) {
    return (packing.empty() ? "" : Printed("stereo3d=%s:%s,", packing.c_str(), left)) +
           Printed("scale=%d:%d:flags=area", kViewWidth, kViewHeight);
  }
  const int depth = formatter.mode == kOff && !makesDepth ? 0 : formatter.depth;
  const int shift = formatter.autoConvergence ? 0 : depth + formatter.convergence;
  return std::string("split[left][right];[left]") + EyeFilters(packing, left, shift) +
         "[left];[right]" + EyeFilters(packing, right, -shift) +
         "[right];[left][right]hstack,stereo3d=sbsl:" + (formatter.leftFirstOut ? "irl" : "irr");
}

// The display.

struct Offset {
  int x, y;
};

/// The orbit goes around its place, a step every two seconds.
Offset ShiftOf(const sim::Display& display, int64_t nowMs) {
  static constexpr Offset kOrbit[] = {{4, 0},  {3, 3},   {0, 4},  {-3, 3},
                                      {-4, 0}, {-3, -3}, {0, -4}, {3, -3}};
  const Offset orbit = display.orbit ? kOrbit[nowMs / 2000 % 8] : Offset{0, 0};
  const int shift = display.shift ? kShift : 0;
  return {orbit.x + shift, orbit.y + shift};
}

std::string ColorName(sim::Color color) {
  return Printed("0x%02x%02x%02x", color.red, color.green, color.blue);
}

std::string ShiftFilters(Offset by, sim::Color border) {
  if (by.x == 0 && by.y == 0) return "";
  return Printed("crop=iw-%d:ih-%d:%d:%d,pad=%d:%d:%d:%d:color=", std::abs(by.x), std::abs(by.y),
                 std::max(0, -by.x), std::max(0, -by.y), kViewWidth, kViewHeight, std::max(0, by.x),
                 std::max(0, by.y)) +
         ColorName(border);
}

void AddMirror(Builder& builder, const sim::Display& display) {
  if (display.Has(PanelFault::kMirror)) return;
  if (display.mirrorHorizontal) builder.Apply("hflip");
  if (display.mirrorVertical) builder.Apply("vflip");
}

/// A plane of the on-screen display: a translucent band with its name.
std::string PlaneFilters(const char* name, const Place& band) {
  return Printed(
      "drawbox=x=%d:y=%d:w=%d:h=%d:color=0x203848@0.75:t=fill,"
      "drawtext=fontfile=%s:text='%s':fontsize=26:fontcolor=white:x=%d:y=%d",
      band.x, band.y, band.w, band.h, CVN_PANEL_FONT, name, band.x + 20, band.y + 17);
}

void AddOsd(Builder& builder, const sim::Board& board) {
  if (board.graphics.initialized) {
    builder.Apply(PlaneFilters("OSD 1", {0, kViewHeight - 60, kViewWidth, 60}));
    if (board.graphics.on) builder.Apply(PlaneFilters("OSD 2", {0, 0, kViewWidth, 60}));
  }
  if (board.linkedGraphics.initialized && board.linkedGraphics.on)
    builder.Apply(PlaneFilters("OSD behind the link", {kViewWidth - 340, 90, 320, 60}));
}

/// What is wrong with all that the panel shows.
void AddFaults(Builder& builder, const sim::Display& display) {
  if (display.Has(PanelFault::kChannels)) builder.Apply("shuffleplanes=1:0:2:3");
  if (display.Has(PanelFault::kRange))
    builder.Apply("lutrgb=r=16+val*219/255:g=16+val*219/255:b=16+val*219/255");
  if (display.Has(PanelFault::kLines)) builder.Apply("drawgrid=w=0:h=108:t=1:color=black");
}

bool IsDark(const sim::Display& display) {
  return display.dark || (display.tconInitialized && !display.tconClock);
}

}  // namespace

Size CanvasOf(const sim::Picture& picture) {
  constexpr int kMostWidth = 1920, kMostHeight = 1200;
  const int part = std::max({1, (picture.width + kMostWidth - 1) / kMostWidth,
                             (picture.height + kMostHeight - 1) / kMostHeight});
  return {std::max(1, picture.width / part), std::max(1, picture.height / part)};
}

Scene SceneOf(const sim::Board& board, int64_t nowMs, bool isPlaying) {
  const sim::Display& display = board.display;
  if (IsDark(display)) return Builder(kBlack).Finish(false);
  if (const auto pattern = PatternColor(board.vpq)) return Builder(*pattern).Finish(false);
  const bool showsVideo = !display.background && !display.muted;
  Builder builder(display.background ? display.backgroundColor
                  : display.muted    ? kBlack
                                     : display.borderColor);
  if (showsVideo) {
    for (unsigned wid = 0; wid < sim::kWindowCount; ++wid)
      AddWindow(builder, board, wid, isPlaying);
    builder.Apply(FormatterFilters(board.formatter));
    AddMirror(builder, display);
    builder.Apply(ShiftFilters(ShiftOf(display, nowMs), display.borderColor));
  }
  AddOsd(builder, board);
  if (!display.Has(PanelFault::kSettings)) builder.Apply(QualityFilters(board.vpq, Stage::kPanel));
  AddFaults(builder, display);
  return builder.Finish(board.vpq.noiseLevel != 0);
}

}  // namespace panel
