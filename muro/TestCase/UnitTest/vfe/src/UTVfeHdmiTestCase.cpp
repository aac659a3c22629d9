#include "UTVfeHdmiTestCase.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>

#include "HdmiSteps.h"
#include "TestCase/sic_video/HdmiEdid.h"
#include "k2v/vfe_hdmi.h"

namespace {

using namespace hdmi_steps;

constexpr uint8_t kPort = 0;  // of the tests that do not prompt for one
constexpr unsigned kObservePinS = 5;

using Edid = std::array<uint8_t, K2V_HDMI_EDID_BYTES>;
using HdcpData = std::array<uint8_t, K2V_HDMI_HDCP_BYTES>;

/// A test of one query of the chip: the value is printed, but not judged.
int RunQuery(const char* title, const char* call, int (*query)(), const char* format) {
  return Run(title, [=] {
    if (!Initialize()) return false;
    std::printf("2. %s\n", call);
    std::printf("%s = %d\n", format, query());
    return true;
  });
}

bool ReadEdid(int number, Edid& edid) {
  return Step(number, "K2V_RHAL_VFE_HDMI_ReadEDID",
              [&] { return K2V_RHAL_VFE_HDMI_ReadEDID(kPort, edid.data()); });
}

bool CompareEdid(const Edid& edid) {
  std::puts("6. compare edid");
  if (std::memcmp(edid.data(), HdmiEdid(kPort), edid.size()) == 0) return true;
  return Fail("compare edid failed");
}

bool ReadHdcp(HdcpData& data) {
  return Step(3, "K2V_RHAL_VFE_HDMI_ReadHDCP",
              [&] { return K2V_RHAL_VFE_HDMI_ReadHDCP(kPort, data.data()); });
}

bool ReadBackHdcp(HdcpData& data) {
  std::puts("5. K2V_RHAL_VFE_HDMI_ReadHDCP & check data");
  const int result = K2V_RHAL_VFE_HDMI_ReadHDCP(kPort, data.data());
  if (!Succeeded("K2V_RHAL_VFE_HDMI_ReadHDCP", result)) return false;
  if (std::memcmp(data.data(), HdcpTestData(), data.size()) == 0) return true;
  return Fail("check data failed");
}

bool RefusesNullHdcp() {
  std::puts("6. K2V_RHAL_VFE_HDMI_WriteHDCP with NULL buffer");
  if (K2V_RHAL_VFE_HDMI_WriteHDCP(kPort, nullptr) != 0) return true;
  return Fail("K2V_RHAL_VFE_HDMI_WriteHDCP should not return API_OK, with NULL buffer");
}

/// Asks the operator to change the cable and waits until the port detects or loses it.
bool FollowsCable(const char* request, bool connected, const char* timeout) {
  std::puts(request);
  const std::optional<bool> followed = AwaitConnectionState(kPort, connected);
  return followed && (*followed || Fail(timeout));
}

}  // namespace

int UTVfeHdmiTestCase::UTVfeHdmiTest_Initialize(char*) {
  return Run("K2V_RHAL_VFE_HDMI_Initialize", Initialize);
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetRxPortCount(char*) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_GetRxPortCnt";
  return RunQuery(kCall, kCall, K2V_RHAL_VFE_HDMI_GetRxPortCnt, "Rx Port Count");
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetARCChannel(char*) {
  return RunQuery(__func__, "K2V_RHAL_VFE_HDMI_GetARCChannel", K2V_RHAL_VFE_HDMI_GetARCChannel,
                  "ARC Channel");
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_IsHDMI20Supported(char*) {
  constexpr char kCall[] = "K2V_RHAL_VFE_HDMI_Get_isHDMI20Supported";
  return RunQuery(kCall, kCall, K2V_RHAL_VFE_HDMI_Get_isHDMI20Supported, "HDMI 2.0 Support");
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_Open(char*) {
  return Run("K2V_RHAL_VFE_HDMI_Open", InitializeAndOpen);
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_Connect(char*) {
  return Run("K2V_RHAL_VFE_HDMI_Connect", [] {
    return InitializeAndOpen() && Connect(3, kPort) &&
           FollowsCable("3.1 Please Connect HDMI Cable to HDMI Port 0", true,
                        "unable to detect HDMI cable connect") &&
           FollowsCable("3.1 Please Disconnect HDMI Cable from HDMI Port 0", false,
                        "unable to detect HDMI cable disconnect");
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_Disconnect(char*) {
  constexpr char kDisconnect[] = "K2V_RHAL_VFE_HDMI_Disconnect";
  return Run(kDisconnect, [=] {
    // The first step is named after the call under test, whatever it does.
    std::printf("1. %s\n", kDisconnect);
    return Succeeded("K2V_RHAL_VFE_HDMI_Initialize", K2V_RHAL_VFE_HDMI_Initialize()) &&
           Step(2, "K2V_RHAL_VFE_HDMI_Open", K2V_RHAL_VFE_HDMI_Open) && Connect(3, kPort) &&
           PortStep(4, kDisconnect, kPort, [] { return K2V_RHAL_VFE_HDMI_Disconnect(kPort); });
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_Close(char*) {
  PrintTitle("K2V_RHAL_VFE_HDMI_Close");
  // Initialising is a precondition of this test; the numbering starts after it.
  const bool passed = Succeeded("K2V_RHAL_VFE_HDMI_Initialize", K2V_RHAL_VFE_HDMI_Initialize()) &&
                      Step(2, "K2V_RHAL_VFE_HDMI_Open", K2V_RHAL_VFE_HDMI_Open) &&
                      Step(3, "K2V_RHAL_VFE_HDMI_Close", K2V_RHAL_VFE_HDMI_Close) &&
                      Step(4, "K2V_RHAL_VFE_HDMI_Uninitialize", K2V_RHAL_VFE_HDMI_Uninitialize);
  if (passed) std::puts("Result : Passed");
  return passed ? 0 : 1;
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_GetConnectionState(char*) {
  return Run("K2V_RHAL_VFE_HDMI_GetConnectionState", [] {
    return InitializeAndOpen() && Connect(3, kPort) && PrintConnectionState(4, kPort);
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_EnableHPD(char*) {
  return Run("K2V_RHAL_VFE_HDMI_EnableHPD", [] {
    if (!Initialize()) return false;
    if (!PortStep(2, "K2V_RHAL_VFE_HDMI_Set_HotPlug", kPort,
                  [] { return K2V_RHAL_VFE_HDMI_Set_HotPlug(kPort, 0); })) {
      return false;
    }
    std::puts("3. Connect HDMI cable to Port 0, and check the HPD signal (Pin 19)");
    sleep(kObservePinS);
    if (!Step(4, "K2V_RHAL_VFE_HDMI_EnableHPD", K2V_RHAL_VFE_HDMI_EnableHPD)) return false;
    sleep(kObservePinS);
    return true;
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_ReadEDID(char*) {
  return Run("K2V_RHAL_VFE_HDMI_ReadEDID", [] {
    Edid edid{};
    return InitializeAndOpen() && ReadEdid(3, edid);
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_WriteEDID(char*) {
  constexpr char kWrite[] = "K2V_RHAL_VFE_HDMI_WriteEDID";
  return Run(kWrite, [=] {
    Edid edid{};
    return InitializeAndOpen() && ReadEdid(3, edid) &&
           Step(4, kWrite, [] { return K2V_RHAL_VFE_HDMI_WriteEDID(kPort, HdmiEdid(kPort)); }) &&
           ReadEdid(5, edid) && CompareEdid(edid);
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_ReadHDCP(char*) {
  return Run("K2V_RHAL_VFE_HDMI_ReadHDCP", [] {
    HdcpData data{};
    return InitializeAndOpen() && ReadHdcp(data);
  });
}

int UTVfeHdmiTestCase::UTVfeHdmiTest_WriteHDCP(char*) {
  constexpr char kWrite[] = "K2V_RHAL_VFE_HDMI_WriteHDCP";
  return Run(kWrite, [=] {
    HdcpData data{};
    return InitializeAndOpen() && ReadHdcp(data) &&
           Step(4, kWrite, [] { return K2V_RHAL_VFE_HDMI_WriteHDCP(kPort, HdcpTestData()); }) &&
           ReadBackHdcp(data) && RefusesNullHdcp();
  });
}
