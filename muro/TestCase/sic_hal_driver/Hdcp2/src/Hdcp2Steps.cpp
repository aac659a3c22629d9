#include "Hdcp2Steps.h"

#include <cstdio>
#include <iterator>

namespace hdcp2 {
namespace {

// Index: K2V_HDCP2_STATE_*.
constexpr const char* kStates[] = {"idle",          "keys exchanged",  "locality checked",
                                   "authenticated", "streams settled", "failed"};

// Index: K2V_HDCP2_REASON_*.
constexpr const char* kReasons[] = {
    "none",
    "no keys loaded",
    "no source with HDCP 2",
    "signature of the certificate",
    "receiver is revoked",
    "H' is wrong",
    "L' is wrong",
    "L' came too late",
    "session key",
    "V' is wrong",
    "M' is wrong",
    "no answer",
    "too many devices or levels",
};

template <std::size_t count>
const char* NameOf(const char* const (&names)[count], uint32_t value) {
  return value < count ? names[value] : "unknown";
}

void PrintId(const uint8_t (&id)[K2V_HDCP2_ID_BYTES]) {
  std::printf("receiver id = %02x%02x%02x%02x%02x\n", id[0], id[1], id[2], id[3], id[4]);
}

}  // namespace

bool Succeeded(const char* call, int result) {
  if (result == 0) return true;
  std::printf("%s NG : %d\n", call, result);
  return false;
}

const char* StateName(uint32_t state) {
  return NameOf(kStates, state);
}

const char* ReasonName(uint32_t reason) {
  return NameOf(kReasons, reason);
}

bool Restart() {
  K2V_RHAL_HDCP2_Release();  // fails if the receiver is not initialised; that is fine
  return Succeeded("K2V_RHAL_HDCP2_Initialize", K2V_RHAL_HDCP2_Initialize());
}

bool Prepare() {
  K2V_HDCP2_KEY_INFO_T info{};
  if (K2V_RHAL_HDCP2_GetKeyInfo(&info) != 0 && !Restart()) return false;
  if (info.bLoaded != 0) return true;
  return Succeeded("K2V_RHAL_HDCP2_LoadKeys", K2V_RHAL_HDCP2_LoadKeys());
}

bool PrintStatus(uint8_t port) {
  K2V_HDCP2_STATUS_T status{};
  if (!Succeeded("K2V_RHAL_HDCP2_GetStatus", K2V_RHAL_HDCP2_GetStatus(port, &status))) return false;
  std::printf("state = %s\n", StateName(status.eState));
  std::printf("reason = %s\n", ReasonName(status.eReason));
  PrintId(status.receiverId);
  std::printf("repeater = %d\n", status.bRepeater);
  std::printf("stream type = %d\n", status.nStreamType);
  std::printf("stored key used = %d\n", status.bPaired);
  std::printf("locality check = %u us\n", static_cast<unsigned>(status.nLocalityUs));
  return true;
}

bool Authenticate(uint8_t port, uint32_t state) {
  if (Succeeded("K2V_RHAL_HDCP2_Authenticate", K2V_RHAL_HDCP2_Authenticate(port, state))) {
    return true;
  }
  K2V_HDCP2_STATUS_T status{};
  if (K2V_RHAL_HDCP2_GetStatus(port, &status) == 0) {
    std::printf("HDCP2 authentication failed : %s\n", ReasonName(status.eReason));
  }
  return false;
}

}  // namespace hdcp2
