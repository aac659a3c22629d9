// Thermal notifier: the temperature of the chip.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Told the temperature in degrees Celsius, on a thread of the library's own.
typedef void (*K2V_THERMAL_CALLBACK)(int degree);

// Tells `callback` every change of the temperature and, without a change, the same one again after
// the sensor's period. Replaces the callback that this process registered before. Returns 0 or a
// failure code.
int K2V_RHAL_register_thermal_notifier(K2V_THERMAL_CALLBACK callback);

#ifdef __cplusplus
}
#endif
