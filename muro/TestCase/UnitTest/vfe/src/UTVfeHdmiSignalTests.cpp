// The HDMI receiver unit tests for the signal of a port and its content protection.
#include <cstdio>
#include <optional>

#include "HdmiSteps.h"
#include "InfoFrameText.h"
#include "UTVfeHdmiTestCase.h"
#include "k2v/vfe_hdmi.h"

namespace {

using namespace hdmi_steps;

constexpr uint8_t kPort = 0;  // of the tests that do not prompt for one

/// Brings up the port that the operator names. The prompt appears when the port is first needed, so
/// that no operator has to wait for a receiver that cannot even be opened.
std::optional<uint8_t> BringUpAskedPort() {
  if (!InitializeAndOpen()) return {};
  const uint8_t port = get_port();
  return BringUp(port) ? std::optional(port) : std::nullopt;
}

/// Prints the record that `get` returns for the port that the operator names.
template <typename Record, typename Print>
int RunRecord(const char* call, int (*get)(uint8_t, Record*), Print print) {
  return Run(call, [=] {
    const auto port = BringUpAskedPort();
    Record record{};
    if (!port || !PortStep(6, call, *port, [&] { return get(*port, &record); })) return false;
    print(record);
    return true;
  });
}

/// Printer of a single value.
auto Value(const char* name) {
  return [=](auto value) { std::printf("%s = %d\n", name, static_cast<int>(value)); };
}

void PrintId(const char* name, const uint8_t (&id)[K2V_HDMI_HDCP_ID_BYTES]) {
  std::printf("%s = [%x, %x, %x, %x, %x]\n", name, id[0], id[1], id[2], id[3], id[4]);
}

/// The state of the scrambler and the channels, each with its number.
bool PrintScdc(uint8_t port) {
  for (uint32_t type = 0; type <= K2V_HDMI_SCDC_CHANNELS_LOCKED; ++type) {
    uint32_t value = 0;
    const int result = K2V_RHAL_VFE_HDMI_GetScdcStatus(port, type, &value);
    if (!Succeeded("K2V_RHAL_VFE_HDMI_GetScdcStatus", result)) return false;
    std::printf("Scdc Status(%d) = %d\n", static_cast<int>(type), static_cast<int>(value));
  }
  return true;
}

bool CheckTiming(uint8_t port) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_GetPortTimingInfo";
  K2V_HDMI_TIMING_T timing{};
  std::printf("6. %s (port %d, &timinginfo) \n", kCall, port);
  if (!Succeeded(kCall, K2V_RHAL_VFE_HDMI_GetPortTimingInfo(port, &timing))) return false;
  PrintTimingInfo(timing);
  std::printf("7. %s (port%d, NULL) \n", kCall, port);
  if (K2V_RHAL_VFE_HDMI_GetPortTimingInfo(port, nullptr) != 0) return true;
  return Fail(
      "K2V_RHAL_VFE_HDMI_GetPortTimingInfo should not return API_OK, with NULL timing info");
}

}  // namespace

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetClockStatus(char*) {
  return Run("K2V_RHAL_VFE_HDMI_GetClockStatus",
             [] { return InitializeAndOpen() && BringUp(kPort); });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortTimingInfo(char*) {
  const auto steps = [] {
    const auto port = BringUpAskedPort();
    return port && CheckTiming(*port);
  };
  return Run("K2V_RHAL_VFE_HDMI_GetPortTimingInfo", steps, "Result : Pass");
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetColorDepth(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetColorDepth", K2V_RHAL_VFE_HDMI_GetColorDepth,
                   Value("Color Depth"));
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetAVMute(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetAVMute", K2V_RHAL_VFE_HDMI_GetAVMute, Value("AV Mute"));
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetScdcStatus(char*) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_GetScdcStatus";
  return Run(kCall, [=] {
    const auto port = BringUpAskedPort();
    if (!port) return false;
    std::printf("6. %s (port%d) \n", kCall, *port);
    return PrintScdc(*port);
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortDRMInfo(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetDRMInfo", K2V_RHAL_VFE_HDMI_GetDRMInfo,
                   [](const auto& info) { _dump_drm_info(&info); });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortVSIInfo(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetPortVSIInfo", K2V_RHAL_VFE_HDMI_GetPortVSIInfo,
                   PrintVsiInfo);
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortSPDInfo(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetPortSPDInfo", K2V_RHAL_VFE_HDMI_GetPortSPDInfo,
                   PrintSpdInfo);
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortAVIInfo(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetPortAVIInfo", K2V_RHAL_VFE_HDMI_GetPortAVIInfo,
                   PrintAviInfo);
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortPacketInfo(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetPortPacketInfo", K2V_RHAL_VFE_HDMI_GetPortPacketInfo,
                   PrintPacketInfo);
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetPortMultiVSIInfo(char*) {
  return RunRecord("K2V_RHAL_VFE_HDMI_GetPortMultiVSIInfo", K2V_RHAL_VFE_HDMI_GetPortMultiVSIInfo,
                   [](const auto& info) { _dump_multi_vsif(&info); });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_IsHDCP22Supported(char*) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_isHDCP22Supported";
  return Run(kCall, [=] {
    if (!Initialize()) return false;
    std::puts("2. K2V_RHAL_VFE_HDMI_GetRxPortCnt");
    const int count = K2V_RHAL_VFE_HDMI_GetRxPortCnt();
    std::printf("Rx Port Count = %d\n", count);
    if (count < 1 || count > K2V_HDMI_PORT_COUNT) {
      return Fail("K2V_RHAL_VFE_HDMI_GetRxPortCnt out of range");
    }
    for (int port = 0; port < count; ++port) {
      std::printf("3. %s (port%d) \n", kCall, port);
      std::printf("HDCP 2.2 Support = %d\n",
                  K2V_RHAL_VFE_HDMI_isHDCP22Supported(static_cast<uint8_t>(port)));
    }
    return true;
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetHDCPVersion(char*) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_Get_HDCP_Version";
  return Run(kCall, [=] {
    if (!InitializeAndOpen() || !Connect(3, kPort) || !PrintConnectionState(4, kPort)) return false;
    std::printf("5. %s (port%d) \n", kCall, kPort);
    std::printf("HDCP Version = %d\n", K2V_RHAL_VFE_HDMI_Get_HDCP_Version(kPort));
    return true;
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetSourceKSVData(char*) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_GetSourceKSVData";
  return Run(kCall, [=] {
    uint8_t ksv[K2V_HDMI_HDCP_ID_BYTES] = {};
    const auto read = [&] { return K2V_RHAL_VFE_HDMI_GetSourceKSVData(kPort, ksv); };
    if (!InitializeAndOpen() || !BringUp(kPort) || !PortStep(6, kCall, kPort, read)) return false;
    PrintId("Source KSV", ksv);
    return true;
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetHDCPReceiverId(char*) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_getHDCPReceiverId";
  return Run(kCall, [=] {
    uint8_t id[K2V_HDMI_HDCP_ID_BYTES] = {};
    const auto read = [&] { return K2V_RHAL_VFE_HDMI_getHDCPReceiverId(id); };
    if (!InitializeAndOpen() || !BringUp(kPort) || !PortStep(6, kCall, kPort, read)) return false;
    PrintId("Receiver Id", id);
    return true;
  });
}
