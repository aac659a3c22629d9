// HDMI receiver unit tests. Each brings the receiver up step by step, prints every step before its
// call and ends at the first failure, leaving the receiver as it is. It takes a scratch buffer,
// which it ignores, and returns 0 for pass, 1 for fail.
#pragma once

class UTVfeHdmiTestCase {
 public:
  // Bring-up and shutdown.
  static int UTVfeHdmiTest_Initialize(char*);
  static int UTVfeHdmiTest_GetRxPortCount(char*);
  static int UTVfeHdmiTest_GetARCChannel(char*);
  static int UTVfeHdmiTest_IsHDMI20Supported(char*);
  static int UTVfeHdmiTest_Open(char*);
  static int UTVfeHdmiTest_Connect(char*);
  static int UTVfeHdmiTest_Disconnect(char*);
  static int UTVfeHdmiTest_Close(char*);
  static int UTVfeHdmiTest_GetConnectionState(char*);
  static int UTVfeHdmiTest_EnableHPD(char*);

  // Data stored in a port.
  static int UTVfeHdmiTest_ReadEDID(char*);
  static int UTVfeHdmiTest_WriteEDID(char*);
  static int UTVfeHdmiTest_ReadHDCP(char*);
  static int UTVfeHdmiTest_WriteHDCP(char*);

  // The signal of a port; in UTVfeHdmiSignalTests.cpp.
  static int UTVfeHdmiTest_GetClockStatus(char*);
  static int UTVfeHdmiTest_GetPortTimingInfo(char*);
  static int UTVfeHdmiTest_GetColorDepth(char*);
  static int UTVfeHdmiTest_GetAVMute(char*);
  static int UTVfeHdmiTest_GetScdcStatus(char*);
  static int UTVfeHdmiTest_GetPortDRMInfo(char*);
  static int UTVfeHdmiTest_GetPortVSIInfo(char*);
  static int UTVfeHdmiTest_GetPortSPDInfo(char*);
  static int UTVfeHdmiTest_GetPortAVIInfo(char*);
  static int UTVfeHdmiTest_GetPortPacketInfo(char*);
  static int UTVfeHdmiTest_GetPortMultiVSIInfo(char*);
  static int UTVfeHdmiTest_IsHDCP22Supported(char*);
  static int UTVfeHdmiTest_GetHDCPVersion(char*);
  static int UTVfeHdmiTest_GetSourceKSVData(char*);
  static int UTVfeHdmiTest_GetHDCPReceiverId(char*);
};
