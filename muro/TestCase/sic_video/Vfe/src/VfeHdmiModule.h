// The HDMI receiver tests by hand.
#pragma once

#include "Module.h"

class VfeHdmiModule : public SingletonModule<VfeHdmiModule> {
 public:
  VfeHdmiModule();
};
