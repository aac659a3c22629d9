// HDCP 2 driver tests, in the order of a bring-up. Each takes a scratch buffer, which it ignores,
// and returns 0 for pass, 1 for fail.
#pragma once

class Hdcp2TestCase {
 public:
  static int Hdcp2Test_Init(char*);
  static int Hdcp2Test_LoadKeys(char*);
  static int Hdcp2Test_VerifyKeys(char*);

  // These prompt for a port.
  static int Hdcp2Test_AKE(char*);
  static int Hdcp2Test_LocalityCheck(char*);
  static int Hdcp2Test_SessionKeyExchange(char*);
  static int Hdcp2Test_ReceiverInfo(char*);
  static int Hdcp2Test_StreamManage(char*);
  static int Hdcp2Test_Authenticate(char*);
};
