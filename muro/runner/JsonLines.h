// The JSON lines of results, each an object.
#pragma once

#include <string>

#include "RunEvents.h"

namespace runner {

/// What a test is, as members of an object: number, round, id, module, name and description.
std::string TestMembers(const PlannedTest& test);

/// The line of a result. `own` are members that only this line has, each begun with ", ".
std::string TestEndLine(const TestResult& result, const std::string& own);

/// The line of a run's totals.
std::string RunEndLine(const Totals& totals);

}  // namespace runner
