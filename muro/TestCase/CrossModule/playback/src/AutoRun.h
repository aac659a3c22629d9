// Test cases run and judged one after another, for some rounds.
#pragma once

#include <string>
#include <vector>

#include "../../verify/src/ModuleVerification.h"

class CM_TestCase;

/// What is looked at after a run.
enum class Checks {
  kAll,       // every stage, and the synchronisation where the content has marks for it
  kSyncOnly,  // the synchronisation alone
};

enum class Verdict { kPass, kFail, kNotRun };

/// Verifies all stages of the current test case and stores the report, as the menu's entry of that
/// name does. Returns whether it passed.
bool VerifyAll(Dumps dumps = Dumps::kOfARun);

/// Analyses the synchronisation of the current test case, as the menu's entry of that name does.
/// Returns whether it passed.
bool VerifyAvSyncAlone();

/// Opens an automatic test: sets the time stamp that names its reports. Returns 0.
int Auto_Test_Start();

/// Plays a test case and judges its dumps; `progress` as of `Run_Playback_Test_Case`.
Verdict RunAndVerify(CM_TestCase* testCase, Checks checks, const std::string& progress = "");

/// The test cases that a list of numbers names, as the operator sees them in the catalogue's
/// list; blanks and commas separate. What names none is told as a message of `function`.
std::vector<CM_TestCase*> SelectTestCases(const std::string& list, const char* function);

/// All test cases of the catalogue.
std::vector<CM_TestCase*> AllTestCases();

/// Runs the test cases in turn, `rounds` times, with a line for each round and a summary of one
/// line for each case at the end. Returns 0 when all passed in all rounds, else 1.
int RunRounds(const std::vector<CM_TestCase*>& cases, int rounds, Checks checks);
