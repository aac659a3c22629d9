// The graphics unit tests.
#pragma once

#include "Module.h"

class UTGalModule : public SingletonModule<UTGalModule> {
 public:
  UTGalModule();
};
