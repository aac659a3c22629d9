#include "Screen.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "media/Screen.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace player {
namespace {

constexpr std::chrono::milliseconds kBetweenPictures{40};  // more would not be seen

}  // namespace

Screen::Screen() : path_(sim::ScreenPath()) {
  if (path_.empty()) return;
  playing_ = open(sim::PlayingPath().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);  // left by the previous playback
  if (playing_ >= 0) flock(playing_, LOCK_EX | LOCK_NB);
}

Screen::~Screen() {
  if (playing_ >= 0) close(playing_);
}

void Screen::Show(const AVFrame& frame, int64_t number) {
  const Clock::time_point now = Clock::now();
  if (playing_ < 0 || (shownAt_ && now - *shownAt_ < kBetweenPictures)) return;
  shownAt_ = now;
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const int size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
  if (size < 0) return;
  const sim::ScreenHeader header = {
      frame.width, frame.height, frame.format, frame.colorspace, frame.color_range, 0, number};
  bytes_.resize(sizeof(header) + static_cast<size_t>(size));
  std::memcpy(bytes_.data(), &header, sizeof(header));
  av_image_copy_to_buffer(bytes_.data() + sizeof(header), size, frame.data, frame.linesize, format,
                          frame.width, frame.height, 1);
  // Readers find the previous picture or this one, never half of it.
  const std::filesystem::path next = path_.string() + ".next";
  std::ofstream file(next, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes_.data()),
             static_cast<std::streamsize>(bytes_.size()));
  file.close();
  if (!file) return;
  std::error_code ignored;
  std::filesystem::rename(next, path_, ignored);
}

}  // namespace player
