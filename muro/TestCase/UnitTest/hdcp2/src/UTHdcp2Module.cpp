#include "UTHdcp2Module.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "UTHdcp2 Test 0", "UTHdcp2Test_Init", nullptr, true},
};

}  // namespace

UTHdcp2Module::UTHdcp2Module() {
  Declare(EN_MURO_UT_HDCP2, kUnit, "UTHdcp2 Function Test", "for example ****", kTests);
}
