#include "UTGalModule.h"

#include "UTGalTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "UTGal Test 0", "UTGalTest_Init", UTGalTestCase::UTGalTest_Init, true},
    {1, "UTGal Test 1", "UTGalTest_OsdSplit", UTGalTestCase::UTGalTest_OsdSplit, true},
    {2, "UTGal Test 2", "UTGalTest_Finalize", UTGalTestCase::UTGalTest_Finalize, true},
    {3, "UTGal Test 3", "UTGalTest_Rlink_Init", UTGalTestCase::UTGalTest_Rlink_Init, true},
    {4, "UTGal Test 4", "UTGalTest_Rlink_PanelOn", UTGalTestCase::UTGalTest_Rlink_PanelOn, true},
    {5, "UTGal Test 5", "UTGalTest_Rlink_PanelOff", UTGalTestCase::UTGalTest_Rlink_PanelOff, true},
    {6, "UTGal Test 6", "UTGalTest_Rlink_Finalize", UTGalTestCase::UTGalTest_Rlink_Finalize, true},
};

}  // namespace

UTGalModule::UTGalModule() {
  Declare(EN_MURO_UT_GAL, kUnit, "UTGal Function Test", "for example ****", kTests);
}
