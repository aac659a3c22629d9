// Manual picture-quality tests. Each takes a scratch buffer, which it ignores, and returns 0.
#pragma once

class VpqTestCase {
 public:
#define VPQ_AS(name, description, run, ...) static int VPQ_FunctionTest_HAL_VPQ_##name(char*);
#define VPQ(name, run, ...) VPQ_AS(name, "", run)
#include "VpqTests.def"
#undef VPQ
#undef VPQ_AS
};
