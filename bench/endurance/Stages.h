// The stages of an endurance run.
#pragma once

#include <string>
#include <vector>

#include "NightBoard.h"
#include "Problems.h"
#include "TestReport.h"
#include "Watch.h"
#include "runner/Answers.h"

namespace endurance {

/// The input of a stage.
struct Night {
  NightBoard& board;
  const std::vector<runner::TestEntry>& tests;
  const std::vector<runner::AnswerRule>& rules;
  std::string answers;  // file of the rules
  std::size_t count;    // number of tests or verifications that are due
};

/// The result of a stage.
struct StageResult {
  std::size_t done = 0;   // tests or verifications
  TestCounters report{};  // of the lines in the report
  Tenths tenths{};
  Problems problems{};  // in addition to growth
};

/// Runs the tests with `cvntester --run` and everything that an overnight run on a farm uses:
/// result directory, JUnit and JSON.
StageResult RunUnattended(const Night& night);

/// Runs the tests from the menus of one harness: the unit tests of all modules in one go, and all
/// tests one by one.
StageResult RunFromMenus(const Night& night);

/// Plays and verifies all cases of the catalogue repeatedly in one harness.
StageResult RunPlayback(const Night& night);

}  // namespace endurance
