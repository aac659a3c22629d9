// A thread that does one job after the other.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace sim {

class Worker {
 public:
  Worker();
  /// Does what waits and ends.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Appends a job to the queue.
  void Post(std::function<void()> job);
  /// Waits until there is nothing left to do. A job of the worker itself does not wait.
  void Drain();

 private:
  void Run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> jobs_;
  bool busy_ = false;
  bool ending_ = false;
  std::thread thread_;  // last, so that it finds everything else in place
};

}  // namespace sim
