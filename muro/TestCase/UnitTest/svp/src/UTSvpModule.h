// The secure video path unit tests.
#pragma once

#include "Module.h"

class UTSvpModule : public SingletonModule<UTSvpModule> {
 public:
  UTSvpModule();
};
