// Judges captures by conditions.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Rig.h"
#include "Rules.h"

namespace eyes {

/// Successive pictures in the judged size; the last one is judged.
struct Captures {
  std::vector<Pixels> pictures;
  std::optional<Pixels> before;  // the test
  int width = 0;                 // of the capture itself
  int height = 0;
};

/// What is known of the rig.
struct KnownRig {
  Rig rig;
  RigBounds bounds = kUnknownRig;
};

/// The numbers are the exit statuses that the harness expects.
enum class Answer { kYes = 0, kNo = 1, kCannotTell = 2 };

struct Verdict {
  Answer answer = Answer::kCannotTell;
  std::string reason;               // one line with every measured value
  std::optional<Pixels> reference;  // of the first condition with one that is not met, otherwise
                                    // of the first condition with one
};

/// Judges captures by a rule. Throws UseError if a reference or a mask cannot be used.
Verdict Judge(const Rule& rule, const RulesFile& rules, const Captures& captures,
              const KnownRig& rig);

/// The difference of two pictures, amplified.
Pixels DifferenceOf(const Pixels& reference, const Pixels& capture);

/// Read and write a measured rig. Throw UseError.
KnownRig ReadCalibration(const std::string& path);
void WriteCalibration(const std::string& path, const Rig& rig);

}  // namespace eyes
