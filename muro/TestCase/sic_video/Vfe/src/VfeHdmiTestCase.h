// Manual HDMI receiver tests. Each takes a scratch buffer, which it ignores, and returns 0 for
// pass, 1 for fail.
#pragma once

class VfeHdmiMUROTestCase {
 public:
  // Show the signal of a port while cables, ports and timings change.
  static int VfeHdmiMUROTestCase1(char*);
  static int VfeHdmiMUROTestCase2(char*);
  static int VfeHdmiMUROTestCase3(char*);
  static int VfeHdmiMUROTestCase4(char*);
  static int VfeHdmiMURO_SwitchToHDMI(char*);
  static int VfeHdmiMUROTestBackGroundDetect(char*);

  // One HAL query each; in VfeHdmiQueries.cpp.
  static int VfeHdmiMUROTest_GetRxPortCnt(char*);
  static int VfeHdmiMUROTest_GetIsConnected(char*);
  static int VfeHdmiMUROTest_GetEDID(char*);
  static int VfeHdmiMUROTest_isHDMI20Supported(char*);
  static int VfeHdmiMUROTest_HDCP_Version(char*);
  static int VfeHdmiMUROTest_Set_HotPlug(char*);
  static int VfeHdmiMUROTest_GetLogicalPort(char*);
  static int VfeHdmiMUROTest_GetColorDepth(char*);
  static int VfeHdmiMUROTest_IsHDCP22Supported(char*);
  static int VfeHdmiMUROTest_getHDCPReceiverId(char*);
  static int VfeHdmiMUROTest_getHDCPKSV(char*);
};

/// The prompt for an HDMI port.
inline constexpr char kHdmiPortList[] = "Input port: 0(HDMI1); 1(HDMI2); 2(HDMI3); 3(HDMI4);";
