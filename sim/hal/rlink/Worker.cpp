#include "rlink/Worker.h"

#include <utility>

namespace sim {

Worker::Worker() : thread_(&Worker::Run, this) {}

Worker::~Worker() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    changed_.notify_all();
  }
  thread_.join();
}

void Worker::Post(std::function<void()> job) {
  const std::lock_guard lock(mutex_);
  jobs_.push_back(std::move(job));
  changed_.notify_all();
}

void Worker::Drain() {
  if (std::this_thread::get_id() == thread_.get_id()) return;
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return jobs_.empty() && !busy_; });
}

void Worker::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !jobs_.empty(); });
    if (jobs_.empty()) return;
    const std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    busy_ = true;
    lock.unlock();
    job();
    lock.lock();
    busy_ = false;
    changed_.notify_all();
  }
}

}  // namespace sim
