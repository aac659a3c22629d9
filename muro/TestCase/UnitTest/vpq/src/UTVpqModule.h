// The picture-quality unit tests.
#pragma once

#include "Module.h"

class UTVpqModule : public SingletonModule<UTVpqModule> {
 public:
  UTVpqModule();
};
