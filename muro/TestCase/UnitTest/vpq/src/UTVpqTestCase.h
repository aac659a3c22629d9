// Picture-quality unit tests. Each takes a scratch buffer, which it ignores, and passes once it has
// run, whatever the HAL returns.
#pragma once

class UTVpqTestCase {
 public:
#define UTVPQ(name, run) static int UTVpq_##name(char*);
#include "UTVpqTests.def"
#undef UTVPQ
};
