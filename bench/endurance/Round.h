// Selects the tests of an endurance run.
#pragma once

#include <string>
#include <vector>

#include "Stages.h"

namespace endurance {

/// The tests of one round: all that can run unattended, or a tenth of `night.count`, spread over
/// all modules, if that is less.
std::vector<runner::TestEntry> RoundOf(const Night& night);

/// The test with this id. Throws std::runtime_error if there is none.
const runner::TestEntry& Find(const std::vector<runner::TestEntry>& tests, const std::string& id);

}  // namespace endurance
