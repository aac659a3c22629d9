// Exit statuses of the program.
#pragma once

namespace runner {

enum ExitStatus : int {
  kAllPassed = 0,
  kSomeFailed = 1,
  kUsage = 2,
  kNothingRan = 77,
  kHarnessFailed = 99,
};

}  // namespace runner
