// A thread that runs one job at a time, in order.
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
  /// Runs the waiting jobs and ends the thread.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Appends a job to the queue.
  void Post(std::function<void()> job);
  /// Waits until all jobs are done. Does not wait if called by a job of the same worker.
  void Drain();

 private:
  void Run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> jobs_;
  bool busy_ = false;
  bool ending_ = false;
  std::thread thread_;  // last, so that everything else is initialised when it starts
};

}  // namespace sim
