// The source's half of an authentication. It has the authority's public key, and no secret of the
// receiver.
#pragma once

#include "hdcp2/Channel.h"
#include "hdcp2/Faults.h"
#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

class Transmitter {
 public:
  /// Authenticates the receiver at the other end of the channel and stores in `port` its status and
  /// the data for pairing. All arguments must outlive the transmitter.
  Transmitter(const Hdcp2& state, Hdcp2Port& port, uint8_t streamType, Faults& faults,
              Channel& channel);

  // The steps, in this order. Each returns a K2V_HDCP2_REASON_*.
  uint32_t ExchangeKeys();
  uint32_t CheckLocality();
  uint32_t SendSessionKey();
  uint32_t SettleStreams();

  bool IsRepeater() const { return repeater_; }

  /// The keystream that encrypts the picture.
  Bytes PictureKeystream() const;

 private:
  uint32_t CheckCertificate(View certificate);
  uint32_t ProveMasterKey(View publicKey, View rxCaps);
  uint32_t TakePairing();
  uint32_t TryLocality();
  uint32_t CheckList(View message);
  bool IsRevoked(View id);

  const Hdcp2& state_;
  Hdcp2Port& port_;
  const uint8_t streamType_;
  Faults& faults_;
  Channel& channel_;
  const Bytes txCaps_ = {2, 0, 0};
  Bytes rtx_, rrx_, rn_, riv_, kd_;
  Key km_{}, ks_{};
  bool repeater_ = false;
};

}  // namespace sim::hdcp2
