#include "MediaReader.h"

#include <memory>
#include <stdexcept>

#include "Decoded.h"
#include "Screen.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

namespace player {

namespace {

constexpr AVRational kTick90k = {1, 90000};
constexpr AVRational kFileTick = {1, AV_TIME_BASE};
constexpr char kNetworkTimeoutUs[] = "5000000";

/// Deletes a pointer with one of the library's functions, which take its address.
template <typename T, void (*Free)(T**)>
struct Deleter {
  void operator()(T* pointer) const { Free(&pointer); }
};
using Input = std::unique_ptr<AVFormatContext, Deleter<AVFormatContext, avformat_close_input>>;
using Codec = std::unique_ptr<AVCodecContext, Deleter<AVCodecContext, avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, Deleter<AVPacket, av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, Deleter<AVFrame, av_frame_free>>;

[[noreturn]] void Fail(const std::string& location, int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = "";
  av_strerror(error, text, sizeof(text));
  throw std::runtime_error(location + ": " + text);
}

Input Open(const std::string& location) {
  const bool isAddress = location.starts_with("http://");
  AVDictionary* options = nullptr;
  if (isAddress) av_dict_set(&options, "rw_timeout", kNetworkTimeoutUs, 0);
  AVFormatContext* context = nullptr;
  const int opened = avformat_open_input(
      &context, (isAddress ? location : "file:" + location).c_str(), nullptr, &options);
  av_dict_free(&options);
  if (opened < 0) Fail(location, opened);
  Input input(context);
  const int found = avformat_find_stream_info(input.get(), nullptr);
  if (found < 0) Fail(location, found);
  return input;
}

/// One of the file's streams with its decoder. If there is no such stream, it decodes nothing.
class Track {
 public:
  Track(AVFormatContext& input, AVMediaType type) {
    const AVCodec* decoder = nullptr;
    index_ = av_find_best_stream(&input, type, -1, -1, &decoder, 0);
    if (index_ < 0 || decoder == nullptr) return;
    stream_ = input.streams[index_];
    // Pictures and sound share one start, so that their offset is preserved.
    start90k_ = input.start_time == AV_NOPTS_VALUE
                    ? 0
                    : av_rescale_q(input.start_time, kFileTick, kTick90k);
    codec_.reset(avcodec_alloc_context3(decoder));
    if (avcodec_parameters_to_context(codec_.get(), stream_->codecpar) < 0) codec_.reset();
    if (codec_ == nullptr) return;
    codec_->pkt_timebase = stream_->time_base;
    codec_->thread_count = 0;
    if (avcodec_open2(codec_.get(), decoder, nullptr) < 0) codec_.reset();
  }

  bool IsThere() const { return codec_ != nullptr; }
  bool Has(const AVPacket& packet) const { return IsThere() && packet.stream_index == index_; }
  double Tick90k() const { return av_q2d(stream_->time_base) * av_q2d(av_inv_q(kTick90k)); }

  /// A time stamp of this stream in ticks from the file's start; `otherwise` if it is missing.
  int64_t Pts90k(int64_t pts, int64_t otherwise) const {
    if (pts == AV_NOPTS_VALUE) return otherwise;
    return av_rescale_q(pts, stream_->time_base, kTick90k) - start90k_;
  }

  /// Decodes a packet, or with null what is left in the decoder, and passes the frames to `take`.
  template <typename Take>
  void Decode(const AVPacket* packet, AVFrame& frame, Take take) {
    if (!IsThere()) return;
    // A damaged packet gives no frame, but the next one may.
    if (avcodec_send_packet(codec_.get(), packet) < 0) return;
    while (avcodec_receive_frame(codec_.get(), &frame) >= 0) take(frame);
  }

 private:
  int index_ = -1;
  AVStream* stream_ = nullptr;
  int64_t start90k_ = 0;
  Codec codec_;
};

/// Reads a file and passes its contents to the listener.
class Reading {
 public:
  Reading(AVFormatContext& input, MediaListener& listener, Screen* screen)
      : input_(input),
        listener_(listener),
        screen_(screen),
        video_(input, AVMEDIA_TYPE_VIDEO),
        audio_(input, AVMEDIA_TYPE_AUDIO),
        packet_(av_packet_alloc()),
        frame_(av_frame_alloc()) {}

  /// Returns how many frames and blocks were decoded.
  int64_t Run() {
    while (av_read_frame(&input_, packet_.get()) >= 0) {
      if (video_.Has(*packet_)) TakeVideo(packet_.get());
      if (audio_.Has(*packet_)) TakeAudio(packet_.get());
      av_packet_unref(packet_.get());
    }
    TakeVideo(nullptr);
    TakeAudio(nullptr);
    return decoded_;
  }

 private:
  void TakeVideo(const AVPacket* packet) {
    if (packet != nullptr) {
      packetPts90k_ = video_.Pts90k(packet->pts, packetPts90k_);
      listener_.TakePacket(packetPts90k_, packet->size, (packet->flags & AV_PKT_FLAG_KEY) != 0);
    }
    video_.Decode(packet, *frame_, [this](const AVFrame& frame) {
      picturePts90k_ = video_.Pts90k(frame.best_effort_timestamp, picturePts90k_);
      if (screen_ != nullptr) screen_->Show(frame, decoded_);
      listener_.TakePicture(picturePts90k_, video_.Tick90k(), MeanLuma(frame), PictureFacts(frame));
      ++decoded_;
    });
  }

  void TakeAudio(const AVPacket* packet) {
    audio_.Decode(packet, *frame_, [this](const AVFrame& frame) {
      soundPts90k_ = audio_.Pts90k(frame.best_effort_timestamp, soundPts90k_);
      const SoundFacts facts = sound_.Take(frame);
      listener_.TakeSound(soundPts90k_, frame.sample_rate, frame.ch_layout.nb_channels,
                          facts.checksum, facts.sounds);
      ++decoded_;
    });
  }

  AVFormatContext& input_;
  MediaListener& listener_;
  Screen* const screen_;
  Track video_;
  Track audio_;
  Packet packet_;
  Frame frame_;
  SoundReader sound_;
  int64_t packetPts90k_ = 0;
  int64_t picturePts90k_ = 0;
  int64_t soundPts90k_ = 0;
  int64_t decoded_ = 0;
};

}  // namespace

void ReadMedia(const std::string& location, MediaListener& listener, Screen* screen) {
  av_log_set_level(AV_LOG_QUIET);
  const Input input = Open(location);
  if (Reading(*input, listener, screen).Run() == 0)
    throw std::runtime_error(location + ": no video or audio stream that can be decoded");
}

}  // namespace player
