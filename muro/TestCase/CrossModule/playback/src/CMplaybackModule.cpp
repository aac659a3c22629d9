#include "CMplaybackModule.h"

#include "../../stages/src/Settings.h"
#include "CMplaybackTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "Playback Test Environment init", "unzip GST lib & golden & disable Android",
     CMplaybackTestCase::CMplaybackTest_Env_Init, true, kAsks | kDisruptive},
    {1, "Playback AutoTest - Customized", "Auto Run specific TestCase for N times",
     CMplaybackTestCase::CMplaybackTest_AutoTest_Customized, true, kAsks},
    {2, "Playback AutoTest - AV sync", "Run AV sync test, without CRC compare",
     CMplaybackTestCase::CMplaybackTest_AutoTest_AVsync, true, kAsks},
    {3, "RD Test Combo - Tolva3", "RD self-test combo for Tolva3 Demo Board",
     CMplaybackTestCase::CMplaybackTest_AutoTest_RdTestCombo_Tolva3DemoBaord, true, kAsks},
    {4, "[Config] Send Report to TFTP?", "For each time, send the report to USB or TFTP?",
     CMplaybackTestCase::CMplayback_Config_Report_Send_To, true, kAsks},
    {5, "[Config] Change TFTP Server IP", "", CMplaybackTestCase::CMplaybackTest_Config_TFTP_IP,
     true, kAsks},
    {6, "[Config] Enable/Diable Android", "", CMplaybackTestCase::CMplaybackTest_Enable_Android,
     true, kAsks | kDisruptive},
    {7, " <-------[Advanced Area]----->", "", nullptr, true},
    {8, "Start Test & Verify a case", "", CMplaybackTestCase::CMplaybackTest_StartTestCase, true,
     kAsks},
    {9, "[Config] Golden Data Overwrite", "Replace golden by dump data",
     CMplaybackTestCase::CMplaybackTest_Overwrite_Local_Golden, true, kDisruptive},
    {10, "[Config] Golden Data Restore", "Restore golden to default",
     CMplaybackTestCase::CMplaybackTest_Restore_Local_Golden, true, kDisruptive},
    {11, "Mount USB", "", CMplaybackTestCase::CMplaybackTest_Mount_USB, true},
    {12, "Setup PCB IP", "Get PCB IP to access network",
     CMplaybackTestCase::CMplaybackTest_Setup_PCB_IP, true, kAsks},
    {13, " <-------[RD Debug Area]----->", "", nullptr, true},
    {14, "Verify - Module", "verify one module", CMplaybackTestCase::CMplayback_Verify_One_Module,
     true, kAsks},
    {15, "Verify - All Module", "verify all module ", CMplaybackTestCase::CMplayback_Verify_All,
     true, kAsks},
    {16, "Verify - AV sync", "only do AV sync verify", CMplaybackTestCase::CMplayback_Verify_AVsync,
     true},
    {17, "[Config] Select Test Case Golden", "select which golden data to be verify",
     CMplaybackTestCase::CMplaybackTest_SetTestCaseGolden, true, kAsks},
    {18, "[Config] Select USB/EMMC/HTTP", "default: USB",
     CMplaybackTestCase::CMplaybackTest_Switch_Usb_Http, true, kAsks},
    {19, "[Config] FreeRun", "default: non-FreeRun",
     CMplaybackTestCase::CMplaybackTest_Config_Freerun, true, kAsks},
    {20, "[Config] MURO Log Level", "", CMplaybackTestCase::CMplaybackTest_Config_Debug_Level, true,
     kAsks},
    {21, "[Config] Send Pass Report?", "default: no",
     CMplaybackTestCase::CMplaybackTest_Config_SendPassReport, true, kAsks},
    {22, "Package AllInOne tar file", "manual package tar file & send to USB/TFTP",
     CMplaybackTestCase::CMplaybackTest_Package_AllInOne, true, kAsks},
    {23, "Send Dump Data - for each time", "send dump Data to tftp after each test",
     CMplaybackTestCase::CMplayback_Config_Auto_Send_DumpData, true, kAsks},
    {24, "Send Dump Data - the last time", "Send tha last dump data to your TFTP Server",
     CMplaybackTestCase::CMplayback_Send_Dump_To_TFTP, true, kAsks},
    {25, "Playback AutoTest - ALL", "Auto Run ALL the TestCase",
     CMplaybackTestCase::CMplaybackTest_AutoTest_All, true, kAsks},
};

}  // namespace

CMplaybackModule::CMplaybackModule() {
  CM_Playback_Init();
  Declare(EN_MURO_CM_PLAYBACK, kPlayback, "Cross Module Test - playback",
          "For Cross Module Test for playback", kTests);
}
