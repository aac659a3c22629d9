// How many tests there are where rows are added to often, counted by their rows.
#pragma once

#include <iterator>

namespace test {

inline constexpr const char* kUtVpqNames[] = {
#define UTVPQ(name, run) #name,
#include "TestCase/UnitTest/vpq/src/UTVpqTests.def"
#undef UTVPQ
};

/// Unit tests of the picture quality.
inline constexpr int kUtVpqTests = static_cast<int>(std::size(kUtVpqNames));

}  // namespace test
