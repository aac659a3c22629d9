// Reads a report and holds it against what was run.
#pragma once

#include <string>
#include <vector>

#include "TestReport.h"
#include "runner/TestList.h"

namespace endurance {

/// What a report's test lines say, in order: "PASS", "FAIL" or "----".
using Verdicts = std::vector<std::string>;

struct ReportFindings {
  Verdicts verdicts;
  TestCounters counters;              // counted from the lines
  std::vector<std::string> problems;  // empty when the report is exact
};

/// Every byte of `report` has to be what runs of `tests` in this order write: the head, a line a
/// test, none lost, doubled or in another's place, and the footer with the totals of these lines.
ReportFindings CheckReport(const std::string& report, const std::vector<TestCase*>& tests);

/// Rounds of `perRound` tests have to end alike, but for the first one, which finds a board that
/// was just switched on. Returns a line for the first test that does not, empty when all do.
std::string CompareRounds(const Verdicts& verdicts, const std::vector<TestCase*>& tests,
                          std::size_t perRound);

}  // namespace endurance
