// Which tests an endurance run runs.
#pragma once

#include <string>
#include <vector>

#include "Stages.h"

namespace endurance {

/// The tests of one round: all that can run for themselves, or a tenth of `night.count`, spread
/// over all modules, where that is less.
std::vector<runner::TestEntry> RoundOf(const Night& night);

/// The test with that id. Throws std::runtime_error if there is no such test.
const runner::TestEntry& Find(const std::vector<runner::TestEntry>& tests, const std::string& id);

}  // namespace endurance
