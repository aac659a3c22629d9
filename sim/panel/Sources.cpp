#include "Sources.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
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

/// The plain pictures of the frame buffer are taken as small as they can be and enlarged; by
/// TestPicture.
constexpr Size kSmallest[] = {{8, 8}, {256, 8}, {}, {32, 18}, {}, {8, 8}, {8, 8}};

// Crosses the picture in four seconds and climbs through it in seven.
constexpr char kBoxFilter[] =
    "drawtext=fontfile=" CVN_PANEL_FONT
    ":text='%%{eif\\:round(t*%.3f)\\:d\\:8}':fontsize=h/9:fontcolor=black:box=1:boxcolor=white"
    ":boxborderw=%d:x='%d+mod(t/4,1)*(w-tw-%d)':y='%d+mod(t/7,1)*(h-th-%d)'";

std::string SizeText(Size size) {
  return Printed("%dx%d", size.width, size.height);
}

Picture NewRgb(Size size) {
  Picture picture(av_frame_alloc());
  picture->width = size.width;
  picture->height = size.height;
  picture->format = AV_PIX_FMT_GBRP;
  Check("picture", av_frame_get_buffer(picture.get(), 0));
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
  Picture picture = NewRgb(size);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const auto [red, green, blue] =
          frame.RgbAt(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
      const uint8_t samples[] = {green, blue, red};  // the order of the planes
      for (size_t plane = 0; plane < std::size(samples); ++plane)
        picture->data[plane][y * picture->linesize[plane] + x] = samples[plane];
    }
  }
  return picture;
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

/// The whole image, with black beside it where its shape is another.
Picture Still(const sim::SentPicture& sent, Size size) {
  return Filtered(
      *FromFile(sim::ImagePath(sent)),
      Printed("format=gbrp,scale=%d:%d:flags=bicubic:force_original_aspect_ratio=decrease,"
              "pad=%d:%d:-1:-1:color=black",
              size.width, size.height, size.width, size.height));
}

/// The pictures of two eyes, the right one's a little aside.
Picture Stereo(const AVFrame& eye, sim::Stereo packing) {
  const bool beside = packing == sim::Stereo::kSideBySide;
  const char* const half = beside ? "scale=iw/2:ih" : "scale=iw:ih/2";
  return Filtered(eye, std::string("split[left][right];[left]") + half + "[left];[right]" + half +
                           ",scroll=hpos=0.98[right];[left][right]" +
                           (beside ? "hstack" : "vstack"));
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
    uint16_t* line[3];
    for (int plane = 0; plane < 3; ++plane) {
      line[plane] = reinterpret_cast<uint16_t*>(frame->data[plane] +
                                                std::ptrdiff_t{y} * frame->linesize[plane]);
    }
    for (int x = 0; x < frame->width; ++x, ++pixel) {
      line[0][x] = pixel->y;
      line[1][x] = pixel->cb;
      line[2][x] = pixel->cr;
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
  if (const auto* plain = std::get_if<PlainInput>(&input)) return MakePlain(*plain);
  if (const auto* sent = std::get_if<SentInput>(&input)) return MakeSent(sent->picture, nowMs);
  if (const auto* written = std::get_if<WrittenInput>(&input))
    return MakeWritten(*written, board.scaler.windows[written->wid]);
  return MakePlayed();
}

void Sources::DropUnused() {
  std::erase_if(kept_, [](const auto& entry) { return !entry.second.isUsed; });
  for (auto& [name, kept] : kept_) kept.isUsed = false;
}

Sources::Made Sources::MakePlain(const PlainInput& input) {
  const std::string text = Printed("color=0x%02x%02x%02x:s=%dx%d,format=gbrp", input.color.red,
                                   input.color.green, input.color.blue, input.width, input.height);
  return Keep(text, [&] { return Generate(text); });
}

Sources::Made Sources::MakeSent(const sim::Picture& sent, int64_t nowMs) {
  using sim::TestPicture;
  const Size size = CanvasOf(sent);
  const double rateHz = std::max<double>(sent.rateCentiHz, 100) / 100;
  const int64_t ms = sent.heldMs != 0 ? sent.heldMs : nowMs;
  const bool moves = sent.sent.picture == TestPicture::kBox;
  const auto number = moves ? static_cast<int64_t>(static_cast<double>(ms) * rateHz / 1000) : 0;
  const std::string name =
      Printed("sent %d %u %s %d %.2f %lld", static_cast<int>(sent.sent.picture), sent.sent.copy,
              SizeText(size).c_str(), static_cast<int>(sent.stereo), moves ? rateHz : 0,
              static_cast<long long>(number));
  return Keep(name, [&] {
    return BlackWhereItFails(size, [&] {
      Picture picture = moves                                     ? MakeBox(size, rateHz, number)
                        : sent.sent.picture == TestPicture::kFile ? Still(sent.sent, size)
                                                                  : Drawn(sent.sent.picture, size);
      return sent.stereo == sim::Stereo::kNone ? std::move(picture) : Stereo(*picture, sent.stereo);
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

Sources::Made Sources::MakePlayed() {
  const Bytes file = [] {
    try {
      return FileBytes(sim::ScreenPath());
    } catch (const std::runtime_error&) {
      return Bytes();  // nothing is decoded yet
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

bool IsPlaying() {
  const std::filesystem::path path = sim::PlayingPath();
  if (path.empty()) return false;
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool isLocked = flock(fd, LOCK_SH | LOCK_NB) != 0;
  close(fd);
  return isLocked;
}

}  // namespace panel
