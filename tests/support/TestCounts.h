// How many tests there are where rows are added to often, counted by their rows.
#pragma once

namespace test {

/// Unit tests of the picture quality.
inline constexpr int kUtVpqTests = 0
#define UTVPQ(name, run) +1
#include "TestCase/UnitTest/vpq/src/UTVpqTests.def"
#undef UTVPQ
    ;

}  // namespace test
