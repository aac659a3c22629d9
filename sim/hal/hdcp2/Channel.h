// The control channel between a source's transmitter and the receiver. The transmitter writes
// messages, looks whether one waits for it, and reads that. Time on the channel is counted by what
// both sides take for their work, not measured, so that it is the same on every machine; it passes
// for real all the same.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>

#include "hdcp2/Messages.h"

namespace sim::hdcp2 {

class Channel {
 public:
  /// Lets time pass up to `untilUs` after the beginning. Returns false when the link broke.
  using PassTime = std::function<bool(uint64_t untilUs)>;
  /// Takes what goes over the channel, for those who watch it.
  using Watch = std::function<void(View message)>;

  Channel(PassTime passTime, Watch watch);

  /// Who gets what the transmitter writes.
  void Connect(std::function<void(View message)> receiver);

  // The transmitter's end.

  /// Writes a message. What the receiver had ready before is not valid any more.
  void Write(const Bytes& message);
  /// Waits for the next message, `limitUs` at most. Nothing when none came in time, or one of
  /// another identifier or size.
  std::optional<Bytes> Read(MessageId id, uint64_t limitUs);

  uint64_t NowUs() const { return nowUs_; }
  bool IsBroken() const { return broken_; }

  // The receiver's end.

  /// Makes a message ready so long after the one before, or after now.
  void Answer(Bytes message, uint64_t afterUs);

 private:
  struct Waiting {
    uint64_t readyUs;
    Bytes message;
  };

  void WaitUntil(uint64_t us);

  const PassTime passTime_;
  const Watch watch_;
  std::function<void(View)> receiver_;
  std::deque<Waiting> waiting_;
  uint64_t nowUs_ = 0;
  bool broken_ = false;
};

}  // namespace sim::hdcp2
