// The HDCP 2 unit tests.
#pragma once

#include "Module.h"

class UTHdcp2Module : public SingletonModule<UTHdcp2Module> {
 public:
  UTHdcp2Module();
};
