// Somebody else's eyes in place of the operator's: a command that looks at the panel and judges.
#pragma once

#include <string>

#include "RunSettings.h"

namespace runner {

/// What was seen, and why.
struct Sight {
  enum Kind { kYes, kNo, kCannotTell };
  Kind kind = kCannotTell;
  std::string reason;  // one clean line

  /// "eyes: no, black: largest component 3 of 255".
  std::string Text() const;
};

/// Asks the command of `eyes` about a test: in its environment are CVN_TEST (the test's id),
/// CVN_QUESTION and CVN_EVIDENCE (a directory for pictures, made here). Its exit status 0 means
/// yes and 1 no; anything else, its limit and an interruption mean that it cannot tell. The last
/// line that it prints is the reason.
Sight Look(const EyesSettings& eyes, const std::string& testId, const std::string& question,
           bool (*interrupted)());

}  // namespace runner
