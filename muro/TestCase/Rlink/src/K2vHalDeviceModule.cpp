#include "K2vHalDeviceModule.h"

#include "DeviceTestCase.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "TestFunc_Device_Ready", "Test Device Ready.", Wrapper_TestFunc_Device_Ready, true},
    {1, "TestFunc_Device_Healthy", "Test Device Healthy.", Wrapper_TestFunc_Device_Healthy, true},
    {2, "TestFunc_Device_Get_Clock_Value", "Test Device Get Clock Value.",
     Wrapper_TestFunc_Device_Get_Clock_Value, true},
    {3, "TestFunc_Slave_Ready", "Test Slave Ready.", Wrapper_TestFunc_Slave_Ready, true, kAsks},
};

}  // namespace

K2vHalDeviceModule::K2vHalDeviceModule() {
  Declare(EN_MURO_K2V_HAL_DEVICE, kRlink, "K2v_Hal_Device Module Test",
          "For K2v_Hal_Device Module Test", kTests);
}
