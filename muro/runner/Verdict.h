// The possible results of a test in an unattended run.
#pragma once

#include <array>
#include <string_view>

namespace runner {

enum class Verdict {
  kPass,     // it ran, it was judged, and its line is in the report
  kFail,     // it ran and failed
  kError,    // it crashed, hung, exited, or its result is undefined
  kBlocked,  // it waited for an answer that nobody gave
  kSkipped,  // it was not run
};

inline constexpr std::array<std::string_view, 5> kVerdictNames = {"PASS", "FAIL", "ERROR",
                                                                  "BLOCKED", "SKIPPED"};

inline std::string_view VerdictName(Verdict verdict) {
  return kVerdictNames[static_cast<std::size_t>(verdict)];
}

}  // namespace runner
