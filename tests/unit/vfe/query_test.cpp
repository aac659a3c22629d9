// HDMI tests that make a single query.
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

#include "VfeHdmiTestCase.h"
#include "VfePlay.h"
#include "k2v/vfe_hdmi.h"

namespace {

std::optional<uint32_t> depthCode;  // the depth reported by the HAL instead of that of its source

}  // namespace

extern "C" {

int __real_K2V_RHAL_VFE_HDMI_GetColorDepth(uint8_t port, uint32_t* depth);

int __wrap_K2V_RHAL_VFE_HDMI_GetColorDepth(uint8_t port, uint32_t* depth) {
  if (!depthCode) return __real_K2V_RHAL_VFE_HDMI_GetColorDepth(port, depth);
  *depth = *depthCode;
  return 0;
}
}

namespace {

using namespace vfe;
using T = VfeHdmiMUROTestCase;

void BringUp(uint8_t port) {
  K2V_RHAL_VFE_HDMI_Initialize();
  K2V_RHAL_VFE_HDMI_Open();
  K2V_RHAL_VFE_HDMI_EnableHPD();
  K2V_RHAL_VFE_HDMI_Connect(port);
}

TEST(HdmiQueries, PrintTheResultOfTheHal) {
  BringUp(0);
  K2V_RHAL_VFE_HDMI_Connect(1);
  const struct {
    TestFunction test;
    const char* answers;
    const char* line;
  } kCases[] = {
      {T::VfeHdmiMUROTest_GetRxPortCnt, "", "VfeHdmiMUROTest_GetRxPortCnt = 4\n"},
      {T::VfeHdmiMUROTest_GetIsConnected, "0\n", "VfeHdmiMUROTest_GetIsConnected(0) = 1\n"},
      {T::VfeHdmiMUROTest_GetIsConnected, "3\n", "VfeHdmiMUROTest_GetIsConnected(3) = 0\n"},
      {T::VfeHdmiMUROTest_GetIsConnected, "4\n", "VfeHdmiMUROTest_GetIsConnected(4) = 0\n"},
      {T::VfeHdmiMUROTest_isHDMI20Supported, "", "VfeHdmiMUROTest_isHDMI20Supported = 1\n"},
      {T::VfeHdmiMUROTest_HDCP_Version, "0\n", "VfeHdmiMUROTest_HDCP_Version(0) = 2\n"},
      {T::VfeHdmiMUROTest_HDCP_Version, "1\n", "VfeHdmiMUROTest_HDCP_Version(1) = 1\n"},
      {T::VfeHdmiMUROTest_GetLogicalPort, "", "VfeHdmiMUROTest_GetLogicalPort = 0\n"},
      {T::VfeHdmiMUROTest_GetColorDepth, "0\n", "VfeHdmiMUROTest_GetColorDepth(0) = 10 Bit\n"},
      {T::VfeHdmiMUROTest_GetColorDepth, "1\n", "VfeHdmiMUROTest_GetColorDepth(1) = 8 Bit\n"},
      {T::VfeHdmiMUROTest_IsHDCP22Supported, "3\n", "VfeHdmiMUROTest_IsHDCP22Supported = 1\n"},
      {T::VfeHdmiMUROTest_IsHDCP22Supported, "4\n", "VfeHdmiMUROTest_IsHDCP22Supported = 0\n"},
      {T::VfeHdmiMUROTest_getHDCPReceiverId, "", "ReceiverId=[9c, 53, b4, 2d, 6a]\n"},
      {T::VfeHdmiMUROTest_getHDCPKSV, "1\n", "VfeHdmiMUROTest_getHDCPKSV = [35, a6, 5c, c9, 9a]\n"},
      {T::VfeHdmiMUROTest_getHDCPKSV, "2\n", "VfeHdmiMUROTest_getHDCPKSV = [0, 0, 0, 0, 0]\n"},
  };
  const std::string ports = "Input port: 0(HDMI1); 1(HDMI2); 2(HDMI3); 3(HDMI4);\n";
  for (const auto& c : kCases) {
    const auto run = PlayTest(c.test, c.answers);
    EXPECT_EQ(run.result, 0) << c.line;
    EXPECT_EQ(run.output, (*c.answers != '\0' ? ports : "") + c.line);
  }
}

TEST(HdmiQueries, PrintEveryColourDepth) {
  const struct {
    uint32_t code;
    const char* line;
  } kCases[] = {
      {0, "VfeHdmiMUROTest_GetColorDepth(2) = 8 Bit\n"},
      {1, "VfeHdmiMUROTest_GetColorDepth(2) = 10 Bit\n"},
      {2, "VfeHdmiMUROTest_GetColorDepth(2) = 12 Bit\n"},
      {3, "VfeHdmiMUROTest_GetColorDepth(2) = 16 Bit\n"},
      {4, "VfeHdmiMUROTest_GetColorDepth(2) = 4\n"},
      {UINT32_MAX, "VfeHdmiMUROTest_GetColorDepth(2) = -1\n"},
  };
  for (const auto& c : kCases) {
    depthCode = c.code;
    EXPECT_TRUE(PlayTest(T::VfeHdmiMUROTest_GetColorDepth, "2\n").output.ends_with(c.line))
        << c.code;
  }
}

TEST(HdmiQueries, HotPlugChangesTheConnectionState) {
  BringUp(0);
  const auto run = PlayTest(T::VfeHdmiMUROTest_Set_HotPlug, "0\n0\n");
  EXPECT_TRUE(run.output.ends_with("Hotplug: 0(Low); 1(High);\n"));
  EXPECT_TRUE(PlayTest(T::VfeHdmiMUROTest_GetIsConnected, "0\n").output.ends_with("(0) = 0\n"));
  PlayTest(T::VfeHdmiMUROTest_Set_HotPlug, "0\n1\n");
  EXPECT_TRUE(PlayTest(T::VfeHdmiMUROTest_GetIsConnected, "0\n").output.ends_with("(0) = 1\n"));
}

TEST(HdmiQueries, PrintTheEdidWithSixteenBytesPerLine) {
  BringUp(0);
  uint8_t edid[K2V_HDMI_EDID_BYTES];
  for (int i = 0; i < K2V_HDMI_EDID_BYTES; ++i) edid[i] = static_cast<uint8_t>(i);
  K2V_RHAL_VFE_HDMI_WriteEDID(2, edid);
  const auto run = PlayTest(T::VfeHdmiMUROTest_GetEDID, "2\n");
  std::istringstream lines(run.output);
  std::string line;
  std::getline(lines, line);  // the ports
  std::getline(lines, line);
  EXPECT_EQ(line, "VfeHdmiMUROTest_GetEDID = 2");
  std::getline(lines, line);
  EXPECT_EQ(line, "0, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, f, ");
  int rows = 1;
  for (std::string next; std::getline(lines, next); ++rows) line = next;
  EXPECT_EQ(rows, 16);
  EXPECT_EQ(line, "f0, f1, f2, f3, f4, f5, f6, f7, f8, f9, fa, fb, fc, fd, fe, ff, ");
}

}  // namespace
