// What tests cannot observe on an emulated board or under valgrind, and why. They are skipped with
// this reason.
#pragma once

#include <cstdlib>

namespace test {

/// Returns whether the test runs under qemu-user, as started by `./test.sh --arch`.
inline bool IsEmulated() {
  return std::getenv("CVN_EMULATED") != nullptr;
}

/// Returns whether the test runs under valgrind, as started by `./test.sh --analyse`.
inline bool IsUnderValgrind() {
  return std::getenv("CVN_VALGRIND") != nullptr;
}

/// The harness's handler restores the terminal and then lets its signal stop the program.
inline constexpr char kNoStopInHandlers[] = "valgrind stops no program out of a signal's handler";

/// The simulated board's lock is a robust mutex, which is released when its owner is killed.
inline constexpr char kNoRobustMutex[] =
    "the emulator has no set_robust_list: the simulated board stays locked by a killed process";

}  // namespace test
