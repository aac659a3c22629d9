#include "DeviceTestCase.h"

#include <unistd.h>

#include <cstdio>

#include "k2v/device.h"

namespace {

int Verdict(int (*query)(int*)) {
  int value = 0;
  query(&value);
  return value == 0 ? 0 : 1;
}

unsigned long long Clock(int which) {
  return K2V_RHAL_DEVICE_Get_Clock_Value(which);
}

}  // namespace

int Wrapper_TestFunc_Device_Ready(char*) {
  return Verdict(K2V_RHAL_DEVICE_Ready);
}

int Wrapper_TestFunc_Device_Healthy(char*) {
  return Verdict(K2V_RHAL_DEVICE_Healthy);
}

int Wrapper_TestFunc_Device_Get_Clock_Value(char*) {
  std::printf("Media Clock_Value = %llu \n", Clock(K2V_CLOCK_MEDIA));
  std::printf("Broadcast Clock_Value = %llu \n", Clock(K2V_CLOCK_BROADCAST));
  return 0;
}

int Wrapper_TestFunc_Slave_Ready(char*) {
  for (;;) {
    std::printf("K2V_RHAL_slave_ready ret = %d \n", K2V_RHAL_slave_ready());
    sleep(1);
  }
}
