// Reads a report and checks it against the tests that were run.
#pragma once

#include <string>
#include <vector>

#include "TestReport.h"
#include "runner/TestList.h"

namespace endurance {

/// The verdicts of a report's test lines, in order: "PASS", "FAIL" or "----".
using Verdicts = std::vector<std::string>;

struct ReportFindings {
  Verdicts verdicts;
  TestCounters counters;              // counted from the lines
  std::vector<std::string> problems;  // empty if the report is exact
};

/// Every byte of `report` must be what runs of `tests` in this order write: the header, one line
/// per test, none lost, duplicated or out of place, and the footer with the totals of these lines.
ReportFindings CheckReport(const std::string& report, const std::vector<TestCase*>& tests);

/// Rounds of `perRound` tests must have equal verdicts, except the first one, which starts on a
/// board that was just switched on. Returns a line for the first test that differs, empty if none
/// does.
std::string CompareRounds(const Verdicts& verdicts, const std::vector<TestCase*>& tests,
                          std::size_t perRound);

}  // namespace endurance
