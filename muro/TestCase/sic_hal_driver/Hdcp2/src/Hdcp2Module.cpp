#include "Hdcp2Module.h"

#include "Hdcp2TestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "Hdcp2 MURO 1", "Hdcp2Test_Init ", Hdcp2TestCase::Hdcp2Test_Init, true},
    {2, "Hdcp2 MURO 2", "Hdcp2Test_LoadKeys ", Hdcp2TestCase::Hdcp2Test_LoadKeys, true},
    {3, "Hdcp2 MURO 3", "Hdcp2Test_VerifyKeys ", Hdcp2TestCase::Hdcp2Test_VerifyKeys, true},
    {4, "Hdcp2 MURO 4", "Hdcp2Test_AKE ", Hdcp2TestCase::Hdcp2Test_AKE, true, kAsks},
    {5, "Hdcp2 MURO 5", "Hdcp2Test_LocalityCheck ", Hdcp2TestCase::Hdcp2Test_LocalityCheck, true,
     kAsks},
    {6, "Hdcp2 MURO 6", "Hdcp2Test_SessionKeyExchange ",
     Hdcp2TestCase::Hdcp2Test_SessionKeyExchange, true, kAsks},
    {7, "Hdcp2 MURO 7", "Hdcp2Test_ReceiverInfo ", Hdcp2TestCase::Hdcp2Test_ReceiverInfo, true,
     kAsks},
    {8, "Hdcp2 MURO 8", "Hdcp2Test_StreamManage ", Hdcp2TestCase::Hdcp2Test_StreamManage, true,
     kAsks},
    {9, "Hdcp2 MURO 9", "Hdcp2Test_Authenticate ", Hdcp2TestCase::Hdcp2Test_Authenticate, true,
     kAsks},
};

}  // namespace

Hdcp2Module::Hdcp2Module() {
  Declare(EN_MURO_HDCP2, kHalDriver, "Hdcp2 Function Test", "for example ****", kTests);
}
