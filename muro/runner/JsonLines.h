// The JSON lines of results, one object each.
#pragma once

#include <string>

#include "RunEvents.h"

namespace runner {

/// The description of a test as members of an object: number, round, id, module, name and
/// description.
std::string TestMembers(const PlannedTest& test);

/// The line of a result. `own` contains members of this line only, each preceded by ", ".
std::string TestEndLine(const TestResult& result, const std::string& own);

/// The line of a run's totals.
std::string RunEndLine(const Totals& totals);

}  // namespace runner
