// A line of the console that tells what takes its time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// Time that has passed since this was made, for people: "00:01:23".
class Stopwatch {
 public:
  std::string Elapsed() const;

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// While this lives, a line shows a text and the time that has passed, anew each second. Where
/// standard output is no terminal, one plain line is printed at the end instead.
class LiveLine {
 public:
  explicit LiveLine(std::string text);
  ~LiveLine();
  LiveLine(const LiveLine&) = delete;
  LiveLine& operator=(const LiveLine&) = delete;

 private:
  void Keep();
  void Draw(const char* before, const char* after) const;

  std::string text_;
  Stopwatch watch_;
  std::mutex mutex_;
  std::condition_variable wake_;
  bool done_ = false;
  std::thread painter_;  // only on a terminal
};
