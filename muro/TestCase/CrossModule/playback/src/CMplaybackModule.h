// The menu of the cross-module playback test.
#pragma once

#include "Module.h"

class CMplaybackModule : public SingletonModule<CMplaybackModule> {
 public:
  CMplaybackModule();
};
