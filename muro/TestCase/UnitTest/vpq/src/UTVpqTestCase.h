// Unit tests of the picture quality. Each takes a scratch buffer that it ignores and passes once it
// has run, whatever the HAL says.
#pragma once

class UTVpqTestCase {
 public:
#define UTVPQ(name, run) static int UTVpq_##name(char*);
#include "UTVpqTests.def"
#undef UTVPQ
};
