// The picture-quality driver tests.
#pragma once

#include "Module.h"

class VpqModule : public SingletonModule<VpqModule> {
 public:
  VpqModule();
};
