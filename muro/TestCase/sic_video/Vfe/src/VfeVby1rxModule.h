// The V-by-One receiver tests by hand.
#pragma once

#include "Module.h"

class VfeVby1rxModule : public SingletonModule<VfeVby1rxModule> {
 public:
  VfeVby1rxModule();
};
