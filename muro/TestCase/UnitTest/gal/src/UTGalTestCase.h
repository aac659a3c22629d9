// Unit tests of the graphics layer. Each takes a scratch buffer, which it ignores, and passes once
// it has run, whatever the HAL returns.
#pragma once

class UTGalTestCase {
 public:
  static int UTGalTest_Init(char*);
  static int UTGalTest_OsdSplit(char*);
  static int UTGalTest_Finalize(char*);
  static int UTGalTest_Rlink_Init(char*);
  static int UTGalTest_Rlink_PanelOn(char*);
  static int UTGalTest_Rlink_PanelOff(char*);
  static int UTGalTest_Rlink_Finalize(char*);
};
