// Conditions held against captures.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Rig.h"
#include "Rules.h"

namespace eyes {

/// Pictures that were taken one after the other, in the judged size; the last one is judged.
struct Captures {
  std::vector<Pixels> pictures;
  std::optional<Pixels> before;  // the test
  int width = 0;                 // of the capture itself
  int height = 0;
};

/// The rig as far as it is known.
struct KnownRig {
  Rig rig;
  RigBounds bounds = kUnknownRig;
};

/// The numbers are exit statuses as the harness understands them.
enum class Answer { kYes = 0, kNo = 1, kCannotTell = 2 };

struct Verdict {
  Answer answer = Answer::kCannotTell;
  std::string reason;               // one line with every measured figure
  std::optional<Pixels> reference;  // that of the first condition that has one and is not met, or
                                    // of the first one that has
};

/// Judges captures by a rule. Throws UseError where a reference or a mask cannot be used.
Verdict Judge(const Rule& rule, const RulesFile& rules, const Captures& captures,
              const KnownRig& rig);

/// What differs, brighter than it is.
Pixels DifferenceOf(const Pixels& reference, const Pixels& capture);

/// Reads and writes a measured rig. Throw UseError.
KnownRig ReadCalibration(const std::string& path);
void WriteCalibration(const std::string& path, const Rig& rig);

}  // namespace eyes
