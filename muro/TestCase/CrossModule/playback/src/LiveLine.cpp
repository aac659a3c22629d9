#include "LiveLine.h"

#include <unistd.h>

#include <cstdio>
#include <system_error>
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
  try {
    painter_ = std::thread([this] { Keep(); });
  } catch (const std::system_error&) {
    // If no thread can be created, the line is only printed at the end.
  }
}

LiveLine::~LiveLine() {
  const bool live = painter_.joinable();
  if (live) {
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    wake_.notify_one();
    painter_.join();
  }
  Draw(live ? kLineStart : "", "\n");
}

void LiveLine::Keep() {
  std::unique_lock lock(mutex_);
  // The player's first output gets a separate line.
  while (!wake_.wait_for(lock, std::chrono::seconds(1), [this] { return done_; }))
    Draw(kLineStart, "");
}

void LiveLine::Draw(const char* before, const char* after) const {
  std::printf("%s%s, %s%s", before, text_.c_str(), watch_.Elapsed().c_str(), after);
  std::fflush(stdout);
}
