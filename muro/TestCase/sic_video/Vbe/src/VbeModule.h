// The display back-end tests.
#pragma once

#include "Module.h"

class VbeModule : public SingletonModule<VbeModule> {
 public:
  VbeModule();
};
