// Eyes in place of the operator: a command that looks at the panel and judges.
#pragma once

#include <string>

#include "RunSettings.h"

namespace runner {

/// The command's verdict and its reason.
struct Sight {
  enum Kind { kYes, kNo, kCannotTell };
  Kind kind = kCannotTell;
  std::string reason;  // one clean line

  /// "eyes: no, black: largest component 3 of 255".
  std::string Text() const;
};

/// Runs the command of `eyes` for a test: its environment contains CVN_TEST (the test's id),
/// CVN_QUESTION and CVN_EVIDENCE (a directory for pictures, created here). Exit status 0 means yes
/// and 1 no; any other status, a timeout or an interruption means undecided. The last line that it
/// prints is the reason.
Sight Look(const EyesSettings& eyes, const std::string& testId, const std::string& question,
           bool (*interrupted)());

}  // namespace runner
