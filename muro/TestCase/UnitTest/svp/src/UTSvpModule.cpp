#include "UTSvpModule.h"

#include "UTSvpTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "UTSvp Test init", "This case must be run first", UTSvpTestCase::UTSvpTestCase1, true},
    {2, "UTSvp Test do nothing", "This case is used for test AV1 play",
     UTSvpTestCase::UTSvpTestCase2, true},
};

}  // namespace

UTSvpModule::UTSvpModule() {
  Declare(EN_MURO_UT_SVP, kUnit, "UTSvp Function Test", "for example ****", kTests);
}
