#include "Hdcp2Module.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "Hdcp2 MURO 1", "Hdcp2Test_Init ", nullptr, true},
    {2, "Hdcp2 MURO 2", "Hdcp2Test_LoadKeys ", nullptr, true},
    {3, "Hdcp2 MURO 3", "Hdcp2Test_VerifyKeys ", nullptr, true},
    {4, "Hdcp2 MURO 4", "Hdcp2Test_AKE ", nullptr, true},
    {5, "Hdcp2 MURO 5", "Hdcp2Test_LocalityCheck ", nullptr, true},
    {6, "Hdcp2 MURO 6", "Hdcp2Test_SessionKeyExchange ", nullptr, true},
    {7, "Hdcp2 MURO 7", "Hdcp2Test_ReceiverInfo ", nullptr, true},
    {8, "Hdcp2 MURO 8", "Hdcp2Test_StreamManage ", nullptr, true},
    {9, "Hdcp2 MURO 9", "Hdcp2Test_Authenticate ", nullptr, true},
};

}  // namespace

Hdcp2Module::Hdcp2Module() {
  Declare(EN_MURO_HDCP2, kHalDriver, "Hdcp2 Function Test", "for example ****", kTests);
}
