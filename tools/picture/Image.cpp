#include "Image.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

namespace picture {
namespace {

using Codec = std::unique_ptr<AVCodecContext, Deleter<AVCodecContext, avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, Deleter<AVPacket, av_packet_free>>;

Codec Encoder(const AVFrame& picture) {
  const AVCodec* png = avcodec_find_encoder(AV_CODEC_ID_PNG);
  if (png == nullptr) throw std::runtime_error("this libavcodec writes no PNG");
  Codec codec(avcodec_alloc_context3(png));
  codec->width = picture.width;
  codec->height = picture.height;
  codec->pix_fmt = AV_PIX_FMT_RGB24;
  codec->time_base = {1, 1};
  codec->thread_count = 1;
  codec->compression_level = 1;
  Check("PNG", avcodec_open2(codec.get(), png, nullptr));
  return codec;
}

Codec Decoder(const Bytes& file) {
  constexpr uint8_t kPngStart = 0x89;
  const bool isPng = !file.empty() && file[0] == kPngStart;
  const AVCodec* decoder = avcodec_find_decoder(isPng ? AV_CODEC_ID_PNG : AV_CODEC_ID_MJPEG);
  Codec codec(avcodec_alloc_context3(decoder));
  codec->thread_count = 1;
  Check("image", avcodec_open2(codec.get(), decoder, nullptr));
  return codec;
}

}  // namespace

Picture Converted(const AVFrame& picture, AVPixelFormat format) {
  Picture result(av_frame_alloc());
  result->width = picture.width;
  result->height = picture.height;
  result->format = format;
  Check("picture", av_frame_get_buffer(result.get(), 0));
  SwsContext* scaler = sws_getContext(
      picture.width, picture.height, static_cast<AVPixelFormat>(picture.format), picture.width,
      picture.height, format, SWS_BILINEAR | SWS_ACCURATE_RND, nullptr, nullptr, nullptr);
  if (scaler == nullptr) throw std::runtime_error("the picture's format cannot be converted");
  sws_scale(scaler, picture.data, picture.linesize, 0, picture.height, result->data,
            result->linesize);
  sws_freeContext(scaler);
  return result;
}

Bytes ToPng(const AVFrame& picture) {
  const Codec codec = Encoder(picture);
  const Picture rgb = Converted(picture, AV_PIX_FMT_RGB24);
  Check("PNG", avcodec_send_frame(codec.get(), rgb.get()));
  const Packet packet(av_packet_alloc());
  Check("PNG", avcodec_receive_packet(codec.get(), packet.get()));
  return {packet->data, packet->data + packet->size};
}

Picture FromFile(const std::string& path) {
  Bytes file = FileBytes(path);
  const Codec codec = Decoder(file);
  const auto size = static_cast<int>(file.size());
  file.resize(file.size() + AV_INPUT_BUFFER_PADDING_SIZE);
  const Packet packet(av_packet_alloc());
  packet->data = file.data();
  packet->size = size;
  Picture picture(av_frame_alloc());
  Check(path, avcodec_send_packet(codec.get(), packet.get()));
  Check(path, avcodec_send_packet(codec.get(), nullptr));
  Check(path, avcodec_receive_frame(codec.get(), picture.get()));
  return picture;
}

std::string Y4mTitle(const AVFrame& picture, int picturesPerSecond) {
  return Printed("YUV4MPEG2 W%d H%d F%d:1 Ip A1:1 C444 XCOLORRANGE=LIMITED\n", picture.width,
                 picture.height, picturesPerSecond);
}

Bytes ToY4m(const AVFrame& picture) {
  static constexpr char kStart[] = {'F', 'R', 'A', 'M', 'E', '\n'};
  const Picture yuv = Converted(picture, AV_PIX_FMT_YUV444P);
  const int size = av_image_get_buffer_size(AV_PIX_FMT_YUV444P, picture.width, picture.height, 1);
  Bytes bytes(sizeof(kStart) + static_cast<size_t>(size));
  std::copy(std::begin(kStart), std::end(kStart), bytes.begin());
  Check("stream",
        av_image_copy_to_buffer(bytes.data() + sizeof(kStart), size, yuv->data, yuv->linesize,
                                AV_PIX_FMT_YUV444P, picture.width, picture.height, 1));
  return bytes;
}

Bytes FileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + " cannot be read");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace picture
