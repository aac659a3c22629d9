#include "Scene.h"

#include <algorithm>
#include <optional>

#include "PictureQuality.h"
#include "k2v/vbe.h"
#include "vpq/Vpq.h"
#include "vsc/Picture.h"

namespace panel {
namespace {

constexpr int kPanelPerView = sim::kPanel.w / kViewWidth;
constexpr int kShift = 4;       // of the picture against burn-in, in pixels of the view
constexpr int kFaultyStep = 2;  // of a window in the wrong place, in pixels of the view
constexpr sim::Color kBlack = {0, 0, 0};

using sim::PanelFault;

int Rounded(int panelPixels) {
  return (panelPixels + kPanelPerView / 2) / kPanelPerView;
}

std::string ColorName(sim::Color color) {
  return Printed("0x%02x%02x%02x", color.red, color.green, color.blue);
}

struct Place {
  int x, y, w, h;  // in the view
};

/// At least one pixel of the view.
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

/// Scales a picture to the size of its place.
std::string FitFilters(const sim::Board& board, const Place& place) {
  constexpr int kLeastWidth = 32;  // for a panorama
  if (sim::ValueOf(board.vpq, sim::VpqValue::kVPQ_SetPanoramaType) == 0 ||
      board.display.Has(PanelFault::kSettings) || place.w < kLeastWidth) {
    return Printed("scale=%d:%d:flags=area", place.w, place.h);
  }
  constexpr size_t kParts = std::size(kPanorama);
  std::string heads, bodies;
  int from = 0, to = 0;
  for (size_t i = 0; i < kParts; ++i) {
    const PanoramaPart& part = kPanorama[i];
    const int x = to * place.w / kPanoramaWhole, end = (to + part.to) * place.w / kPanoramaWhole;
    heads += Printed("[part%zu]", i);
    bodies +=
        Printed("[part%zu]crop=w=iw*%d/%d:h=ih:x=iw*%d/%d:y=0,scale=%d:%d:flags=area[part%zu];", i,
                part.from, kPanoramaWhole, from, kPanoramaWhole, end - x, place.h, i);
    from += part.from;
    to += part.to;
  }
  return Printed("split=%zu", kParts) + heads + ";" + bodies + heads +
         Printed("hstack=%zu", kParts);
}

/// Half of the window is not processed while a demonstration is on.
std::string PictureFilters(const sim::Board& board, const Subject& subject) {
  const sim::Vpq& vpq = board.vpq;
  if (board.display.Has(PanelFault::kSettings)) return "";
  std::string filters = QualityFilters(vpq, Stage::kPicture, subject);
  const Demo demo = DemoOf(vpq);
  if (filters.empty() || !demo.on) return filters;
  const char* const bareEdge = demo.rightSide ? "0" : "iw/2";
  const char* const barePlace = demo.rightSide ? "0" : "W/2";
  return std::string("split[bare][done];[done]") + filters +
         "[done];[bare]crop=iw/2:ih:" + bareEdge + ":0[bare];[done][bare]overlay=" + barePlace +
         ":0:format=gbrp";
}

/// Builds a scene plane by plane. The picture so far is always named [all].
class Builder {
 public:
  explicit Builder(sim::Color ground) : ground_(ground) { Begin(); }

  /// Begins another picture, on an empty background. The one so far gets the name, for Join.
  void BeginAfter(const char* name) {
    scene_.filters.append(";[all]null").append(name);
    Begin();
  }

  /// Combines two pictures: the one with the name, and the one begun since.
  void Join(const char* name, const std::string& filters) {
    scene_.filters.append(";").append(name).append("[all]").append(filters).append("[all]");
  }

  /// Puts a window's picture in its place.
  void AddPicture(const std::string& picture, const std::string& filters, const Place& place) {
    scene_.filters.append(";").append(picture).append(filters);
    Overlay(place);
  }

  void AddPlain(sim::Color color, const Place& place) {
    scene_.filters.append(";").append(Add(Plain(color, place.w, place.h))).append("null");
    Overlay(place);
  }

  /// Overlays pixels on a picture; returns the name of the result.
  std::string Written(const std::string& picture, const WrittenInput& input, const Place& place) {
    scene_.filters.append(";").append(Add(input)) += Printed(
        "scale=%d:%d:flags=neighbor,format=gbrp[written];%s[written]overlay="
        "%d:%d:format=gbrp[buffer]",
        place.w, place.h, picture.c_str(), place.x, place.y);
    return "[buffer]";
  }

  /// Applies filters to the picture so far.
  void Apply(const std::string& filters) {
    if (!filters.empty()) scene_.filters.append(";[all]").append(filters).append("[all]");
  }

  std::string Add(const SceneInput& input) {
    scene_.inputs.push_back(input);
    return Printed("[in%zu]", scene_.inputs.size() - 1);
  }

  /// Marks the scene as changing with every look.
  void KeepChanging() { scene_.changes = true; }

  Scene Finish() {
    scene_.filters += ";[all]null[out]";
    return std::move(scene_);
  }

 private:
  static GeneratedInput Plain(sim::Color color, int width, int height) {
    return {"color=" + ColorName(color) + Printed(":s=%dx%d,format=gbrp", width, height)};
  }

  void Begin() {
    const char* const separator = scene_.filters.empty() ? "" : ";";
    scene_.filters.append(separator).append(Add(Plain(ground_, kViewWidth, kViewHeight)));
    scene_.filters.append("null[all]");
  }

  void Overlay(const Place& place) {
    scene_.filters +=
        Printed("[window];[all][window]overlay=%d:%d:format=gbrp[all]", place.x, place.y);
  }

  Scene scene_;
  sim::Color ground_;
};

/// Who sees the video.
enum class Viewer : uint8_t { kAll, kFirstEye, kSecondEye };

/// The video side of the board at one look.
struct Video {
  const sim::Board& board;
  bool isPlaying;
  Viewer viewer;
};

/// How an eye's picture is unpacked, by VBE_INPUT_TYPE_*; $ is replaced by the eye's name in
/// `stereo3d`. The even lines of a checkerboard are enough for the view. Empty if both eyes get
/// whole pictures: in turn, one each from two streams, or derived from the same one.
constexpr const char* kUnpacking[] = {"",
                                      "stereo3d=ab2l:$",
                                      "stereo3d=sbs2l:$",
                                      "stereo3d=irl:ml,stereo3d=icl:$",
                                      "",
                                      "stereo3d=icl:$",
                                      "stereo3d=irl:$",
                                      "stereo3d=abl:$",
                                      "stereo3d=abl:$",
                                      "stereo3d=irl:$",
                                      "stereo3d=sbsl:$",
                                      "",
                                      ""};

/// Filters that end in a comma, or an empty string.
std::string UnpackFilters(const Video& video) {
  const std::string_view unpacking = kUnpacking[video.board.formatter.format];
  if (video.viewer == Viewer::kAll || unpacking.empty()) return "";
  std::string filters(unpacking);
  filters.replace(filters.find('$'), 1, video.viewer == Viewer::kFirstEye ? "ml" : "mr");
  return "crop=trunc(iw/2)*2:trunc(ih/2)*2:0:0," + filters + ",";  // of an even size
}

/// The frames that an eye gets if the source's frames alternate between the eyes.
Frames FramesFor(const Video& video) {
  if (video.viewer == Viewer::kAll || video.board.formatter.format != VBE_INPUT_TYPE_FRAMESEQ)
    return Frames::kAll;
  return video.viewer == Viewer::kFirstEye ? Frames::kEven : Frames::kOdd;
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

/// Draws what a window shows in the place of that window, or of another.
void AddWindow(Builder& builder, const Video& video, unsigned wid, unsigned placeOf) {
  const sim::Board& board = video.board;
  const sim::Window& window = board.scaler.windows[wid];
  const sim::Picture shown = sim::DisplayedPicture(board, window);
  const bool isFrozen = shown.heldMs != 0;
  const bool takesInPlayer = sim::TakesInPlayer(board, wid);
  const bool plays = isFrozen ? shown.heldScreen != 0 && (window.connected || takesInPlayer)
                              : video.isPlaying && takesInPlayer;
  if (!window.connected && !window.blank && !plays) return;
  const K2V_VIDEO_RECT_T rect = sim::PlaceOf(board, placeOf);
  if (sim::IsEmpty(rect)) return;
  Place place = InView(rect);
  if (board.display.Has(PanelFault::kWindow)) place.x += kFaultyStep;
  const sim::Picture picture = plays ? sim::kPlayersPicture : shown;
  if (window.blank) {
    const auto [red, green, blue] = sim::BlankColor(window);
    if (board.display.Has(PanelFault::kBlank)) return builder.AddPlain({blue, red, 96}, place);
    return builder.AddPlain({red, green, blue}, place);
  }
  if (picture.width == 0 || picture.muted) return builder.AddPlain(kBlack, place);
  if (!isFrozen && board.vpq.noiseLevel != 0) builder.KeepChanging();
  std::string name = plays ? builder.Add(PlayedInput{shown.heldScreen})
                           : builder.Add(SentInput{picture, FramesFor(video)});
  if (!plays) AddWritten(builder, name, window, wid, picture);
  const K2V_VIDEO_RECT_T part =
      window.connected ? sim::InputOf(window, picture) : sim::ActiveArea(picture);
  const auto add = [&builder](const SceneInput& input) { return builder.Add(input); };
  const std::string quality = PictureFilters(board, {isFrozen, add});
  builder.AddPicture(name,
                     UnpackFilters(video) + CropFilter(part, picture) + FitFilters(board, place) +
                         ",format=gbrp" + (quality.empty() ? "" : "," + quality),
                     place);
}

/// Draws all windows. With two streams, the main window's is for the first eye, the sub window's
/// for the second.
void AddWindows(Builder& builder, const Video& video) {
  const sim::Board& board = video.board;
  const bool hasTwoStreams = video.viewer != Viewer::kAll &&
                             board.formatter.format == VBE_INPUT_TYPE_DUALSTREAM &&
                             board.scaler.windows[1].connected;
  if (hasTwoStreams) return AddWindow(builder, video, video.viewer == Viewer::kFirstEye ? 0 : 1, 0);
  for (unsigned wid = 0; wid < sim::kWindowCount; ++wid) AddWindow(builder, video, wid, wid);
}

// The 3D formatter.

constexpr uint8_t kOff = 0, kThreeToTwo = 3, kTwoToThree = 2;

/// Moves a picture sideways; what it uncovers is black.
std::string MovedSideways(int pixels) {
  if (pixels == 0) return "null";
  const int amount = std::abs(pixels);
  return Printed("crop=iw-%d:ih:%d:0,pad=iw+%d:ih:%d:0", amount, std::max(0, -pixels), amount,
                 std::max(0, pixels));
}

/// One eye's picture in half the panel's lines.
std::string EyeFilters(int shift) {
  return Printed("scale=%d:%d:flags=area,", kViewWidth, kViewHeight / 2) + MovedSideways(shift);
}

/// Draws the video as the display gets it. The formatter puts the eyes' pictures on alternate
/// lines, as a panel with polarised lines shows them.
void AddVideo(Builder& builder, const sim::Board& board, bool isPlaying) {
  const sim::Formatter3d& formatter = board.formatter;
  const bool isOn = formatter.open && formatter.format != VBE_INPUT_TYPE_3DOFF;
  const bool makesDepth =
      formatter.format == VBE_INPUT_TYPE_2DTO3D || formatter.mode == kTwoToThree;
  const bool isFlat = !isOn || makesDepth;
  Video left = {board, isPlaying, Viewer::kAll}, right = left;
  if (!isFlat) {
    left.viewer = formatter.rightFirstIn ? Viewer::kSecondEye : Viewer::kFirstEye;
    right.viewer = formatter.rightFirstIn ? Viewer::kFirstEye : Viewer::kSecondEye;
  }
  AddWindows(builder, left);
  if (!isOn || formatter.mode == kThreeToTwo) return;
  const int depth = formatter.mode == kOff && !makesDepth ? 0 : formatter.depth;
  const int shift = formatter.autoConvergence ? 0 : depth + formatter.convergence;
  builder.Apply(EyeFilters(shift));
  builder.BeginAfter("[left]");
  AddWindows(builder, right);
  builder.Apply(EyeFilters(-shift));
  const char* const lines = formatter.leftFirstOut ? "irl" : "irr";
  builder.Join("[left]", std::string("hstack,stereo3d=sbsl:") + lines);
}

// The display.

struct Offset {
  int x, y;
};

/// The orbit goes around the picture's normal place, one step every two seconds.
Offset ShiftOf(const sim::Display& display, int64_t nowMs) {
  static constexpr Offset kOrbit[] = {{4, 0},  {3, 3},   {0, 4},  {-3, 3},
                                      {-4, 0}, {-3, -3}, {0, -4}, {3, -3}};
  const Offset orbit = display.orbit ? kOrbit[nowMs / 2000 % 8] : Offset{0, 0};
  const int shift = display.shift ? kShift : 0;
  return {orbit.x + shift, orbit.y + shift};
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

/// The panel's faults that affect everything shown.
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
  if (IsDark(display)) return Builder(kBlack).Finish();
  if (const auto pattern = PatternColor(board.vpq)) return Builder(*pattern).Finish();
  const bool showsVideo = !display.background && !display.muted;
  Builder builder(display.background ? display.backgroundColor
                  : display.muted    ? kBlack
                                     : display.borderColor);
  if (showsVideo) {
    AddVideo(builder, board, isPlaying);
    AddMirror(builder, display);
    builder.Apply(ShiftFilters(ShiftOf(display, nowMs), display.borderColor));
  }
  AddOsd(builder, board);
  if (!display.Has(PanelFault::kSettings)) {
    const auto add = [&builder](const SceneInput& input) { return builder.Add(input); };
    builder.Apply(QualityFilters(board.vpq, Stage::kPanel, {false, add}));
  }
  AddFaults(builder, display);
  return builder.Finish();
}

}  // namespace panel
