// Interactive tests of picture-quality settings. Each takes a scratch buffer, which it ignores, and
// returns 0.
#pragma once

class VpqExtTestCase {
 public:
#define VPQEXT_AS(name, description, run, ...) static int VPQ_FunctionTest_HAL_##name(char*);
#define VPQEXT(name, run, ...) VPQEXT_AS(name, "", run)
#include "VpqExtTests.def"
#undef VPQEXT
#undef VPQEXT_AS
};
