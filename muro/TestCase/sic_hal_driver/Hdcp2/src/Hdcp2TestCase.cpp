#include "Hdcp2TestCase.h"

#include <cstdint>
#include <cstdio>
#include <optional>

#include "ConsoleInput.h"
#include "DriverTest.h"
#include "Hdcp2Steps.h"

namespace {

using namespace hdcp2;

/// Prompts for a port. Empty, after a message, for a number outside the HAL's parameter type.
std::optional<uint8_t> AskPort() {
  const int port = console::AskNumber("Input port: 0(HDMI1); 1(HDMI2); 2(HDMI3); 3(HDMI4);\n");
  if (port >= 0 && port <= UINT8_MAX) return static_cast<uint8_t>(port);
  std::printf("HDCP2 port NG : %d\n", port);
  return {};
}

int Verdict(bool passed) {
  return passed ? 0 : 1;
}

/// Prints the public data of the loaded keys.
bool PrintKeyInfo() {
  K2V_HDCP2_KEY_INFO_T info{};
  if (!Succeeded("K2V_RHAL_HDCP2_GetKeyInfo", K2V_RHAL_HDCP2_GetKeyInfo(&info))) return false;
  const auto& id = info.receiverId;
  std::printf("keys loaded = %d, verified = %d\n", info.bLoaded, info.bVerified);
  std::printf("receiver id = %02x%02x%02x%02x%02x, version %d\n", id[0], id[1], id[2], id[3], id[4],
              info.nVersion);
  return true;
}

/// Authenticates up to a state and prints the port's status.
int RunUpTo(uint32_t state) {
  const auto port = AskPort();
  return Verdict(port && Prepare() && Authenticate(*port, state) && PrintStatus(*port));
}

}  // namespace

int Hdcp2TestCase::Hdcp2Test_Init(char*) {
  PrintTraceLine(__func__);
  return Verdict(Restart());
}

int Hdcp2TestCase::Hdcp2Test_LoadKeys(char*) {
  PrintTraceLine(__func__);
  return Verdict(Prepare() && PrintKeyInfo());
}

int Hdcp2TestCase::Hdcp2Test_VerifyKeys(char*) {
  PrintTraceLine(__func__);
  return Verdict(Prepare() && Succeeded("K2V_RHAL_HDCP2_VerifyKeys", K2V_RHAL_HDCP2_VerifyKeys()) &&
                 PrintKeyInfo());
}

int Hdcp2TestCase::Hdcp2Test_AKE(char*) {
  PrintTraceLine(__func__);
  return RunUpTo(K2V_HDCP2_STATE_AKE);
}

int Hdcp2TestCase::Hdcp2Test_LocalityCheck(char*) {
  PrintTraceLine(__func__);
  return RunUpTo(K2V_HDCP2_STATE_LOCALITY);
}

int Hdcp2TestCase::Hdcp2Test_SessionKeyExchange(char*) {
  PrintTraceLine(__func__);
  return RunUpTo(K2V_HDCP2_STATE_AUTHENTICATED);
}

int Hdcp2TestCase::Hdcp2Test_ReceiverInfo(char*) {
  PrintTraceLine(__func__);
  const auto port = AskPort();
  return Verdict(port && Prepare() && PrintKeyInfo() && PrintStatus(*port));
}

int Hdcp2TestCase::Hdcp2Test_StreamManage(char*) {
  PrintTraceLine(__func__);
  const auto port = AskPort();
  if (!port || !Prepare() ||
      !Succeeded("K2V_RHAL_HDCP2_SetRepeater", K2V_RHAL_HDCP2_SetRepeater(1))) {
    return 1;
  }
  const bool passed = Authenticate(*port, K2V_HDCP2_STATE_STREAM) && PrintStatus(*port);
  K2V_RHAL_HDCP2_SetRepeater(0);
  return Verdict(passed);
}

int Hdcp2TestCase::Hdcp2Test_Authenticate(char*) {
  PrintTraceLine(__func__);
  const auto port = AskPort();
  // From the very beginning: independent of the state that an earlier test left.
  return Verdict(port && Restart() && Prepare() &&
                 Succeeded("K2V_RHAL_HDCP2_VerifyKeys", K2V_RHAL_HDCP2_VerifyKeys()) &&
                 Authenticate(*port, K2V_HDCP2_STATE_STREAM) && PrintStatus(*port));
}
