// State of the device: readiness, health, clocks, and the slave chip on the other side of the link.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// The reason why the device is not ready or not healthy: 0 for none, else a board-specific code.
// Both return 0 or a failure code.
int K2V_RHAL_DEVICE_Ready(int* out);
int K2V_RHAL_DEVICE_Healthy(int* out);

enum {
  K2V_CLOCK_MEDIA = 0,
  K2V_CLOCK_BROADCAST = 1,  // trimmed to the transmitter's
};
uint64_t K2V_RHAL_DEVICE_Get_Clock_Value(int which);  // in ticks of 90 kHz

int K2V_RHAL_slave_ready(void);  // 1 if the slave answers, 0 if it does not

#ifdef __cplusplus
}
#endif
