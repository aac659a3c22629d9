// The thermal notifier unit tests.
#pragma once

#include "Module.h"

class UTThermalModule : public SingletonModule<UTThermalModule> {
 public:
  UTThermalModule();
  /// Prints its name and the module's id, each time.
  static UTThermalModule* GetInstance();
};
