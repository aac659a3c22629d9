// The parts of an endurance run.
#pragma once

#include <string>
#include <vector>

#include "NightBoard.h"
#include "Problems.h"
#include "TestReport.h"
#include "Watch.h"
#include "runner/Answers.h"

namespace endurance {

/// What a stage works with.
struct Night {
  NightBoard& board;
  const std::vector<runner::TestEntry>& tests;
  const std::vector<runner::AnswerRule>& rules;
  std::string answers;  // file of the rules
  std::size_t count;    // how many tests or verifications are due
};

/// What came of a stage.
struct StageResult {
  std::size_t done = 0;   // tests or verifications
  TestCounters report{};  // of the lines in the report
  Tenths tenths{};
  Problems problems{};  // besides what grew
};

/// Runs the tests with `cvntester --run`, with everything that a night on a farm asks for: result
/// directory, JUnit and JSON.
StageResult RunUnattended(const Night& night);

/// Runs the tests from the menus of one harness: all modules' unit tests in one go, and all tests
/// one by one.
StageResult RunFromMenus(const Night& night);

/// Plays and verifies all cases of the catalogue again and again in one harness.
StageResult RunPlayback(const Night& night);

}  // namespace endurance
