#include "HdmiSteps.h"

#include <unistd.h>

#include <array>

#include "ConsoleInput.h"
#include "InfoFrameText.h"
#include "TestCase/sic_video/HdmiEdid.h"

namespace hdmi_steps {
namespace {

constexpr char kRule[] = "====================================================";
constexpr useconds_t kStatePeriodUs = 100'000;
constexpr int kStatePolls = 300;
constexpr unsigned kSignalSettleS = 1;

bool StoreAndRaise(uint8_t port) {
  std::printf(
      "3. K2V_RHAL_VFE_HDMI_WriteEDID & K2V_RHAL_VFE_HDMI_WriteHDCP & "
      "K2V_RHAL_VFE_HDMI_EnableHPD (port%d) \n",
      port);
  return Succeeded("K2V_RHAL_VFE_HDMI_WriteEDID",
                   K2V_RHAL_VFE_HDMI_WriteEDID(port, HdmiEdid(port))) &&
         Succeeded("K2V_RHAL_VFE_HDMI_WriteHDCP",
                   K2V_RHAL_VFE_HDMI_WriteHDCP(port, HdcpTestData())) &&
         Succeeded("K2V_RHAL_VFE_HDMI_EnableHPD", K2V_RHAL_VFE_HDMI_EnableHPD());
}

constexpr char kGetConnectionState[] = "K2V_RHAL_VFE_HDMI_GetConnectionState";

/// The port's connection state, read without printing a step. Empty, after the result line, if the
/// call fails.
std::optional<bool> ReadConnectionState(uint8_t port) {
  uint8_t connected = 0;
  const int result = K2V_RHAL_VFE_HDMI_GetConnectionState(port, &connected);
  if (!Succeeded(kGetConnectionState, result)) return {};
  return connected != 0;
}

bool AskForCable(uint8_t port) {
  uint8_t connected = 0;
  const auto read = [&] { return K2V_RHAL_VFE_HDMI_GetConnectionState(port, &connected); };
  if (!PortStep(4, kGetConnectionState, port, read)) return false;
  if (connected != 0) return true;
  std::printf("Please Connect HDMI Cable to port%d\n", port);
  return AwaitConnectionState(port, true).has_value();
}

bool PrintClock(uint8_t port) {
  K2V_HAL_VFE_HDMI_CLOCK_STATUS_T status{};
  const auto read = [&] { return K2V_RHAL_VFE_HDMI_GetClockStatus(port, &status); };
  if (!PortStep(5, "K2V_RHAL_VFE_HDMI_GetClockStatus", port, read)) return false;
  PrintClockStatus(status);
  return true;
}

}  // namespace

void PrintTitle(const char* underTest) {
  std::printf("\n%s\n= Test %s \n%s\n", kRule, underTest, kRule);
}

bool Fail(const char* reason) {
  std::printf("Result : failed - %s\n", reason);
  return false;
}

bool Succeeded(const char* call, int result) {
  if (result != 0) std::printf("Result : failed - %s failed\n", call);
  return result == 0;
}

bool Initialize() {
  return Step(1, "K2V_RHAL_VFE_HDMI_Initialize", K2V_RHAL_VFE_HDMI_Initialize);
}

bool InitializeAndOpen() {
  return Initialize() && Step(2, "K2V_RHAL_VFE_HDMI_Open", K2V_RHAL_VFE_HDMI_Open);
}

bool Connect(int number, uint8_t port) {
  return PortStep(number, "K2V_RHAL_VFE_HDMI_Connect", port,
                  [=] { return K2V_RHAL_VFE_HDMI_Connect(port); });
}

bool PrintConnectionState(int number, uint8_t port) {
  uint8_t connected = 0;
  const auto read = [&] { return K2V_RHAL_VFE_HDMI_GetConnectionState(port, &connected); };
  if (!PortStep(number, kGetConnectionState, port, read)) return false;
  std::printf("Connect State = %d\n", connected);
  return true;
}

std::optional<bool> AwaitConnectionState(uint8_t port, bool wanted) {
  for (int poll = 0; poll < kStatePolls; ++poll) {
    const std::optional<bool> connected = ReadConnectionState(port);
    if (!connected) return {};
    if (*connected == wanted) return true;
    usleep(kStatePeriodUs);
  }
  return false;
}

bool BringUp(uint8_t port) {
  if (!StoreAndRaise(port) || !Connect(4, port) || !AskForCable(port)) return false;
  sleep(kSignalSettleS);
  return PrintClock(port);
}

const uint8_t* HdcpTestData() {
  static constexpr auto kData = [] {
    std::array<uint8_t, K2V_HDMI_HDCP_BYTES> data{};
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 7 + 1);
    return data;
  }();
  return kData.data();
}

uint8_t get_port() {
  int port = 0;
  do {
    console::Prompt("\nwhich port to test (0~3) ? ");
  } while (_get_number_with_range(&port, 0, 3, 10) != 0);
  return static_cast<uint8_t>(port);
}

}  // namespace hdmi_steps
