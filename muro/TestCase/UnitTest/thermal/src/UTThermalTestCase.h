// Unit tests of the thermal notifier. Each takes a scratch buffer that it ignores.
#pragma once

/// Registers for the temperature and waits for the third notification. Returns 0, or -1 when the
/// HAL does not register.
int TEST_K2V_RHAL_thermal_callback();

class UTThermalTestCase {
 public:
  /// One session in a process of its own. Returns 0 when it succeeded, else 1.
  static int TestCase1(char*);
  /// Two sessions at once, each in a process of its own. Returns 0 when both succeeded, else 1.
  static int TestCase2(char*);
};
