#include "Progress.h"

#include <algorithm>

namespace endurance {
namespace {

constexpr std::size_t kLooks = 400;

}  // namespace

Progress::Progress(NightBoard& board, std::size_t total, Tenths& tenths)
    : board_(board), total_(total), tenths_(tenths) {}

void Progress::Done(std::size_t count) {
  done_ += count;
  const std::size_t index = std::min((done_ - 1) * kTenths / total_, kTenths - 1);
  if (index_ == 0 && index > 0) files_ = board_.TemporaryFiles();
  index_ = index;
  Tenth& tenth = tenths_[index];
  const auto now = Clock::now();
  tenth.tests += count;
  tenth.seconds += std::chrono::duration<double>(now - since_).count();
  since_ = now;
  const bool isFirst = tenth.samples.empty();
  if (!isFirst && done_ - lookedAt_ < total_ / kLooks) return;
  lookedAt_ = done_;
  const Sample sample = board_.LookAtHarness();
  // After its last test, a runner may have ended already.
  if (isFirst || sample[kResident] > 0) tenth.samples.push_back(sample);
}

std::vector<std::string> Progress::LeftFiles() const {
  std::vector<std::string> left;
  for (const std::string& file : board_.TemporaryFiles()) {
    if (!files_.contains(file)) left.push_back("left in /tmp: " + file);
  }
  return left;
}

}  // namespace endurance
