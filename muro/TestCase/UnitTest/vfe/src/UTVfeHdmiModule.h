// The HDMI receiver unit tests, step by step on one port.
#pragma once

#include "Module.h"

class UTVfeHdmiModule : public SingletonModule<UTVfeHdmiModule> {
 public:
  UTVfeHdmiModule();
};
