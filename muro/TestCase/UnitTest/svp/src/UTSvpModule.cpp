#include "UTSvpModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "UTSvp Test init", "This case must be run first", nullptr, true},
    {2, "UTSvp Test do nothing", "This case is used for test AV1 play", nullptr, true},
};

}  // namespace

UTSvpModule::UTSvpModule() {
  Declare(EN_MURO_UT_SVP, kUnit, "UTSvp Function Test", "for example ****", kTests);
}
