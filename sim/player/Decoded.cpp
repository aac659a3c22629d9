#include "Decoded.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/pixdesc.h>
}

namespace player {

namespace {

// The display's codes for kinds of frames and for dynamic ranges.
constexpr int64_t kFieldKind = 1, kFrameKind = 2;
constexpr int64_t kSdr = 0, kHdr10 = 1, kHlg = 2;

constexpr int kChromaticityUnits = 50000;
constexpr int kLuminanceUnits = 10000;
constexpr int kLumaStep = 8;          // every eighth sample of every eighth line is enough
constexpr int kAudibleSample = 1024;  // 30 dB below full scale

int64_t InUnits(AVRational value, int unitsPerOne) {
  return value.den == 0 ? 0 : av_rescale(value.num, unitsPerOne, value.den);
}

uint32_t PictureCrc(const AVFrame& frame, const AVPixFmtDescriptor& format) {
  uLong crc = crc32(0, nullptr, 0);
  const auto pixelFormat = static_cast<AVPixelFormat>(frame.format);
  for (int plane = 0; plane < av_pix_fmt_count_planes(pixelFormat); ++plane) {
    const bool isChroma = plane == 1 || plane == 2;
    const int lines = isChroma ? AV_CEIL_RSHIFT(frame.height, format.log2_chroma_h) : frame.height;
    const int bytes = av_image_get_linesize(pixelFormat, frame.width, plane);
    for (int line = 0; line < lines; ++line) {
      const uint8_t* start = frame.data[plane] + std::ptrdiff_t{line} * frame.linesize[plane];
      crc = crc32(crc, start, static_cast<uInt>(std::max(bytes, 0)));
    }
  }
  return static_cast<uint32_t>(crc);
}

int64_t DynamicRange(AVColorTransferCharacteristic transfer) {
  if (transfer == AVCOL_TRC_SMPTE2084) return kHdr10;
  return transfer == AVCOL_TRC_ARIB_STD_B67 ? kHlg : kSdr;
}

/// The record attached to a frame; null if there is none. The library aligned it.
template <typename Record>
const Record* SideData(const AVFrame& frame, AVFrameSideDataType type) {
  const AVFrameSideData* const data = av_frame_get_side_data(&frame, type);
  const void* const record = data == nullptr ? nullptr : data->data;
  return static_cast<const Record*>(record);
}

void TakeMastering(const AVFrame& frame, FrameValues& values) {
  const auto* const display =
      SideData<AVMasteringDisplayMetadata>(frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA);
  if (display == nullptr) return;
  int64_t* const primaries[3][2] = {{&values.primaryX1, &values.primaryY1},
                                    {&values.primaryX2, &values.primaryY2},
                                    {&values.primaryX3, &values.primaryY3}};
  for (int colour = 0; colour < 3; ++colour) {
    for (int axis = 0; axis < 2; ++axis)
      *primaries[colour][axis] =
          InUnits(display->display_primaries[colour][axis], kChromaticityUnits);
  }
  values.whiteX = InUnits(display->white_point[0], kChromaticityUnits);
  values.whiteY = InUnits(display->white_point[1], kChromaticityUnits);
  values.maxLuminance = InUnits(display->max_luminance, kLuminanceUnits);
  values.minLuminance = InUnits(display->min_luminance, kLuminanceUnits);
}

void TakeLightLevel(const AVFrame& frame, FrameValues& values) {
  const auto* const level =
      SideData<AVContentLightMetadata>(frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL);
  if (level == nullptr) return;
  values.maxCll = level->MaxCLL;
  values.maxFall = level->MaxFALL;
}

}  // namespace

FrameValues PictureFacts(const AVFrame& frame) {
  FrameValues values;
  values.width = frame.width;
  values.height = frame.height;
  values.frameKind = frame.interlaced_frame != 0 ? kFieldKind : kFrameKind;
  values.hdrType = DynamicRange(frame.color_trc);
  values.transfer = frame.color_trc;
  values.matrix = frame.colorspace;
  values.primaries = frame.color_primaries;
  values.fullRange = frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
  TakeMastering(frame, values);
  TakeLightLevel(frame, values);
  const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (format == nullptr) return values;
  values.colourFormat = format->log2_chroma_w + format->log2_chroma_h;
  values.crcDecoded = PictureCrc(frame, *format);
  return values;
}

int MeanLuma(const AVFrame& frame) {
  const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (format == nullptr || (format->flags & AV_PIX_FMT_FLAG_RGB) != 0) return 0;
  const AVComponentDescriptor& luma = format->comp[0];
  if (luma.depth < 8 || luma.depth > 16) return 0;
  int64_t sum = 0;
  int64_t count = 0;
  for (int y = 0; y < frame.height; y += kLumaStep) {
    const uint8_t* line = frame.data[luma.plane] + std::ptrdiff_t{y} * frame.linesize[luma.plane];
    for (int x = 0; x < frame.width; x += kLumaStep, ++count) {
      const uint8_t* sample = line + std::ptrdiff_t{x} * luma.step + luma.offset;
      const int value = luma.depth == 8 ? sample[0] : sample[0] | sample[1] << 8;
      sum += value >> (luma.shift + luma.depth - 8);
    }
  }
  return count == 0 ? 0 : static_cast<int>(sum / count);
}

SoundFacts SoundReader::Take(const AVFrame& frame) {
  const std::span<const int16_t> samples = Convert(frame);
  if (samples.empty()) return {0, false};
  const auto* bytes = reinterpret_cast<const Bytef*>(samples.data());
  const auto size = static_cast<uInt>(samples.size_bytes());
  const bool sounds = std::any_of(samples.begin(), samples.end(), [](int16_t sample) {
    return std::abs(sample) >= kAudibleSample;
  });
  return {static_cast<uint32_t>(crc32(crc32(0, nullptr, 0), bytes, size)), sounds};
}

/// The samples as interleaved 16-bit PCM of the same rate and channels, in `samples_`. Empty if
/// they cannot be converted.
std::span<const int16_t> SoundReader::Convert(const AVFrame& frame) {
  SwrContext* context = converter_.release();
  AVChannelLayout layout = frame.ch_layout;
  const int made =
      swr_alloc_set_opts2(&context, &layout, AV_SAMPLE_FMT_S16, frame.sample_rate, &layout,
                          static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
  converter_.reset(context);
  if (made < 0 || swr_init(context) < 0) return {};
  const std::size_t count = static_cast<std::size_t>(frame.nb_samples) *
                            static_cast<std::size_t>(frame.ch_layout.nb_channels);
  samples_.resize(count / std::size(SampleBlock{}.samples) + 1);
  auto* out = reinterpret_cast<uint8_t*>(samples_.data());
  const int converted =
      swr_convert(context, &out, frame.nb_samples, const_cast<const uint8_t**>(frame.extended_data),
                  frame.nb_samples);
  if (converted < 0) return {};
  return {reinterpret_cast<const int16_t*>(samples_.data()), count};
}

}  // namespace player
