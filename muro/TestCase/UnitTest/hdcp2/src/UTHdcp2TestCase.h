// HDCP 2 unit tests: known answers of the primitives, misuse, and refusals by the receiver. Each
// takes a scratch buffer, which it ignores, and returns 0 for pass, 1 for fail.
#pragma once

class UTHdcp2TestCase {
 public:
  static int UTHdcp2Test_Init(char*);

  // Known answers.
  static int UTHdcp2Test_Sha256(char*);
  static int UTHdcp2Test_HmacSha256(char*);
  static int UTHdcp2Test_AesCtr(char*);
  static int UTHdcp2Test_RsaOaep(char*);
  static int UTHdcp2Test_RsaSignature(char*);
  static int UTHdcp2Test_Random(char*);

  // The key store, misuse and refusals.
  static int UTHdcp2Test_KeyStore(char*);
  static int UTHdcp2Test_NullBuffers(char*);
  static int UTHdcp2Test_WrongLengths(char*);
  static int UTHdcp2Test_WithoutKeys(char*);
  static int UTHdcp2Test_RevokedReceiver(char*);
};
