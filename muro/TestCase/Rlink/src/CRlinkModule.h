// The inter-chip link tests.
#pragma once

#include "Module.h"

class CRlinkModule : public SingletonModule<CRlinkModule> {
 public:
  CRlinkModule();
};
