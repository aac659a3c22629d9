// The thermal notifier unit tests.
#pragma once

#include "Module.h"

class UTThermalModule : public SingletonModule<UTThermalModule> {
 public:
  UTThermalModule();
};
