#include "UTThermalModule.h"

#include <cstdio>

#include "UTThermalTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "Thermal notifier test", "This case is used for single session thermal notifier testing",
     UTThermalTestCase::TestCase1, true},
    {2, "Thermal notifier test (multi sessions)",
     "This case is used for multiple sessions thermal notifier testing",
     UTThermalTestCase::TestCase2, true},
};

}  // namespace

UTThermalModule::UTThermalModule() {
  Declare(EN_MURO_UT_THERMAL, kUnit, "UTThermal Function Test", "for example ****", kTests);
}

UTThermalModule* UTThermalModule::GetInstance() {
  std::printf("%s(%d)\n", __func__, static_cast<int>(EN_MURO_UT_THERMAL));
  return SingletonModule::GetInstance();
}
