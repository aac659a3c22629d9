// Numbers of tests in modules that often get new rows, counted from the rows.
#pragma once

#include <iterator>

namespace test {

inline constexpr const char* kUtVpqNames[] = {
#define UTVPQ(name, run) #name,
#include "TestCase/UnitTest/vpq/src/UTVpqTests.def"
#undef UTVPQ
};

/// Unit tests of picture quality.
inline constexpr int kUtVpqTests = static_cast<int>(std::size(kUtVpqNames));

}  // namespace test
