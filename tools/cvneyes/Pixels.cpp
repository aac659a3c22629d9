#include "Pixels.h"

#include <algorithm>
#include <iterator>

#include "Image.h"

namespace eyes {
namespace {

constexpr int kPlaneOfFrame[] = {2, 0, 1};  // red, green and blue in planar GBR

/// Luma with the weights of BT.709, in units of 1/65536.
uint8_t LumaOf(unsigned red, unsigned green, unsigned blue) {
  return static_cast<uint8_t>((13933 * red + 46871 * green + 4732 * blue + 32768) >> 16);
}

}  // namespace

void FillLuma(Pixels& pixels) {
  const auto& [red, green, blue] = pixels.planes;
  pixels.luma.resize(pixels.Count());
  for (size_t i = 0; i < pixels.luma.size(); ++i)
    pixels.luma[i] = LumaOf(red[i], green[i], blue[i]);
}

Pixels ToPixels(const AVFrame& frame, int width, int height) {
  const picture::Picture rgb = picture::Filtered(
      frame, picture::Printed("scale=%d:%d:flags=area+accurate_rnd+full_chroma_int,format=gbrp",
                              width, height));
  Pixels pixels;
  pixels.width = width;
  pixels.height = height;
  for (size_t plane = 0; plane < std::size(kPlaneOfFrame); ++plane) {
    pixels.planes[plane].resize(pixels.Count());
    const int source = kPlaneOfFrame[plane];
    for (int y = 0; y < height; ++y) {
      std::copy_n(rgb->data[source] + std::ptrdiff_t{y} * rgb->linesize[source], width,
                  &pixels.planes[plane][pixels.At(0, y)]);
    }
  }
  FillLuma(pixels);
  return pixels;
}

Pixels ToPixels(const AVFrame& frame) {
  return ToPixels(frame, frame.width, frame.height);
}

picture::Picture ToFrame(const Pixels& pixels) {
  picture::Picture frame(av_frame_alloc());
  frame->width = pixels.width;
  frame->height = pixels.height;
  frame->format = AV_PIX_FMT_GBRP;
  picture::Check("picture", av_frame_get_buffer(frame.get(), 0));
  for (size_t plane = 0; plane < std::size(kPlaneOfFrame); ++plane) {
    const int target = kPlaneOfFrame[plane];
    for (int y = 0; y < pixels.height; ++y) {
      std::copy_n(&pixels.planes[plane][pixels.At(0, y)], pixels.width,
                  frame->data[target] + std::ptrdiff_t{y} * frame->linesize[target]);
    }
  }
  return frame;
}

Rgb MeanOf(const Pixels& pixels, const Region& part) {
  Rgb mean = {};
  for (size_t plane = 0; plane < mean.size(); ++plane) {
    uint64_t sum = 0;
    for (int y = part.y; y < part.y + part.h; ++y) {
      const uint8_t* line = &pixels.planes[plane][pixels.At(part.x, y)];
      for (int x = 0; x < part.w; ++x) sum += line[x];
    }
    mean[plane] = static_cast<double>(sum) / (part.w * part.h);
  }
  return mean;
}

}  // namespace eyes
