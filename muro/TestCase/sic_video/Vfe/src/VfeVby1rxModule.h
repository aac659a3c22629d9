// The manual V-by-One receiver tests.
#pragma once

#include "Module.h"

class VfeVby1rxModule : public SingletonModule<VfeVby1rxModule> {
 public:
  VfeVby1rxModule();
};
