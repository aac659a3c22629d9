// Thermal notifier: the temperature of the chip.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Receives the temperature in degrees Celsius, on a thread of the library.
typedef void (*K2V_THERMAL_CALLBACK)(int degree);

// Calls `callback` at every change of the temperature and, if it does not change, with the same
// value again after the sensor's period. Replaces the callback that this process registered before.
// Returns 0 or a failure code.
int K2V_RHAL_register_thermal_notifier(K2V_THERMAL_CALLBACK callback);

#ifdef __cplusplus
}
#endif
