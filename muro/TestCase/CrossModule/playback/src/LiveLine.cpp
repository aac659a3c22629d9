#include "LiveLine.h"

#include <unistd.h>

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

constexpr char kLineStart[] = "\r\033[K";

}  // namespace

std::string Stopwatch::Elapsed() const {
  using std::chrono::duration_cast;
  const auto passed = std::chrono::steady_clock::now() - start_;
  const long long seconds = duration_cast<std::chrono::seconds>(passed).count();
  char text[32];
  std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60,
                seconds % 60);
  return text;
}

LiveLine::LiveLine(std::string text) : text_(std::move(text)) {
  if (isatty(STDOUT_FILENO) == 0) return;
  painter_ = std::jthread([this](const std::stop_token& stop) { Keep(stop); });
}

LiveLine::~LiveLine() {
  const bool live = painter_.joinable();
  if (live) {
    painter_.request_stop();
    painter_.join();
  }
  Draw(live ? kLineStart : "", "\n");
}

void LiveLine::Keep(const std::stop_token& stop) const {
  std::mutex mutex;
  std::condition_variable_any wake;
  std::unique_lock lock(mutex);
  // What the player says at its start has a line of its own.
  while (!wake.wait_for(lock, stop, std::chrono::seconds(1), [&] { return stop.stop_requested(); }))
    Draw(kLineStart, "");
}

void LiveLine::Draw(const char* before, const char* after) const {
  std::printf("%s%s, %s%s", before, text_.c_str(), watch_.Elapsed().c_str(), after);
  std::fflush(stdout);
}
