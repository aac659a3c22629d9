// The scaler tests.
#pragma once

#include "Module.h"

class VscModule : public SingletonModule<VscModule> {
 public:
  VscModule();
};
