// The picture-quality get and set tests.
#pragma once

#include "Module.h"

class VpqExtModule : public SingletonModule<VpqExtModule> {
 public:
  VpqExtModule();
};
