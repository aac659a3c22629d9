#include "Camera.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "Image.h"
#include "Panel.h"
#include "core/Events.h"
#include "core/SharedBoard.h"

namespace panel {
namespace {

constexpr char kUsage[] = "camera FILE.png, camera --y4m [--rate N] [--pictures N]";

struct Order {
  std::string file;  // empty: a stream
  int rate = 25;     // pictures per second of the panel's time
  int64_t pictures = INT64_MAX;
};

Order ParseOrder(const sim::Words& words) {
  Order order;
  bool streams = false;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const bool hasNumber = word == "--rate" || word == "--pictures";
    if (hasNumber && i + 1 == words.size()) sim::RefuseWord("missing number after", word, kUsage);
    if (word == "--y4m")
      streams = true;
    else if (word == "--rate")
      order.rate = static_cast<int>(sim::ParseNumber(words[++i], "rate", 1, 120));
    else if (word == "--pictures")
      order.pictures = sim::ParseNumber(words[++i], "number of pictures", 1, INT64_MAX);
    else if (word.starts_with("-") || !order.file.empty())
      sim::RefuseWord("unknown option", word, kUsage);
    else
      order.file = word;
  }
  if (streams != order.file.empty()) sim::RefuseWord("invalid arguments", sim::Join(words), kUsage);
  return order;
}

/// Writes the file completely or not at all.
void WriteFile(const std::string& path, const Bytes& bytes) {
  const std::string next = path + ".part" + std::to_string(getpid());
  std::ofstream file(next, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (file && std::rename(next.c_str(), path.c_str()) == 0) return;
  const std::string reason = std::strerror(errno);
  std::remove(next.c_str());
  throw std::runtime_error(path + " cannot be written: " + reason);
}

/// Returns false if the reader is gone.
bool WriteOut(const uint8_t* bytes, size_t count) {
  while (count > 0) {
    const ssize_t written = write(STDOUT_FILENO, bytes, count);
    if (written < 0 && errno == EPIPE) return false;
    if (written < 0 && errno != EINTR)
      throw std::runtime_error(std::string("standard output: ") + std::strerror(errno));
    if (written < 0) continue;
    bytes += written;
    count -= static_cast<size_t>(written);
  }
  return true;
}

bool WriteOut(const std::string& text) {
  return WriteOut(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

/// Takes each picture at its time on the panel.
class Pace {
 public:
  explicit Pace(int rate) : clock_(sim::BoardLock()->clock), periodNs_(1'000'000'000 / rate) {
    periodNs_ = static_cast<int64_t>(static_cast<double>(periodNs_) / clock_.timeScale);
    dueNs_ = sim::MonotonicNs();
  }

  /// Waits for the next picture's time. If that has already passed, the pictures in between are
  /// skipped, so that the stream shows what the panel shows now.
  void Wait() {
    dueNs_ = std::max(dueNs_ + periodNs_, sim::MonotonicNs() - periodNs_);
    const timespec due = {static_cast<time_t>(dueNs_ / 1'000'000'000),
                          static_cast<long>(dueNs_ % 1'000'000'000)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, nullptr) == EINTR) {
    }
  }

 private:
  sim::Clock clock_;
  int64_t periodNs_;
  int64_t dueNs_;
};

void Stream(const Order& order) {
  std::signal(SIGPIPE, SIG_IGN);
  Panel panel;
  Pace pace(order.rate);
  uint64_t written = 0;
  Bytes bytes;
  if (!WriteOut(Y4mTitle(panel.Look(), order.rate))) return;
  for (int64_t i = 0; i < order.pictures; ++i) {
    const AVFrame& picture = panel.Look();
    if (written != panel.Number()) bytes = ToY4m(picture);
    written = panel.Number();
    if (!WriteOut(bytes.data(), bytes.size())) return;
    if (i + 1 < order.pictures) pace.Wait();
  }
}

}  // namespace

void RunCamera(const sim::Words& words, const cvnsim::BoardFiles& files) {
  const Order order = ParseOrder(words);
  cvnsim::Attach(files);
  if (order.file.empty()) return Stream(order);
  Panel panel;
  WriteFile(order.file, ToPng(panel.Look()));
}

}  // namespace panel
