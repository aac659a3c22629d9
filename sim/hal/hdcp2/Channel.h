// The control channel between a source's transmitter and the receiver. The transmitter writes
// messages, checks whether one is waiting for it, and reads it. Time on the channel is not measured
// but computed from the durations of both sides' work, so that it is the same on every machine;
// the channel nevertheless waits for that time to pass.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>

#include "hdcp2/Messages.h"

namespace sim::hdcp2 {

class Channel {
 public:
  /// Waits until `untilUs` after the beginning. Returns false if the link broke.
  using PassTime = std::function<bool(uint64_t untilUs)>;
  /// Observes all messages on the channel.
  using Watch = std::function<void(View message)>;

  Channel(PassTime passTime, Watch watch);

  /// Sets the recipient of what the transmitter writes.
  void Connect(std::function<void(View message)> receiver);

  // The transmitter's end.

  /// Writes a message. Messages that the receiver had ready before become invalid.
  void Write(const Bytes& message);
  /// Waits for the next message, `limitUs` at most. Returns nothing if none came in time, or one of
  /// another identifier or size.
  std::optional<Bytes> Read(MessageId id, uint64_t limitUs);

  uint64_t NowUs() const { return nowUs_; }
  bool IsBroken() const { return broken_; }

  // The receiver's end.

  /// Makes a message ready `afterUs` after the previous one, or from now if none is waiting.
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
