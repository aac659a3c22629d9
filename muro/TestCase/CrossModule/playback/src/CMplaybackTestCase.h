// Menu entries of the cross-module playback test. Each takes a scratch buffer, which it ignores,
// and returns 0 for pass, 1 for fail.
#pragma once

class CMplaybackTestCase {
 public:
  // Board preparation.
  static int CMplaybackTest_Env_Init(char*);
  static int CMplaybackTest_Enable_Android(char*);
  static int CMplaybackTest_Mount_USB(char*);
  static int CMplaybackTest_Setup_PCB_IP(char*);

  // Runs of one test case, or of several in sequence.
  static int CMplaybackTest_StartTestCase(char*);
  static int CMplaybackTest_AutoTest_Customized(char*);
  static int CMplaybackTest_AutoTest_AVsync(char*);
  static int CMplaybackTest_AutoTest_RdTestCombo_Tolva3DemoBaord(char*);
  static int CMplaybackTest_AutoTest_All(char*);

  // Golden data.
  static int CMplaybackTest_SetTestCaseGolden(char*);
  static int CMplaybackTest_Overwrite_Local_Golden(char*);
  static int CMplaybackTest_Restore_Local_Golden(char*);

  // Verification of dumps that are on the board.
  static int CMplayback_Verify_One_Module(char*);
  static int CMplayback_Verify_All(char*);
  static int CMplayback_Verify_AVsync(char*);

  // Handling of results.
  static int CMplaybackTest_Package_AllInOne(char*);
  static int CMplayback_Send_Dump_To_TFTP(char*);

  // Settings.
  static int CMplaybackTest_Switch_Usb_Http(char*);
  static int CMplaybackTest_Config_Freerun(char*);
  static int CMplaybackTest_Config_Debug_Level(char*);
  static int CMplaybackTest_Config_SendPassReport(char*);
  static int CMplayback_Config_Report_Send_To(char*);
  static int CMplaybackTest_Config_TFTP_IP(char*);
  static int CMplayback_Config_Auto_Send_DumpData(char*);
};
