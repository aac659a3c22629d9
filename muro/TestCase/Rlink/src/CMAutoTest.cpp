#include "CMAutoTest.h"

#include "../../CrossModule/playback/src/CMplaybackTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "Test Environment init", "init process of playback",
     CMplaybackTestCase::CMplaybackTest_Env_Init, true, kAsks | kDisruptive},
    {1, "RD Test Combo - Tolva3", "RD self-test combo, only playback case",
     CMplaybackTestCase::CMplaybackTest_AutoTest_RdTestCombo_Tolva3DemoBaord, true, kAsks},
    {2, "[Config] Send Report to TFTP?", "For each time, send the report to USB or TFTP?",
     CMplaybackTestCase::CMplayback_Config_Report_Send_To, true, kAsks},
    {3, "[Config] Change TFTP Server IP", "", CMplaybackTestCase::CMplaybackTest_Config_TFTP_IP,
     true, kAsks},
    {4, "[Config] Enable/Diable Android", "", CMplaybackTestCase::CMplaybackTest_Enable_Android,
     true, kAsks | kDisruptive},
};

}  // namespace

CMAutoTest::CMAutoTest() {
  Declare(EN_MURO_CM_AUTOTEST, kAutoTest, "Cross Module Test - Auto Test",
          "For Cross Module - Auto Test", kTests);
}
