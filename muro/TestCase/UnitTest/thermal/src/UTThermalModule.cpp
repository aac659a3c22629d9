#include "UTThermalModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {1, "Thermal notifier test", "This case is used for single session thermal notifier testing",
     nullptr, true},
    {2, "Thermal notifier test (multi sessions)",
     "This case is used for multiple sessions thermal notifier testing", nullptr, true},
};

}  // namespace

UTThermalModule::UTThermalModule() {
  Declare(EN_MURO_UT_THERMAL, kUnit, "UTThermal Function Test", "for example ****", kTests);
}
