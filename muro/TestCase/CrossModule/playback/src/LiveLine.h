// A console line that shows what the program is busy with.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// Time since this object was created, for people: "00:01:23".
class Stopwatch {
 public:
  std::string Elapsed() const;

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// During the lifetime of this object, a line shows a text and the elapsed time, updated every
/// second. If standard output is not a terminal, one plain line is printed at the end instead.
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
