// The receiver's half of an authentication. It has its private key, and no secret of the source.
#pragma once

#include "hdcp2/Channel.h"
#include "hdcp2/Faults.h"
#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

class Receiver {
 public:
  /// Answers the messages on the channel. All arguments must outlive the receiver.
  Receiver(const Hdcp2& state, const Hdcp2Downstream& downstream, Faults& faults, Channel& channel);

  /// The keystream that decrypts the picture; empty until the session key has arrived.
  Bytes PictureKeystream() const;

 private:
  void Take(View message);
  void TakeInit(View message);
  void TakeNewKm(View message);
  void TakeStoredKm(View message);
  void TakeLocality(View message);
  void TakeSessionKey(View message);
  void TakeAck(View message);
  void TakeStreams(View message);

  void AnswerHPrime(uint64_t usualUs, uint64_t lateUs);
  void SendList();
  Hash Spoilt(Hash hash, Hdcp2Fault fault) const;
  uint64_t Delay(Hdcp2Fault lateness, uint64_t usualUs, uint64_t lateUs) const;

  const Hdcp2& state_;
  const Hdcp2Downstream& downstream_;
  Faults& faults_;
  Channel& channel_;
  Bytes rtx_, txCaps_, rrx_, rxCaps_, rn_, riv_, kd_;
  Key km_{}, ks_{};
  Hash list_{};  // V of the list that was sent
  bool listAccepted_ = false;
};

}  // namespace sim::hdcp2
