#include "hdcp2/Protocol.h"

#include "hdcp2/Faults.h"
#include "hdcp2/Receiver.h"
#include "hdcp2/Transmitter.h"

namespace sim::hdcp2 {
namespace {

int Fail(K2V_HDCP2_STATUS_T& status, uint32_t reason) {
  status.eState = K2V_HDCP2_STATE_FAILED;
  status.eReason = reason;
  return K2V_RHAL_ERR_FAIL;
}

uint32_t FirstObstacle(const Hdcp2& receiver, const Source& source, Faults& faults) {
  if (!receiver.loaded || faults.Happens(Hdcp2Fault::kNoKeys)) return K2V_HDCP2_REASON_NO_KEYS;
  return source.speaksHdcp2 ? K2V_HDCP2_REASON_NONE : K2V_HDCP2_REASON_NO_SOURCE;
}

uint32_t DoStep(uint32_t step, Transmitter& asking, const Receiver& answering) {
  switch (step) {
    case K2V_HDCP2_STATE_AKE:
      return asking.ExchangeKeys();
    case K2V_HDCP2_STATE_LOCALITY:
      return asking.CheckLocality();
    case K2V_HDCP2_STATE_AUTHENTICATED:
      asking.SendSessionKey();
      // A picture decrypted with another keystream would be noise.
      return asking.PictureKeystream() == answering.PictureKeystream()
                 ? K2V_HDCP2_REASON_NONE
                 : K2V_HDCP2_REASON_SESSION_KEY;
    default:
      return asking.SettleStreams();
  }
}

int DoSteps(K2V_HDCP2_STATUS_T& status, uint32_t last, Transmitter& asking,
            const Receiver& answering, const Channel& channel) {
  for (uint32_t step = K2V_HDCP2_STATE_AKE; step <= last; ++step) {
    const uint32_t reason = DoStep(step, asking, answering);
    if (channel.IsBroken()) return Fail(status, K2V_HDCP2_REASON_NO_SOURCE);
    if (reason != K2V_HDCP2_REASON_NONE) return Fail(status, reason);
    if (step != K2V_HDCP2_STATE_STREAM || asking.IsRepeater()) status.eState = step;
  }
  return K2V_RHAL_OK;
}

}  // namespace

int Authenticate(const Hdcp2& receiver, Hdcp2Port& port, const Source& source, uint32_t state,
                 Channel& channel) {
  Faults faults(port.order);
  port.status = {};
  int result = K2V_RHAL_OK;
  if (const uint32_t obstacle = FirstObstacle(receiver, source, faults)) {
    result = Fail(port.status, obstacle);
  } else {
    Receiver answering(receiver, port.downstream, faults, channel);
    Transmitter asking(receiver, port, source.streamType, faults, channel);
    result = DoSteps(port.status, state, asking, answering, channel);
  }
  port.order = faults.Left();
  return result;
}

}  // namespace sim::hdcp2
