#include "Sources.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "Image.h"
#include "media/Screen.h"
#include "vfe/TestPicture.h"
#include "vsc/Picture.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace panel {
namespace {

/// The plain pictures of the frame buffer are made as small as possible and enlarged; sizes by
/// TestPicture.
constexpr Size kSmallest[] = {{8, 8}, {256, 8}, {}, {32, 18}, {}, {8, 8}, {8, 8}};

// Crosses the picture from left to right in four seconds and from top to bottom in seven.
constexpr char kBoxFilter[] =
    "drawtext=fontfile=" CVN_PANEL_FONT
    ":text='%%{eif\\:round(t*%.3f)\\:d\\:8}':fontsize=h/9:fontcolor=black:box=1:boxcolor=white"
    ":boxborderw=%d:x='%d+mod(t/4,1)*(w-tw-%d)':y='%d+mod(t/7,1)*(h-th-%d)'";

std::string SizeText(Size size) {
  return Printed("%dx%d", size.width, size.height);
}

/// A picture in planar RGB; `colorAt` gives the red, green and blue of a pixel.
template <typename ColorAt>
Picture FromColors(Size size, ColorAt colorAt) {
  Picture picture(av_frame_alloc());
  picture->width = size.width;
  picture->height = size.height;
  picture->format = AV_PIX_FMT_GBRP;
  Check("picture", av_frame_get_buffer(picture.get(), 0));
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const std::array<uint8_t, 3> color = colorAt(x, y);
      const uint8_t samples[] = {color[1], color[2], color[0]};  // the order of the planes
      for (size_t plane = 0; plane < std::size(samples); ++plane)
        picture->data[plane][y * picture->linesize[plane] + x] = samples[plane];
    }
  }
  return picture;
}

/// A plain picture as the board's frame buffer has it.
Picture Plain(sim::TestPicture kind, Size size) {
  static const sim::Window kNothingWritten = {};
  sim::Picture sent = {};
  sent.width = static_cast<uint16_t>(size.width);
  sent.height = static_cast<uint16_t>(size.height);
  sent.sent.picture = kind;
  const sim::Frame frame(kNothingWritten, sent);
  return FromColors(size, [&frame](int x, int y) {
    return frame.RgbAt(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
  });
}

Picture Drawn(sim::TestPicture kind, Size size) {
  if (kind == sim::TestPicture::kBox)
    return Generate("color=0x101010:s=" + SizeText(size) + ",format=gbrp");
  if (kind == sim::TestPicture::kSmpte) {
    return Generate("smptehdbars=s=" + SizeText(size) +
                    ",scale=in_color_matrix=bt709:in_range=limited,format=gbrp");
  }
  return Filtered(*Plain(kind, kSmallest[static_cast<size_t>(kind)]),
                  Printed("scale=%d:%d:flags=neighbor", size.width, size.height));
}

/// The whole image, with black bars if its aspect ratio differs.
Picture Still(const sim::SentPicture& sent, Size size) {
  return Filtered(
      *FromFile(sim::ImagePath(sent)),
      Printed("format=gbrp,scale=%d:%d:flags=bicubic:force_original_aspect_ratio=decrease,"
              "pad=%d:%d:-1:-1:color=black",
              size.width, size.height, size.width, size.height));
}

/// The right eye sees everything shifted a little sideways.
constexpr char kRightEye[] = "scroll=hpos=0.98";

/// How the pictures of both eyes share a frame, by sim::Stereo: the shape of each, and how they are
/// put together. Without a shape, they do not share one.
struct Packing {
  const char* shape;
  const char* together;
};
constexpr char kHalfWidth[] = "scale=iw/2:ih:flags=neighbor",
               kHalfHeight[] = "scale=iw:ih/2:flags=neighbor";
constexpr Packing kPackings[] = {
    {nullptr, nullptr},                         // none
    {kHalfHeight, "vstack"},                    // frame packing
    {kHalfWidth, "hstack"},                     // side by side
    {kHalfHeight, "vstack"},                    // top and bottom
    {kHalfHeight, "vstack"},                    // field alternative
    {kHalfHeight, "hstack,stereo3d=sbsl:irl"},  // line alternative
    {kHalfWidth, "hstack"},                     // side by side, full
    {kHalfHeight, "hstack,stereo3d=sbsl:irl"},  // line interleave
    {kHalfWidth, "hstack,stereo3d=sbsl:icl"},   // column interleave
    {kHalfWidth, "hstack,stereo3d=sbsl:chl"},   // checkerboard
    {nullptr, nullptr},                         // frame sequential
};

/// Filters that turn a picture into a 3D frame; empty if the picture is the frame.
std::string StereoFilters(sim::Stereo stereo, int64_t frame) {
  if (stereo == sim::Stereo::kFrameSequential) return frame % 2 == 0 ? "" : kRightEye;
  const auto& [shape, together] = kPackings[static_cast<size_t>(stereo)];
  if (shape == nullptr) return "";
  return Printed("split[left][right];[left]%s[left];[right]%s,%s[right];[left][right]%s", shape,
                 shape, kRightEye, together);
}

template <typename Maker>
Picture BlackWhereItFails(Size size, Maker make) {
  try {
    return make();
  } catch (const std::runtime_error&) {
    return Drawn(sim::TestPicture::kBlack, size);
  }
}

Picture DecodedScreen(const Bytes& file) {
  sim::ScreenHeader header = {};
  if (file.size() < sizeof(header)) throw std::runtime_error("no picture");
  std::memcpy(&header, file.data(), sizeof(header));
  const auto format = static_cast<AVPixelFormat>(header.pixelFormat);
  const int size = av_image_get_buffer_size(format, header.width, header.height, 1);
  if (size < 0 || file.size() != sizeof(header) + static_cast<size_t>(size))
    throw std::runtime_error("half a picture");
  Picture frame(av_frame_alloc());
  frame->width = header.width;
  frame->height = header.height;
  frame->format = header.pixelFormat;
  frame->colorspace = static_cast<AVColorSpace>(header.colorSpace);
  frame->color_range = static_cast<AVColorRange>(header.colorRange);
  Check("picture", av_frame_get_buffer(frame.get(), 0));
  const uint8_t* planes[4] = {};
  int lines[4] = {};
  Check("picture",
        av_image_fill_arrays(const_cast<uint8_t**>(planes), lines, file.data() + sizeof(header),
                             format, header.width, header.height, 1));
  av_image_copy(frame->data, frame->linesize, planes, lines, format, header.width, header.height);
  return frame;
}

Picture PixelsOf(const sim::Window& window, uint32_t standard) {
  static constexpr AVColorSpace kSpaces[] = {AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT709,
                                             AVCOL_SPC_BT2020_NCL};
  Picture frame(av_frame_alloc());
  frame->width = window.written.w;
  frame->height = window.written.h;
  frame->format = AV_PIX_FMT_YUV444P10;
  frame->colorspace = kSpaces[std::min<uint32_t>(standard, 2)];
  frame->color_range = AVCOL_RANGE_MPEG;
  Check("picture", av_frame_get_buffer(frame.get(), 0));
  const K2V_VIDEO_PIXEL_T* pixel = window.pixels;
  for (int y = 0; y < frame->height; ++y) {
    const auto line = [&](int plane) {
      return reinterpret_cast<uint16_t*>(frame->data[plane] +
                                         std::ptrdiff_t{y} * frame->linesize[plane]);
    };
    uint16_t *const luma = line(0), *const cb = line(1), *const cr = line(2);
    for (int x = 0; x < frame->width; ++x, ++pixel) {
      luma[x] = pixel->y;
      cb[x] = pixel->cb;
      cr[x] = pixel->cr;
    }
  }
  return frame;
}

}  // namespace

template <typename Maker>
Sources::Made Sources::Keep(const std::string& name, Maker make) {
  const auto [entry, isNew] = kept_.try_emplace(name);
  if (isNew) entry->second.picture = make();
  entry->second.isUsed = true;
  return {entry->second.picture.get(), name};
}

Sources::Made Sources::Make(const SceneInput& input, const sim::Board& board, int64_t nowMs) {
  if (const auto* generated = std::get_if<GeneratedInput>(&input))
    return Keep(generated->filters, [&] { return Generate(generated->filters); });
  if (const auto* sent = std::get_if<SentInput>(&input)) return MakeSent(*sent, nowMs);
  if (const auto* written = std::get_if<WrittenInput>(&input))
    return MakeWritten(*written, board.scaler.windows[written->wid]);
  if (const auto* cube = std::get_if<CubeInput>(&input))
    return MakeCube(board.vpq.records.*cube->table);
  return MakePlayed(std::get<PlayedInput>(input));
}

void Sources::DropUnused() {
  std::erase_if(kept_, [](const auto& entry) { return !entry.second.isUsed; });
  for (auto& [name, kept] : kept_) kept.isUsed = false;
}

/// The number of the frame to show at a time. If frames alternate between the eyes, it is the last
/// one for that eye, but a frozen source has only one.
int64_t FrameNumber(const sim::Picture& sent, Frames frames, double rateHz, int64_t nowMs) {
  const int64_t ms = sent.heldMs != 0 ? sent.heldMs : nowMs;
  const auto number = static_cast<int64_t>(static_cast<double>(ms) * rateHz / 1000);
  if (frames == Frames::kAll || sent.heldMs != 0) return number;
  const int64_t wanted = frames == Frames::kOdd ? 1 : 0;
  return number % 2 == wanted || number == 0 ? number : number - 1;
}

Sources::Made Sources::MakeSent(const SentInput& input, int64_t nowMs) {
  using sim::TestPicture;
  const sim::Picture& sent = input.picture;
  const Size size = CanvasOf(sent);
  const double rateHz = std::max<double>(sent.rateCentiHz, 100) / 100;
  const int64_t number = FrameNumber(sent, input.frames, rateHz, nowMs);
  const bool moves = sent.sent.picture == TestPicture::kBox;
  const bool alternates = sent.stereo == sim::Stereo::kFrameSequential;
  const std::string name =
      Printed("sent %d %u %s %d %.2f %lld", static_cast<int>(sent.sent.picture), sent.sent.copy,
              SizeText(size).c_str(), static_cast<int>(sent.stereo), moves ? rateHz : 0,
              static_cast<long long>(moves        ? number
                                     : alternates ? number % 2
                                                  : 0));
  return Keep(name, [&] {
    return BlackWhereItFails(size, [&] {
      Picture picture = moves                                     ? MakeBox(size, rateHz, number)
                        : sent.sent.picture == TestPicture::kFile ? Still(sent.sent, size)
                                                                  : Drawn(sent.sent.picture, size);
      const std::string stereo = StereoFilters(sent.stereo, number);
      return stereo.empty() ? std::move(picture) : Filtered(*picture, stereo);
    });
  });
}

Picture Sources::MakeBox(Size size, double rateHz, int64_t number) {
  const std::string name = SizeText(size) + Printed(" %.2f", rateHz);
  if (name != boxName_) {
    const int border = size.height / 24;
    boxGround_ = Drawn(sim::TestPicture::kBox, size);
    const AVFrame* const ground[] = {boxGround_.get()};
    box_ = std::make_unique<Graph>(
        "[in0]" + Printed(kBoxFilter, rateHz, border, border, 2 * border, border, 2 * border) +
            "[out]",
        ground, rateHz);
    boxName_ = name;
  }
  const AVFrame* const ground[] = {boxGround_.get()};
  return box_->Run(ground, number);
}

Sources::Made Sources::MakePlayed(const PlayedInput& input) {
  const Bytes file = [&] {
    try {
      return FileBytes(input.held == 0 ? sim::ScreenPath() : sim::HeldScreenPath(input.held));
    } catch (const std::runtime_error&) {
      return Bytes();  // nothing has been decoded yet
    }
  }();
  const auto crc =
      crc32(0, file.data(), static_cast<uInt>(std::min<size_t>(file.size(), 1U << 20)));
  return Keep(Printed("played %zu %08lx", file.size(), crc), [&] {
    return BlackWhereItFails({1920, 1080},
                             [&] { return Filtered(*DecodedScreen(file), "format=gbrp"); });
  });
}

Sources::Made Sources::MakeWritten(const WrittenInput& input, const sim::Window& window) {
  const size_t count = size_t{window.written.w} * window.written.h;
  const auto crc = crc32(0, reinterpret_cast<const Bytef*>(window.pixels),
                         static_cast<uInt>(count * sizeof(window.pixels[0])));
  const std::string name = Printed("written %dx%d %u %08lx", window.written.w, window.written.h,
                                   input.colorStandard, crc);
  return Keep(name, [&] { return PixelsOf(window, input.colorStandard); });
}

Sources::Made Sources::MakeCube(const K2V_VPQ_HDR_3D_LUT_T& table) {
  static constexpr int kSide = 9, kWidth = 27;  // red changes fastest, blue slowest
  constexpr double kFull = 1023;
  const auto crc = crc32(0, reinterpret_cast<const Bytef*>(&table), sizeof(table));
  return Keep(Printed("cube %08lx", crc), [&] {
    return FromColors({kWidth, kWidth}, [&table](int x, int y) -> std::array<uint8_t, 3> {
      const int point = y * kWidth + x;
      const int red = point % kSide, green = point / kSide % kSide, blue = point / kSide / kSide;
      const int row = (red * kSide + green) * kSide + blue;
      const auto level = [row](const uint16_t(&levels)[kSide * kSide * kSide]) {
        return static_cast<uint8_t>(std::lround(levels[row] * 255 / kFull));
      };
      return {level(table.nRed), level(table.nGreen), level(table.nBlue)};
    });
  });
}

}  // namespace panel
