#include "Capture.h"

#include <dlfcn.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>

#include "Image.h"
#include "k2v/vsc.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavdevice/avdevice.h>
#include <libavformat/avformat.h>
}

namespace eyes {
namespace {

using picture::Deleter;
using Input = std::unique_ptr<AVFormatContext, Deleter<AVFormatContext, avformat_close_input>>;
using Codec = std::unique_ptr<AVCodecContext, Deleter<AVCodecContext, avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, Deleter<AVPacket, av_packet_free>>;

int Checked(const std::string& what, int answer) {
  if (answer >= 0) return answer;
  char text[AV_ERROR_MAX_STRING_SIZE] = "";
  av_strerror(answer, text, sizeof(text));
  throw UseError(what + ": " + text);
}

/// A source of pictures that ffmpeg's libraries can read.
class Reader {
 public:
  Reader(const std::string& address, const char* format) {
    const AVInputFormat* const input = format != nullptr ? av_find_input_format(format) : nullptr;
    AVFormatContext* context = nullptr;
    Checked(address, avformat_open_input(&context, address.c_str(), input, nullptr));
    input_.reset(context);
    Checked(address, avformat_find_stream_info(context, nullptr));
    const AVCodec* decoder = nullptr;
    stream_ =
        Checked(address, av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0));
    codec_.reset(avcodec_alloc_context3(decoder));
    codec_->thread_count = 1;
    Checked(address,
            avcodec_parameters_to_context(codec_.get(), context->streams[stream_]->codecpar));
    Checked(address, avcodec_open2(codec_.get(), decoder, nullptr));
  }

  /// The next picture; nullptr at the end. Throws UseError if it is damaged.
  picture::Picture Next() {
    picture::Picture frame(av_frame_alloc());
    for (;;) {
      const int received = avcodec_receive_frame(codec_.get(), frame.get());
      if (received == AVERROR_EOF) return nullptr;
      if (received != AVERROR(EAGAIN)) {
        Checked("capture", received);
        if (frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0)
          throw UseError("damaged picture");
        return frame;
      }
      Send();
    }
  }

 private:
  /// Feeds the decoder the next packet of the stream, or the end of the stream.
  void Send() {
    const Packet packet(av_packet_alloc());
    int read = 0;
    do {
      av_packet_unref(packet.get());
      read = av_read_frame(input_.get(), packet.get());
    } while (read == 0 && packet->stream_index != stream_);
    if (read < 0 && read != AVERROR_EOF) Checked("capture", read);
    if ((packet->flags & AV_PKT_FLAG_CORRUPT) != 0) throw UseError("damaged picture");
    Checked("capture", avcodec_send_packet(codec_.get(), read == 0 ? packet.get() : nullptr));
  }

  Input input_;
  Codec codec_;
  int stream_ = -1;
};

Captures Read(Reader& reader, const std::string& from, const RulesFile& rules) {
  Captures captures;
  const int wanted = rules.skipped + rules.pictures;
  for (int i = 0; i < wanted; ++i) {
    const picture::Picture frame = reader.Next();
    if (frame == nullptr) break;
    if (i < rules.skipped) continue;
    captures.width = frame->width;
    captures.height = frame->height;
    captures.pictures.push_back(ToPixels(*frame, rules.width, rules.height));
  }
  if (captures.pictures.empty()) throw UseError(from + ": no picture");
  return captures;
}

/// The standard output of a shell command, which is waited for on destruction.
class Output {
 public:
  explicit Output(const std::string& command) : pipe_(popen(command.c_str(), "re")) {
    if (pipe_ == nullptr) throw UseError(command + ": " + std::strerror(errno));
  }
  ~Output() { Close(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  std::string Address() const { return "pipe:" + std::to_string(fileno(pipe_)); }

  /// Waits for the command; returns its exit status, or 128 + N if signal N ended it.
  int Close() {
    if (pipe_ == nullptr) return 0;
    const int status = pclose(pipe_);
    pipe_ = nullptr;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

 private:
  std::FILE* pipe_;
};

Captures ReadCommand(const std::string& command, const RulesFile& rules) {
  Output output(command);
  try {
    Reader reader(output.Address(), nullptr);
    return Read(reader, command, rules);
  } catch (const UseError& error) {
    const int status = output.Close();
    if (status == 0) throw;
    throw UseError("'" + command + "' returned no picture, exit status " + std::to_string(status));
  }
}

/// What the panel shows, captured by the HAL. The library is the board's own, loaded when needed.
Captures ReadHal(const RulesFile& rules) {
  constexpr auto kBetween = std::chrono::milliseconds(100);
  void* const library = dlopen("libcvn_k2vhal.so", RTLD_NOW);  // never closed: it may have threads
  if (library == nullptr) throw UseError(std::string("no HAL here: ") + dlerror());
  using CaptureCall = decltype(&K2V_RHAL_VSC_CaptureVideoFrame);
  const auto call = reinterpret_cast<CaptureCall>(dlsym(library, "K2V_RHAL_VSC_CaptureVideoFrame"));
  if (call == nullptr) throw UseError("this HAL cannot capture the panel");
  Captures captures;
  std::vector<uint8_t> bytes(K2V_CAPTURE_BYTES);
  for (int i = 0; i < rules.pictures; ++i) {
    if (i > 0) std::this_thread::sleep_for(kBetween);
    K2V_VSC_CAPTURE_INFO_T info = {bytes.data(), K2V_CAPTURE_BYTES, 0, 0};
    const int result = call(K2V_VIDEO_DDI_DISPLAY_OUTPUT, &info);
    if (result != 0)
      throw UseError("K2V_RHAL_VSC_CaptureVideoFrame NG : " + std::to_string(result));
    captures.width = info.width;
    captures.height = info.height;
    const auto lineBytes = size_t{3} * info.width;
    if (lineBytes == 0 || info.height == 0 || lineBytes * info.height > bytes.size())
      throw UseError("the HAL's capture has no size");
    const picture::Picture frame(av_frame_alloc());
    frame->width = captures.width;
    frame->height = captures.height;
    frame->format = AV_PIX_FMT_RGB24;
    picture::Check("picture", av_frame_get_buffer(frame.get(), 0));
    for (int y = 0; y < captures.height; ++y) {
      std::memcpy(frame->data[0] + std::ptrdiff_t{y} * frame->linesize[0],
                  &bytes[static_cast<size_t>(y) * lineBytes], lineBytes);
    }
    captures.pictures.push_back(ToPixels(*frame, rules.width, rules.height));
  }
  return captures;
}

/// The libavdevice format that a source names before a colon; nullptr if it names none.
const char* DeviceOf(const std::string& from) {
  for (const char* device : {"v4l2", "lavfi"}) {
    if (from.starts_with(std::string(device) + ":")) return device;
  }
  return nullptr;
}

}  // namespace

Captures Capture(const std::string& from, const RulesFile& rules) {
  constexpr std::string_view kCommand = "command:";
  if (from.empty()) throw UseError("no capture source; use --from, or 'from' in the rules");
  if (from.starts_with(kCommand)) return ReadCommand(from.substr(kCommand.size()), rules);
  if (from == "hal") return ReadHal(rules);
  const char* const device = DeviceOf(from);
  if (device != nullptr) avdevice_register_all();
  Reader reader(device != nullptr ? from.substr(from.find(':') + 1)
                : from == "-"     ? "pipe:0"
                                  : from,
                device);
  return Read(reader, from, rules);
}

Pixels PictureOf(const std::string& path) {
  try {
    return ToPixels(*picture::FromFile(path));
  } catch (const std::runtime_error& error) {
    throw UseError(error.what());
  }
}

}  // namespace eyes
