// The HDCP 2 driver tests.
#pragma once

#include "Module.h"

class Hdcp2Module : public SingletonModule<Hdcp2Module> {
 public:
  Hdcp2Module();
};
