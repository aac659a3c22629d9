// The device health tests.
#pragma once

#include "Module.h"

class K2vHalDeviceModule : public SingletonModule<K2vHalDeviceModule> {
 public:
  K2vHalDeviceModule();
};
