#include "UTHdcp2Module.h"

#include "UTHdcp2TestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "UTHdcp2 Test 0", "UTHdcp2Test_Init", UTHdcp2TestCase::UTHdcp2Test_Init, true},
    {1, "UTHdcp2 Test 1", "UTHdcp2Test_Sha256", UTHdcp2TestCase::UTHdcp2Test_Sha256, true},
    {2, "UTHdcp2 Test 2", "UTHdcp2Test_HmacSha256", UTHdcp2TestCase::UTHdcp2Test_HmacSha256, true},
    {3, "UTHdcp2 Test 3", "UTHdcp2Test_AesCtr", UTHdcp2TestCase::UTHdcp2Test_AesCtr, true},
    {4, "UTHdcp2 Test 4", "UTHdcp2Test_RsaOaep", UTHdcp2TestCase::UTHdcp2Test_RsaOaep, true},
    {5, "UTHdcp2 Test 5", "UTHdcp2Test_RsaSignature", UTHdcp2TestCase::UTHdcp2Test_RsaSignature,
     true},
    {6, "UTHdcp2 Test 6", "UTHdcp2Test_Random", UTHdcp2TestCase::UTHdcp2Test_Random, true},
    {7, "UTHdcp2 Test 7", "UTHdcp2Test_KeyStore", UTHdcp2TestCase::UTHdcp2Test_KeyStore, true},
    {8, "UTHdcp2 Test 8", "UTHdcp2Test_NullBuffers", UTHdcp2TestCase::UTHdcp2Test_NullBuffers,
     true},
    {9, "UTHdcp2 Test 9", "UTHdcp2Test_WrongLengths", UTHdcp2TestCase::UTHdcp2Test_WrongLengths,
     true},
    {10, "UTHdcp2 Test 10", "UTHdcp2Test_WithoutKeys", UTHdcp2TestCase::UTHdcp2Test_WithoutKeys,
     true},
    {11, "UTHdcp2 Test 11", "UTHdcp2Test_RevokedReceiver",
     UTHdcp2TestCase::UTHdcp2Test_RevokedReceiver, true},
};

}  // namespace

UTHdcp2Module::UTHdcp2Module() {
  Declare(EN_MURO_UT_HDCP2, kUnit, "UTHdcp2 Function Test", "for example ****", kTests);
}
