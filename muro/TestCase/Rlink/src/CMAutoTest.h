// The menu of the automatic cross-module test.
#pragma once

#include "Module.h"

class CMAutoTest : public SingletonModule<CMAutoTest> {
 public:
  CMAutoTest();
};
