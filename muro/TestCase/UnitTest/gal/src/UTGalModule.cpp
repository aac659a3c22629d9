#include "UTGalModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "UTGal Test 0", "UTGalTest_Init", nullptr, true},
    {1, "UTGal Test 1", "UTGalTest_OsdSplit", nullptr, true},
    {2, "UTGal Test 2", "UTGalTest_Finalize", nullptr, true},
    {3, "UTGal Test 3", "UTGalTest_Rlink_Init", nullptr, true},
    {4, "UTGal Test 4", "UTGalTest_Rlink_PanelOn", nullptr, true},
    {5, "UTGal Test 5", "UTGalTest_Rlink_PanelOff", nullptr, true},
    {6, "UTGal Test 6", "UTGalTest_Rlink_Finalize", nullptr, true},
};

}  // namespace

UTGalModule::UTGalModule() {
  Declare(EN_MURO_UT_GAL, kUnit, "UTGal Function Test", "for example ****", kTests);
}
