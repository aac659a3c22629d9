// The HDMI receiver tests that make one HAL query and print its result.
#include <cstdio>
#include <iterator>

#include "ConsoleInput.h"
#include "ReceiverPolling.h"
#include "VfeHdmiTestCase.h"
#include "k2v/vfe_hdmi.h"

namespace {

/// A port as the operator typed it, and as it is passed to the HAL.
struct TypedPort {
  int number = AskPort(kHdmiPortList);
  uint8_t byte = static_cast<uint8_t>(number);
};

void PrintBytes(const char* name, const uint8_t (&bytes)[K2V_HDMI_HDCP_ID_BYTES]) {
  std::printf("%s[%x, %x, %x, %x, %x]\n", name, bytes[0], bytes[1], bytes[2], bytes[3], bytes[4]);
}

}  // namespace

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetRxPortCnt(char*) {
  std::printf("VfeHdmiMUROTest_GetRxPortCnt = %d\n", K2V_RHAL_VFE_HDMI_GetRxPortCnt());
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetIsConnected(char*) {
  const TypedPort port;
  uint8_t connected = 0;
  K2V_RHAL_VFE_HDMI_GetConnectionState(port.byte, &connected);
  std::printf("VfeHdmiMUROTest_GetIsConnected(%d) = %d\n", port.number, connected);
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetEDID(char*) {
  constexpr int kBytesALine = 16;
  const TypedPort port;
  uint8_t edid[K2V_HDMI_EDID_BYTES] = {};
  K2V_RHAL_VFE_HDMI_ReadEDID(port.byte, edid);
  std::printf("VfeHdmiMUROTest_GetEDID = %d\n", port.number);
  for (int i = 0; i < K2V_HDMI_EDID_BYTES; ++i) {
    std::printf("%x, ", edid[i]);
    if (i % kBytesALine == kBytesALine - 1) std::putchar('\n');
  }
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_isHDMI20Supported(char*) {
  std::printf("VfeHdmiMUROTest_isHDMI20Supported = %d\n",
              K2V_RHAL_VFE_HDMI_Get_isHDMI20Supported());
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_HDCP_Version(char*) {
  const TypedPort port;
  std::printf("VfeHdmiMUROTest_HDCP_Version(%d) = %d\n", port.number,
              K2V_RHAL_VFE_HDMI_Get_HDCP_Version(port.byte));
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_Set_HotPlug(char*) {
  const TypedPort port;
  const int level = console::AskNumber("Hotplug: 0(Low); 1(High);\n");
  K2V_RHAL_VFE_HDMI_Set_HotPlug(port.byte, static_cast<uint8_t>(level));
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetLogicalPort(char*) {
  std::printf("VfeHdmiMUROTest_GetLogicalPort = %d\n", K2V_RHAL_VFE_HDMI_GetLogicalPort());
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_GetColorDepth(char*) {
  static constexpr int kBits[] = {8, 10, 12, 16};
  const TypedPort port;
  uint32_t code = 0;
  K2V_RHAL_VFE_HDMI_GetColorDepth(port.byte, &code);
  if (code < std::size(kBits)) {
    std::printf("VfeHdmiMUROTest_GetColorDepth(%d) = %d Bit\n", port.number, kBits[code]);
  } else {
    std::printf("VfeHdmiMUROTest_GetColorDepth(%d) = %d\n", port.number, static_cast<int>(code));
  }
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_IsHDCP22Supported(char*) {
  const TypedPort port;
  std::printf("VfeHdmiMUROTest_IsHDCP22Supported = %d\n",
              K2V_RHAL_VFE_HDMI_isHDCP22Supported(port.byte));
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_getHDCPReceiverId(char*) {
  uint8_t id[K2V_HDMI_HDCP_ID_BYTES] = {};
  K2V_RHAL_VFE_HDMI_getHDCPReceiverId(id);
  PrintBytes("ReceiverId=", id);
  return 0;
}

int VfeHdmiMUROTestCase::VfeHdmiMUROTest_getHDCPKSV(char*) {
  const TypedPort port;
  uint8_t ksv[K2V_HDMI_HDCP_ID_BYTES] = {};
  K2V_RHAL_VFE_HDMI_GetSourceKSVData(port.byte, ksv);
  PrintBytes("VfeHdmiMUROTest_getHDCPKSV = ", ksv);
  return 0;
}
