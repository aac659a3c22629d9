#include "Captures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Image.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/mem.h>
}

namespace captures {
namespace {

using picture::Check;
using picture::Picture;
using picture::Printed;

constexpr int kWidth = 960, kHeight = 540;

// Sources; the filters of scenes and defects refer to them by name in braces.
constexpr char kBars[] =
    "color=white:s=960x540,format=gbrp,drawbox=x=120:w=840:h=540:color=yellow:t=fill,"
    "drawbox=x=240:w=720:h=540:color=cyan:t=fill,drawbox=x=360:w=600:h=540:color=lime:t=fill,"
    "drawbox=x=480:w=480:h=540:color=magenta:t=fill,drawbox=x=600:w=360:h=540:color=red:t=fill,"
    "drawbox=x=720:w=240:h=540:color=blue:t=fill,drawbox=x=840:w=120:h=540:color=black:t=fill";
constexpr char kSmpte[] =
    "smptehdbars=s=960x540,scale=in_color_matrix=bt709:in_range=limited,format=gbrp";
constexpr char kRamp[] =
    "color=black:s=256x540,format=gbrp,geq=r=X:g=X:b=X,scale=960:540:flags=bilinear,format=gbrp";
constexpr char kChecks[] =
    "color=white:s=32x18,format=gbrp,geq=r=255*mod(X+Y\\,2):g=255*mod(X+Y\\,2):b=255*mod(X+Y\\,2),"
    "scale=960:540:flags=neighbor,format=gbrp";
constexpr char kChart[] = "testsrc2=s=960x540,format=gbrp";

std::string Whole(std::string filters) {
  const struct {
    const char* name;
    const char* filters;
  } kSources[] = {
      {"{bars}", kBars},     {"{smpte}", kSmpte}, {"{ramp}", kRamp},
      {"{checks}", kChecks}, {"{chart}", kChart},
  };
  for (const auto& source : kSources) {
    for (size_t at; (at = filters.find(source.name)) != std::string::npos;)
      filters.replace(at, std::string(source.name).size(), source.filters);
  }
  return filters;
}

/// A source's picture in a window on a background.
std::string InWindow(const char* source, const char* ground, int x, int y, int w, int h) {
  return Printed(
      "{%s},scale=%d:%d:flags=area,format=gbrp[w];%s,format=gbrp[g];[g][w]overlay=%d:%d:"
      "format=gbrp",
      source, w, h, ground, x, y);
}

constexpr char kBlack[] = "color=black:s=960x540";
constexpr char kBlue[] = "color=blue:s=960x540";
constexpr char kGray[] = "color=0x808080:s=960x540";

/// Changes the brightness by tenths of the range, equally in all channels.
std::string Brighter(const char* source, double tenths) {
  const int levels = static_cast<int>(std::lround(25.5 * tenths));
  return Printed(
      "{%s},lutrgb=r=clip(val+%d\\,0\\,255):g=clip(val+%d\\,0\\,255):b=clip(val+%d\\,0\\,255)",
      source, levels, levels, levels);
}

void AddWindows(std::vector<Defect>& defects) {
  const struct {
    const char* source;
    const char* ground;
    int x, y, w, h;
  } kWindows[] = {
      {"smpte", kBlack, 100, 60, 640, 360},    {"chart", kBlue, 240, 135, 480, 270},
      {"bars", "{ramp}", 620, 300, 240, 135},  {"ramp", kGray, 40, 40, 320, 180},
      {"checks", "{bars}", 500, 40, 400, 225}, {"chart", kBlack, 0, 0, 480, 270},
      {"smpte", "{ramp}", 480, 270, 480, 270}, {"bars", kBlue, 300, 100, 360, 300},
  };
  const int kOff[][2] = {{2, 0}, {-2, 0}, {0, 2}, {0, -2}};
  for (const auto& window : kWindows) {
    for (const auto& [right, down] : kOff) {
      defects.push_back(
          {"window off by 2 pixels",
           InWindow(window.source, window.ground, window.x, window.y, window.w, window.h),
           InWindow(window.source, window.ground, window.x + right, window.y + down, window.w,
                    window.h)});
    }
  }
}

void AddBlanks(std::vector<Defect>& defects) {
  const char* const kColors[] = {"blue", "0x808080", "black"};
  const auto blanked = [](const char* source, const char* color, int w, int h) {
    return Printed("{%s},drawbox=x=90:y=90:w=%d:h=%d:color=%s:t=fill", source, w, h, color);
  };
  for (const char* source : {"bars", "smpte", "ramp"}) {
    for (size_t i = 0; i < 3; ++i) {
      for (const auto& [w, h] : {std::pair{64, 48}, std::pair{480, 270}}) {
        defects.push_back({"wrong blank colour", blanked(source, kColors[i], w, h),
                           blanked(source, kColors[(i + 1) % 3], w, h)});
      }
    }
  }
}

/// Adds defects made by the same filters applied to each of several sources.
void AddFiltered(std::vector<Defect>& defects, const char* kind,
                 const std::vector<const char*>& sources, const std::vector<std::string>& filters) {
  for (const char* source : sources) {
    const std::string shown = std::string("{") + source + "}";
    for (const std::string& filter : filters)
      defects.push_back({kind, shown, shown + "," + filter});
  }
}

void AddColors(std::vector<Defect>& defects) {
  AddFiltered(defects, "channels swapped", {"bars", "smpte", "chart"},
              {"shuffleplanes=1:0:2:3", "shuffleplanes=0:2:1:3", "shuffleplanes=2:1:0:3",
               "shuffleplanes=1:2:0:3", "shuffleplanes=2:0:1:3"});
  AddFiltered(defects, "range wrong", {"bars", "smpte", "ramp", "chart", "checks"},
              {"lutrgb=r=16+val*219/255:g=16+val*219/255:b=16+val*219/255"});
  // Without sources that use only the lowest and highest levels: clipping does not change those.
  AddFiltered(defects, "range wrong", {"smpte", "ramp", "chart"},
              {"lutrgb=r=clip((val-16)*255/219\\,0\\,255):g=clip((val-16)*255/219\\,0\\,255):"
               "b=clip((val-16)*255/219\\,0\\,255)"});
  AddFiltered(defects, "matrix wrong", {"bars", "smpte", "chart"},
              {"scale=out_color_matrix=bt709:flags=accurate_rnd,format=yuv444p,"
               "setparams=colorspace=smpte170m,scale=in_color_matrix=bt601:flags=accurate_rnd,"
               "format=gbrp",
               "scale=out_color_matrix=bt601:flags=accurate_rnd,format=yuv444p,"
               "setparams=colorspace=bt709,scale=in_color_matrix=bt709:flags=accurate_rnd,"
               "format=gbrp"});
}

void AddStale(std::vector<Defect>& defects) {
  const std::vector<Scene>& scenes = Scenes();
  for (size_t i = 0; i < scenes.size(); ++i)
    defects.push_back({"stale frame", scenes[i].filters, scenes[(i + 1) % scenes.size()].filters});
}

void AddLines(std::vector<Defect>& defects) {
  // One percent of the lines: five single lines far apart, or one block of five.
  const auto lines = [](int first, int step, int count, const char* change) {
    std::string filters = "split[a][b];[b]";
    filters += change;
    filters += "[b];[a][b]blend=all_expr='if(";
    for (int i = 0; i < count; ++i)
      filters += Printed("%seq(Y\\,%d)", i == 0 ? "" : "+", first + step * i);
    return filters + "\\,B\\,A)'";
  };
  for (const char* change : {"negate", "hflip", "lutrgb=r=0:g=0:b=0"}) {
    AddFiltered(defects, "one percent of lines wrong", {"bars", "smpte", "chart"},
                {lines(31, 97, 5, change), lines(200, 1, 5, change)});
  }
  AddFiltered(defects, "one line wrong", {"bars", "smpte", "chart", "ramp"},
              {lines(263, 1, 1, "negate")});
}

void AddSettings(std::vector<Defect>& defects) {
  for (const char* source : {"bars", "smpte", "ramp", "chart", "checks"}) {
    for (const double tenths : {-5.0, -2.0, -1.0, 1.0, 2.0, 5.0}) {
      defects.push_back(
          {"brightness not applied", Brighter(source, tenths), std::string("{") + source + "}"});
    }
  }
  // Colour settings that were not applied: saturation, hue and contrast.
  for (const char* source : {"smpte", "chart"}) {
    const std::string plain = std::string("{") + source + "}";
    for (const char* setting :
         {"hue=s=1.5", "hue=s=0", "hue=s=0.6", "hue=h=20", "hue=h=-12", "eq=contrast=1.2"}) {
      defects.push_back({"colour setting not applied",
                         plain + ",scale=out_range=full,format=yuv444p," + setting +
                             ",scale=in_range=full,format=gbrp",
                         plain});
    }
  }
  for (const char* source : {"bars", "smpte", "chart"}) {
    const std::string plain = std::string("{") + source + "}";
    defects.push_back({"mirror missing", plain + ",hflip", plain});
    defects.push_back({"mirror missing", plain + ",hflip,vflip", plain + ",vflip"});
  }
  defects.push_back({"mirror missing", "{smpte},vflip", "{smpte}"});
}

void AddBlack(std::vector<Defect>& defects) {
  for (const Scene& scene : Scenes()) defects.push_back({"black", scene.filters, kBlack});
}

/// The quantisation tables of the JPEG standard's annex for a quality, as the encoder expects them.
uint16_t* Quantiser(bool chroma, int quality) {
  static constexpr std::array<uint8_t, 64> kLuma = {
      16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
      14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
      18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
      49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
  static constexpr std::array<uint8_t, 64> kChroma = {
      17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99,
      99, 99, 47, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
      99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};
  const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
  auto* matrix = static_cast<uint16_t*>(av_malloc(64 * sizeof(uint16_t)));
  std::ranges::transform(chroma ? kChroma : kLuma, matrix, [percent](int step) {
    return static_cast<uint16_t>(std::clamp((step * percent + 50) / 100, 1, 255));
  });
  return matrix;
}

using Codec =
    std::unique_ptr<AVCodecContext, picture::Deleter<AVCodecContext, avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, picture::Deleter<AVPacket, av_packet_free>>;

Picture ThroughMjpeg(const AVFrame& shown, int quality) {
  constexpr int kScale = 8;  // with this scale the encoder uses its tables unchanged
  const Picture input = picture::Converted(shown, AV_PIX_FMT_YUVJ420P);
  const Codec encoder(avcodec_alloc_context3(avcodec_find_encoder(AV_CODEC_ID_MJPEG)));
  encoder->width = shown.width;
  encoder->height = shown.height;
  encoder->pix_fmt = AV_PIX_FMT_YUVJ420P;
  encoder->time_base = {1, 25};
  encoder->thread_count = 1;
  encoder->qmin = encoder->qmax = kScale;
  encoder->flags |= AV_CODEC_FLAG_QSCALE;
  encoder->global_quality = kScale * FF_QP2LAMBDA;
  encoder->intra_matrix = Quantiser(false, quality);
  encoder->chroma_intra_matrix = Quantiser(true, quality);
  Check("MJPEG", avcodec_open2(encoder.get(), encoder->codec, nullptr));
  input->quality = encoder->global_quality;
  const Packet packet(av_packet_alloc());
  Check("MJPEG", avcodec_send_frame(encoder.get(), input.get()));
  Check("MJPEG", avcodec_receive_packet(encoder.get(), packet.get()));
  av_freep(&encoder->chroma_intra_matrix);  // the encoder frees only the other matrix
  const Codec decoder(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_MJPEG)));
  decoder->thread_count = 1;
  Check("MJPEG", avcodec_open2(decoder.get(), decoder->codec, nullptr));
  Check("MJPEG", avcodec_send_packet(decoder.get(), packet.get()));
  Picture seen(av_frame_alloc());
  Check("MJPEG", avcodec_receive_frame(decoder.get(), seen.get()));
  return seen;
}

std::string CaptureFilters(const BadCapture& capture) {
  std::string filters = "null";
  const auto add = [&](const std::string& filter) { filters += "," + filter; };
  if (capture.vignette > 0) {
    add(Printed("format=rgb24,vignette=angle=%.5f:dither=0,format=gbrp",
                std::acos(std::pow(1 - capture.vignette, 0.25))));
  }
  if (capture.gain != 1 || capture.gamma != 1) {
    const std::string level =
        Printed("clip(255*%.4f*pow(val/255\\,%.4f)\\,0\\,255)", capture.gain, capture.gamma);
    add("lutrgb=r=" + level + ":g=" + level + ":b=" + level);
  }
  if (capture.hue != 0)
    add(Printed("scale=out_range=full,format=yuv444p,hue=h=%.3f,scale=in_range=full,format=gbrp",
                capture.hue));
  if (capture.right != 0 || capture.down != 0) {
    add(Printed("crop=%d:%d:%d:%d,pad=%d:%d:%d:%d", kWidth - std::abs(capture.right),
                kHeight - std::abs(capture.down), std::max(0, -capture.right),
                std::max(0, -capture.down), kWidth, kHeight, std::max(0, capture.right),
                std::max(0, capture.down)));
  }
  if (capture.from720p) add("scale=1280:720:flags=bicubic");
  if (capture.noise != 0) add(Printed("noise=alls=%d:allf=t", 2 * capture.noise));
  return filters;
}

}  // namespace

const std::vector<Scene>& Scenes() {
  static const std::string kTexts[] = {
      InWindow("chart", kBlue, 240, 135, 480, 270), InWindow("bars", "{ramp}", 620, 300, 240, 135),
      InWindow("smpte", kBlack, 100, 60, 640, 360), Brighter("bars", 1.5), Brighter("smpte", -1.5)};
  static const std::vector<Scene> kScenes = {
      {"smpte", "{smpte}"},
      {"bars", "{bars}"},
      {"ramp", "{ramp}"},
      {"checkerboard", "{checks}"},
      {"chart", "{chart}"},
      {"chart on blue", kTexts[0].c_str()},
      {"bars in a ramp", kTexts[1].c_str()},
      {"smpte on black", kTexts[2].c_str()},
      {"bars, brighter", kTexts[3].c_str()},
      {"smpte, darker", kTexts[4].c_str()},
      {"bars, mirrored", "{bars},hflip"},
      {"gray", kGray},
      {"white", "color=white:s=960x540"},
  };
  return kScenes;
}

std::vector<Defect> Defects(size_t count) {
  std::vector<Defect> all;
  AddWindows(all);
  AddBlanks(all);
  AddColors(all);
  AddStale(all);
  AddLines(all);
  AddSettings(all);
  AddBlack(all);
  std::vector<Defect> some;
  for (size_t i = 0; i < std::min(count, all.size()); ++i)
    some.push_back(all[i * all.size() / std::min(count, all.size())]);
  return some;
}

std::string BadCapture::Text() const {
  return Printed("gain %.3f gamma %.3f vignette %.3f hue %.2f shift %d,%d noise %d%s mjpeg %d",
                 gain, gamma, vignette, hue, right, down, noise, from720p ? " 720p" : "",
                 mjpegQuality);
}

BadCapture Draw(std::mt19937& random) {
  const auto from = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  const auto whole = [&](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
  };
  BadCapture capture;
  capture.gain = from(0.95, 1.05);
  capture.gamma = from(0.95, 1.05);
  capture.vignette = from(0, 0.1);
  capture.hue = from(-2, 2);
  capture.right = whole(-1, 1);
  capture.down = whole(-1, 1);
  capture.noise = whole(0, 3);
  capture.from720p = whole(0, 1) == 1;
  capture.mjpegQuality = whole(0, 2) == 0 ? 0 : whole(70, 95);
  return capture;
}

eyes::Pixels Shown(const std::string& filters) {
  return eyes::ToPixels(*picture::Generate(Whole(filters)));
}

eyes::Pixels Captured(const eyes::Pixels& shown, const BadCapture& capture) {
  Picture seen = picture::Filtered(*eyes::ToFrame(shown), CaptureFilters(capture));
  if (capture.mjpegQuality > 0) seen = ThroughMjpeg(*seen, capture.mjpegQuality);
  return eyes::ToPixels(*seen, kWidth, kHeight);
}

}  // namespace captures
