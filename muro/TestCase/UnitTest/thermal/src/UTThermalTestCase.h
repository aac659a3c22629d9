// Unit tests of the thermal notifier. Each takes a scratch buffer, which it ignores.
#pragma once

/// Registers for the temperature and waits for the third notification. Returns 0, or -1 if the HAL
/// does not register the callback.
int TEST_K2V_RHAL_thermal_callback();

class UTThermalTestCase {
 public:
  /// One session in a separate process. Returns 0 if it succeeded, else 1.
  static int TestCase1(char*);
  /// Two concurrent sessions, each in a separate process. Returns 0 if both succeeded, else 1.
  static int TestCase2(char*);
};
