#include "hdcp2/Channel.h"

#include <algorithm>
#include <utility>

namespace sim::hdcp2 {

Channel::Channel(PassTime passTime, Watch watch)
    : passTime_(std::move(passTime)), watch_(std::move(watch)) {}

void Channel::Connect(std::function<void(View)> receiver) {
  receiver_ = std::move(receiver);
}

void Channel::Write(const Bytes& message) {
  if (broken_) return;
  waiting_.clear();
  watch_(message);
  receiver_(message);
}

std::optional<Bytes> Channel::Read(MessageId id, uint64_t limitUs) {
  const uint64_t deadlineUs = nowUs_ + limitUs;
  const bool comesInTime = !waiting_.empty() && waiting_.front().readyUs <= deadlineUs;
  WaitUntil(comesInTime ? std::max(nowUs_, waiting_.front().readyUs) : deadlineUs);
  if (broken_ || !comesInTime) return std::nullopt;
  Bytes message = std::move(waiting_.front().message);
  waiting_.pop_front();
  watch_(message);
  if (!IsMessage(message, id)) return std::nullopt;
  return message;
}

void Channel::Answer(Bytes message, uint64_t afterUs) {
  const uint64_t beginUs = waiting_.empty() ? nowUs_ : waiting_.back().readyUs;
  waiting_.push_back({beginUs + afterUs, std::move(message)});
}

void Channel::WaitUntil(uint64_t us) {
  nowUs_ = us;
  if (!passTime_(us)) broken_ = true;
}

}  // namespace sim::hdcp2
