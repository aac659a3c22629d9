// The manual HDMI receiver tests.
#pragma once

#include "Module.h"

class VfeHdmiModule : public SingletonModule<VfeHdmiModule> {
 public:
  VfeHdmiModule();
};
