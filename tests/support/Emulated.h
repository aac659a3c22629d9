// What tests cannot see on an emulated board or under valgrind, and why. They skip with the reason.
#pragma once

#include <cstdlib>

namespace test {

/// Tells whether the test runs under qemu-user, as `./test.sh --arch` runs it.
inline bool IsEmulated() {
  return std::getenv("CVN_EMULATED") != nullptr;
}

/// Tells whether the test runs under valgrind, as `./test.sh --analyse` runs it.
inline bool IsUnderValgrind() {
  return std::getenv("CVN_VALGRIND") != nullptr;
}

/// A handler of ours sets the terminal back, and then has its signal stop the program.
inline constexpr char kNoStopInHandlers[] = "valgrind stops no program out of a signal's handler";

/// The simulated board's lock is a robust mutex, which is free again when its owner is killed.
inline constexpr char kNoRobustMutex[] =
    "the emulator has no set_robust_list: the simulated board stays locked by a killed process";

}  // namespace test
